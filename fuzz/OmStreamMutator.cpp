#include "fuzz/OmStreamMutator.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>

#include "fuzz/OmSessionInput.h"
#include "platform/stream/MessageCodes.h"

namespace {

constexpr std::size_t kHeaderBytes = 16;
constexpr std::size_t kRecordHeaderBytes = 6;

using Random = std::minstd_rand;

std::size_t Pick(Random& random, std::size_t n) { return n == 0 ? 0 : random() % n; }

std::uint32_t Read32(const std::uint8_t* p, bool bigEndian) {
  std::uint32_t v = 0;
  for (int i = 0; i < 4; ++i) v |= std::uint32_t(p[bigEndian ? 3 - i : i]) << (8 * i);
  return v;
}

void Write32(std::uint8_t* p, std::uint32_t v, bool bigEndian) {
  for (int i = 0; i < 4; ++i) p[bigEndian ? 3 - i : i] = std::uint8_t(v >> (8 * i));
}

// The values that make lengths, ids, counts and positions lie: next to the old value, at the
// edges of the fields' ranges and of the session's limits (string chunks, cell ids).
std::uint32_t Lie(Random& random, std::uint32_t old, std::size_t payloadSize) {
  static constexpr std::int64_t kFixed[] = {
      0,          -1,         1,          2,          32766,      32767,
      32768,      65535,      65536,      1 << 22,    (1 << 22) - 1,
      0x40000000, 0x7FFFFFFF, -0x7FFFFFFF - 1, -2};
  switch (Pick(random, 4)) {
    case 0: return old + 1;
    case 1: return old - 1;
    case 2: return std::uint32_t(payloadSize + Pick(random, 3));
    default: return std::uint32_t(kFixed[Pick(random, std::size(kFixed))]);
  }
}

OmStreamRecord ControlRecord(Random& random) {
  OmStreamRecord record;
  switch (Pick(random, 4)) {
    case 0:  // the byte-order probe of either sender
      record.code = std::int16_t(MessageCode::IPC_BYTE_ORDER);
      record.payload = Pick(random, 2) ? std::vector<std::uint8_t>{1, 0, 0, 0}
                                       : std::vector<std::uint8_t>{0, 0, 0, 1};
      break;
    case 1:
      record.code = std::int16_t(MessageCode::IPC_SWAP_BYTES);
      record.payload = {std::uint8_t(Pick(random, 2))};
      break;
    case 2: {  // the end of a procedure in one part: id 1, part 0 of 1, one empty item
      record.code = std::int16_t(MessageCode::IPC_END_PROCEDURE);
      record.payload = {1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0};
      record.payload.resize(record.payload.size() + 13, 0);
      break;
    }
    default: {  // the start of a procedure with an empty settings text
      record.code = std::int16_t(MessageCode::IPC_BEGIN_PROCEDURE);
      record.payload.assign(12, 0);
      record.payload[0] = std::uint8_t(Pick(random, 256));
      break;
    }
  }
  return record;
}

}  // namespace

OmStreamMutator::OmStreamMutator(ByteMutator bytes) : _bytes(bytes) {}

bool OmStreamMutator::Parse(const std::uint8_t* data, std::size_t size, Parsed& parsed) {
  if (size < kHeaderBytes) return false;
  parsed.header.assign(data, data + kHeaderBytes);
  parsed.records.clear();
  parsed.tail.clear();
  std::size_t at = kHeaderBytes;
  while (at < size) {
    const std::size_t left = size - at;
    if (left < kRecordHeaderBytes) break;
    const std::uint32_t length = Read32(data + at + 2, false);
    if (length > left - kRecordHeaderBytes) break;
    OmStreamRecord record;
    record.code = std::int16_t(data[at] | (data[at + 1] << 8));
    record.payload.assign(data + at + kRecordHeaderBytes, data + at + kRecordHeaderBytes + length);
    parsed.records.push_back(std::move(record));
    at += kRecordHeaderBytes + length;
  }
  parsed.tail.assign(data + at, data + size);
  return true;
}

