// Structure-aware mutation of stream files for the stream fuzz target: takes a file apart into
// its records and changes what a faulty or hostile sender would: lengths and ids that lie by one
// or by a lot, TCIDs and flags, codes, truncated and grown payloads, dropped, repeated and
// reordered records, byte-order switches and a file cut short. The tests drive it with a seed
// of their own to replay the same mutations without libFuzzer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/stream/OmStreamRecord.h"

class OmStreamMutator {
public:
  // A byte-level mutator in libFuzzer's shape (data, size, maxSize) -> new size, used on single
  // payloads and on inputs that are not stream files at all.
  using ByteMutator = std::size_t (*)(std::uint8_t* data, std::size_t size, std::size_t maxSize);

  // A stream file taken apart: its 16-byte header, its whole records, and whatever follows the
  // last whole record (a cut record).
  struct Parsed {
    std::vector<std::uint8_t> header;
    std::vector<OmStreamRecord> records;
    std::vector<std::uint8_t> tail;
  };

  explicit OmStreamMutator(ByteMutator bytes);

  // Mutates the stream file in data[0, size) in place, with room for maxSize bytes; returns the
  // new size (at most maxSize). The same seed gives the same mutation.
  std::size_t Mutate(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                     unsigned seed) const;

  // False when data is shorter than a stream header.
  static bool Parse(const std::uint8_t* data, std::size_t size, Parsed& parsed);
  static std::vector<std::uint8_t> Encode(const Parsed& parsed);

private:
  ByteMutator _bytes;
};
