// The floor that the factory benchmarks are measured against: every record of a stream read
// through OmStreamReader and every payload byte touched, with nothing decoded or built.
#pragma once

#include <cstdint>

#include "platform/stream/OmStreamReader.h"
#include "platform/stream/OmStreamRecord.h"

struct OmRawScanResult {
  std::int64_t records = 0;
  std::uint64_t checksum = 0;
};

// Reads the rest of reader's stream.
inline OmRawScanResult OmRawScan(OmStreamReader& reader) {
  OmRawScanResult result;
  OmStreamRecord record;
  while (reader.Next(record)) {
    std::uint64_t sum = std::uint16_t(record.code);
    for (std::uint8_t byte : record.payload) sum = sum * 31 + byte;
    result.checksum += sum;
    ++result.records;
  }
  return result;
}
