// Reads the fields of one message payload where they lie. Numeric fields are byte-reversed in
// place when the sender's byte order differs, so a payload is decoded without copying; every
// field is checked against the message length first, so a short or lying message is an
// OMSException naming the message and the field, never a read past the buffer.
// The field readers are defined here, inline: every message calls several of them, and a call
// each cost as much as the read.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/stream/MessageCodes.h"

// Forced inline, except in the coverage build: there each inlined copy would count the reader's
// branches again at every call site, and a coverage figure should count the code's own decisions.
#ifdef OMF_COVERAGE
#define OM_FIELD_READER
#else
#define OM_FIELD_READER [[gnu::always_inline]]
#endif

class OmPayload {
public:
  // payload must be writable when swap is set or a field is rewritten; it is borrowed.
  // The sender's protocol has the receiver decode in place; the host hands a writable buffer
  // through a const interface.
  OmPayload(short code, unsigned length, const void* payload, bool swap)
      : _bytes(static_cast<unsigned char*>(const_cast<void*>(payload))),
        _length(payload == nullptr ? 0 : length),
        _code(code),
        _swap(swap) {}

  MessageCode Code() const { return MessageCode(_code); }
  unsigned Length() const { return _length; }
  const char* Bytes() const { return reinterpret_cast<const char*>(_bytes); }

  // Fails with "<name> payload too short" (value 1 = bytes needed, value 2 = bytes given) unless
  // the payload holds at least `bytes` bytes. Handlers call it for their fixed fields before they
  // read or reverse any of them.
  OM_FIELD_READER void Need(std::uint64_t bytes) const {
    if (bytes > _length) Fail("payload too short", double(bytes), double(_length));
  }

  // Numeric fields, reversed in place first under swap.
  OM_FIELD_READER std::int16_t Int16(unsigned offset) { return Read<std::int16_t>(offset); }
  OM_FIELD_READER std::int32_t Int32(unsigned offset) { return Read<std::int32_t>(offset); }
  OM_FIELD_READER std::int64_t Int64(unsigned offset) { return Read<std::int64_t>(offset); }
  OM_FIELD_READER double F64(unsigned offset) { return Read<double>(offset); }
  // Fields that are never reversed.
  std::int32_t RawInt32(unsigned offset) const {
    std::int32_t value;
    std::memcpy(&value, At(offset, 4), sizeof value);
    return value;
  }
  OM_FIELD_READER std::uint8_t Byte(unsigned offset) const { return *At(offset, 1); }
  void SetByte(unsigned offset, std::uint8_t value) { *At(offset, 1) = value; }

  // A number format word: the 24-bit wire value, its top byte zeroed in the payload, converted to
  // the model's format word.
  OM_FIELD_READER std::uint32_t Format(unsigned offset) {
    const std::uint32_t wire = std::uint32_t(Int32(offset)) & 0xFFFFFFu;
    std::memcpy(_bytes + offset, &wire, sizeof wire);
    return ConvertFormat(wire);
  }
  // Wire format (d bits 0-7, w bits 8-15, t bits 16-23; the top byte is ignored) to the model's
  // format word (bits 0-15 width, 16-23 type, 24-31 decimals). Widths above 40 survive for types
  // 1 and 2 only; type 1 keeps the two low bytes as a 16-bit width, high byte first.
  OM_FIELD_READER static std::uint32_t ConvertFormat(std::uint32_t wire) {
    const std::uint32_t d = wire & 0xFF;
    std::uint32_t w = (wire >> 8) & 0xFF;
    const std::uint32_t t = (wire >> 16) & 0xFF;
    if (w > 40 && t != 1 && t != 2) w = 40;
    if (t == 1) return (1u << 16) | (d << 8) | w;
    return (d << 24) | (t << 16) | w;
  }

  // A cell id field (reversed like any int32), which must not be negative:
  // "<name> <field> out of range", value 1 = the id.
  OM_FIELD_READER int CellId(unsigned offset, const char* field) { return CheckCellId(Int32(offset), field); }
  // The same check for an id read earlier.
  OM_FIELD_READER int CheckCellId(std::int64_t id, const char* field) const {
    if (id < 0 || id > INT32_MAX) FailId(id, field);
    return int(id);
  }

  // The `length` bytes at offset. A negative length or a text running past the payload fails with
  // "<name> <field> length out of range", value 1 = the length, value 2 = the bytes available.
  // An empty text still points into the payload (or is null for a null payload).
  OM_FIELD_READER std::string_view Text(std::uint64_t offset, std::int64_t length,
                                        const char* field) const {
    const std::int64_t available = offset > _length ? 0 : std::int64_t(_length - offset);
    if (length < 0 || length > available) FailLength(length, available, field);
    if (_bytes == nullptr) return {};
    const char* begin = reinterpret_cast<const char*>(_bytes);
    return std::string_view(begin + std::min<std::uint64_t>(offset, _length), std::size_t(length));
  }

  // Throws "OmFactory::Data::ProcessMessage() -- <name> <condition>" with the two values.
  [[noreturn]] void Fail(const std::string& condition, double value1 = 0,
                         double value2 = 0) const;

private:
  OM_FIELD_READER unsigned char* At(unsigned offset, unsigned size) const {
    Need(std::uint64_t(offset) + size);
    return _bytes + offset;
  }
  template <typename T>
  OM_FIELD_READER T Read(unsigned offset) {
    unsigned char* p = At(offset, sizeof(T));
    if (_swap) std::reverse(p, p + sizeof(T));
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
  }
  // The failures of the checks above, out of line: they build texts.
  [[noreturn]] void FailId(std::int64_t id, const char* field) const;
  [[noreturn]] void FailLength(std::int64_t length, std::int64_t available,
                               const char* field) const;

  unsigned char* _bytes;
  unsigned _length;
  short _code;
  bool _swap;
};
