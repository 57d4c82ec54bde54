// Reads a stream file ("OMSTREAM", version, flags, then code/length/payload records) from a path or
// from bytes in memory and hands out its records one by one. The command-line tools and tests
// that replay recorded streams into a factory use it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/stream/OmStreamRecord.h"

class OmStreamReader {
public:
  // Reads the whole file. A file that cannot be read, or whose 16-byte header is short, lacks the
  // magic "OMSTREAM", or has a version other than 1 or flags other than 0, throws OMSException.
  static OmStreamReader FromFile(const std::string& path);
  // The same checks on bytes already in memory.
  explicit OmStreamReader(std::vector<std::uint8_t> bytes);
  OmStreamReader(OmStreamReader&& other) noexcept;
  OmStreamReader& operator=(OmStreamReader&& other) noexcept;
  ~OmStreamReader();

  // Fills record with the next record and returns true, or returns false at the end of the
  // stream. A record whose header or payload runs past the end throws OMSException with value 1
  // = its record number (from 1) and value 2 = the byte offset where it starts; every complete
  // record before it has been handed out. The record's payload buffer is reused between calls.
  bool Next(OmStreamRecord& record);

  // Records handed out so far.
  std::size_t RecordCount() const;
  // Byte offset of the next record.
  std::size_t Offset() const;

  static constexpr std::size_t kHeaderBytes = 16;
  static constexpr std::size_t kRecordHeaderBytes = 6;

private:
  OmStreamReader();

  struct Data;
  std::unique_ptr<Data> _my;
};
