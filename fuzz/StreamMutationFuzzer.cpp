// Fuzz target: stream files, mutated record by record from valid ones (OmStreamMutator), read with
// OmStreamReader and replayed into a session. Lengths and ids that lie, truncated payloads and
// files, repeated and reordered records must all end in a clear OMSException or be ignored, and
// (one input in eight) the next procedure is accepted. (That output handed over earlier stays intact is the session
// target's check: playing it here too would halve the executions.)
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "fuzz/OmFuzzChecks.h"
#include "fuzz/OmStreamMutator.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/OmStreamReader.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  static const OmStreamMutator mutator(&LLVMFuzzerMutate);
  return mutator.Mutate(data, size, maxSize, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::optional<OmStreamReader> reader;
  try {
    reader.emplace(std::vector<std::uint8_t>(data, data + size));
  } catch (const OMSException&) {
    return 0;  // not a stream file: the reader said so
  }

  OmSessionProbe probe;
  OmStreamRecord record;
  try {
    while (reader->Next(record)) probe.Feed(record);
  } catch (const OMSException&) {
    // A file cut inside a record: every whole record before it was played.
  }
  omfuzz::CheckRecovered(probe, omfuzz::PlaysNextProcedure(data, size));
  return 0;
}
