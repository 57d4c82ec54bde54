// Writes bootstrap specifications as the byte string that IPC_END_PROCEDURE carries and reads them
// back. The server's bootstrapping side serializes; the end of a procedure deserializes.
#pragma once

#include <string>
#include <string_view>

class SvrBootstrapSpecs;

class SvrBootstrapSpecsSerializer {
public:
  // uint32 B, double level, uint32 method, uint32 k and k uint32 boundaries, uint32 j and j times
  // {double value, uint32 group}; all little-endian.
  static std::string serializeSpecs(const SvrBootstrapSpecs& specs);

  // Fills specs from the byte string. A string that ends early or has bytes left over, or a
  // confidence level that is not a number strictly between 0 and 100, throws OMSException and
  // leaves specs unchanged.
  static void deserializeSpecs(std::string_view bytes, SvrBootstrapSpecs& specs);
};
