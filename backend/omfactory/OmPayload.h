// Reads the fields of one message payload where they lie. Numeric fields are byte-reversed in
// place when the sender's byte order differs, so a payload is decoded without copying; every
// field is checked against the message length first, so a short or lying message is an
// OMSException naming the message and the field, never a read past the buffer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/stream/MessageCodes.h"

class OmPayload {
public:
  // payload must be writable when swap is set or a field is rewritten; it is borrowed.
  OmPayload(short code, unsigned length, const void* payload, bool swap);

  MessageCode Code() const { return MessageCode(_code); }
  unsigned Length() const { return _length; }
  const char* Bytes() const { return reinterpret_cast<const char*>(_bytes); }

  // Fails with "<name> payload too short" (value 1 = bytes needed, value 2 = bytes given) unless
  // the payload holds at least `bytes` bytes. Handlers call it for their fixed fields before they
  // read or reverse any of them.
  void Need(std::uint64_t bytes) const;

  // Numeric fields, reversed in place first under swap.
  std::int16_t Int16(unsigned offset);
  std::int32_t Int32(unsigned offset);
  std::int64_t Int64(unsigned offset);
  double F64(unsigned offset);
  // Fields that are never reversed.
  std::int32_t RawInt32(unsigned offset) const;
  std::uint8_t Byte(unsigned offset) const;
  void SetByte(unsigned offset, std::uint8_t value);

  // A number format word: the 24-bit wire value, its top byte zeroed in the payload, converted to
  // the model's format word.
  std::uint32_t Format(unsigned offset);
  // Wire format (d bits 0-7, w bits 8-15, t bits 16-23; the top byte is ignored) to the model's
  // format word (bits 0-15 width, 16-23 type, 24-31 decimals). Widths above 40 survive for types
  // 1 and 2 only; type 1 keeps the two low bytes as a 16-bit width, high byte first.
  static std::uint32_t ConvertFormat(std::uint32_t wire);

  // A cell id field (reversed like any int32), which must lie in the cell slot table's range:
  // "<name> <field> out of range", value 1 = the id, value 2 = the limit.
  int CellId(unsigned offset, const char* field);
  // The same check for an id read earlier.
  int CheckCellId(std::int64_t id, const char* field) const;

  // The `length` bytes at offset. A negative length or a text running past the payload fails with
  // "<name> <field> length out of range", value 1 = the length, value 2 = the bytes available.
  // An empty text still points into the payload (or is null for a null payload).
  std::string_view Text(std::uint64_t offset, std::int64_t length, const char* field) const;

  // Throws "OmFactory::Data::ProcessMessage() -- <name> <condition>" with the two values.
  [[noreturn]] void Fail(const std::string& condition, double value1 = 0,
                         double value2 = 0) const;

private:
  unsigned char* At(unsigned offset, unsigned size) const;

  unsigned char* _bytes;
  unsigned _length;
  short _code;
  bool _swap;
};
