// Renders stream records as one readable line each: the code's name, the payload length and the
// fields of the payload decoded by the message's layout. `omfactory dump` and test diagnostics
// use it; a short or lying record is described as far as it goes and marked "truncated".
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/stream/OmStreamRecord.h"

class OmRecordDescriber {
public:
  // Reads numbers little-endian until an IPC_BYTE_ORDER probe or IPC_SWAP_BYTES record says the
  // sender swaps, as the factory would.
  OmRecordDescriber();
  ~OmRecordDescriber();
  OmRecordDescriber(const OmRecordDescriber&) = delete;
  OmRecordDescriber& operator=(const OmRecordDescriber&) = delete;

  // One line, e.g. `IPC_NUMBER (256) 16 bytes: value=3.5 format=0x00050802 cell=4`. Never reads
  // outside [payload, payload + length).
  std::string Describe(std::int16_t code, const std::uint8_t* payload, std::size_t length);
  std::string Describe(const OmStreamRecord& record);

  // Whether numeric fields are currently read byte-swapped.
  bool SwapBytes() const;
  void SwapBytes(bool on);

  // Texts longer than this are cut in the description.
  static constexpr std::size_t kTextShown = 64;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