std::vector<std::uint8_t> OmStreamMutator::Encode(const Parsed& parsed) {
  std::vector<std::uint8_t> bytes = parsed.header;
  for (const OmStreamRecord& record : parsed.records) {
    const std::uint16_t code = std::uint16_t(record.code);
    bytes.push_back(std::uint8_t(code & 0xFF));
    bytes.push_back(std::uint8_t(code >> 8));
    std::uint8_t length[4];
    Write32(length, std::uint32_t(record.payload.size()), false);
    bytes.insert(bytes.end(), length, length + 4);
    bytes.insert(bytes.end(), record.payload.begin(), record.payload.end());
  }
  bytes.insert(bytes.end(), parsed.tail.begin(), parsed.tail.end());
  return bytes;
}

std::size_t OmStreamMutator::Mutate(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed) const {
  Parsed parsed;
  if (!Parse(data, size, parsed) || parsed.records.empty()) return _bytes(data, size, maxSize);
  Random random(seed == 0 ? 1 : seed);
  std::vector<OmStreamRecord>& records = parsed.records;
  std::size_t cutTo = std::numeric_limits<std::size_t>::max();

  const std::size_t rounds = 1 + Pick(random, 3);
  for (std::size_t round = 0; round < rounds && !records.empty(); ++round) {
    OmStreamRecord& record = records[Pick(random, records.size())];
    std::vector<std::uint8_t>& payload = record.payload;
    switch (Pick(random, 12)) {
      case 0:
      case 1: {  // a length, id, count or position that lies, in either byte order
        if (payload.size() < 4) break;
        std::size_t offset = Pick(random, payload.size() - 3);
        if (Pick(random, 4) != 0) offset &= ~std::size_t(3);
        const bool bigEndian = Pick(random, 2) == 1;
        Write32(&payload[offset],
                Lie(random, Read32(&payload[offset], bigEndian), payload.size()), bigEndian);
        break;
      }
      case 2: {  // a TCID, flag or single-byte field
        if (payload.empty()) break;
        const std::size_t offset = Pick(random, 2) ? 0 : Pick(random, payload.size());
        static constexpr std::uint8_t kBytes[] = {0, 1, 2, 3, 16, 17, 127, 128, 255};
        payload[offset] = Pick(random, 3) ? kBytes[Pick(random, std::size(kBytes))]
                                          : std::uint8_t(payload[offset] + 1);
        break;
      }
      case 3: {  // another code, mostly a known one
        const std::vector<std::int16_t>& codes = OmSessionInput::Codes();
        record.code = Pick(random, 8) ? codes[Pick(random, codes.size())]
                                      : std::int16_t(std::uint16_t(random()));
        break;
      }
      case 4:  // a payload cut short
        payload.resize(Pick(random, payload.size()));
        break;
      case 5: {  // a payload that goes on
        const std::size_t more = 1 + Pick(random, 8);
        for (std::size_t i = 0; i < more; ++i) payload.push_back(std::uint8_t(random()));
        break;
      }
      case 6:
        records.erase(records.begin() + std::ptrdiff_t(&record - records.data()));
        break;
      case 7: {  // a record repeated elsewhere
        const OmStreamRecord copy = record;
        records.insert(records.begin() + std::ptrdiff_t(Pick(random, records.size() + 1)), copy);
        break;
      }
      case 8:
        std::swap(record, records[Pick(random, records.size())]);
        break;
      case 9:
        records.insert(records.begin() + std::ptrdiff_t(Pick(random, records.size() + 1)),
                       ControlRecord(random));
        break;
      case 10: {  // the bytes of one payload, mutated blindly
        std::vector<std::uint8_t> bytes = payload;
        const std::size_t room = bytes.size() * 2 + 16;
        bytes.resize(room);
        bytes.resize(_bytes(bytes.data(), payload.size(), room));
        payload = std::move(bytes);
        break;
      }
      default:  // the file cut short somewhere
        cutTo = kHeaderBytes + Pick(random, size);
        break;
    }
  }

  std::vector<std::uint8_t> bytes = Encode(parsed);
  if (cutTo < bytes.size()) bytes.resize(cutTo);
  if (bytes.size() > maxSize) return _bytes(data, size, maxSize);
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}
