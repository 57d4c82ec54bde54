#include "backend/omfactory/OmPayload.h"

#include <algorithm>
#include <cstring>

#include "backend/omfactory/OmCellSlots.h"
#include "platform/errors/OMSException.h"

OmPayload::OmPayload(short code, unsigned length, const void* payload, bool swap)
    // The sender's protocol has the receiver decode in place; the host hands a writable buffer
    // through a const interface.
    : _bytes(static_cast<unsigned char*>(const_cast<void*>(payload))),
      _length(payload == nullptr ? 0 : length),
      _code(code),
      _swap(swap) {}

void OmPayload::Need(std::uint64_t bytes) const {
  if (bytes > _length) Fail("payload too short", double(bytes), double(_length));
}

unsigned char* OmPayload::At(unsigned offset, unsigned size) const {
  Need(std::uint64_t(offset) + size);
  return _bytes + offset;
}

std::int16_t OmPayload::Int16(unsigned offset) {
  unsigned char* p = At(offset, 2);
  if (_swap) std::reverse(p, p + 2);
  std::int16_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

std::int32_t OmPayload::Int32(unsigned offset) {
  unsigned char* p = At(offset, 4);
  if (_swap) std::reverse(p, p + 4);
  std::int32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

std::int64_t OmPayload::Int64(unsigned offset) {
  unsigned char* p = At(offset, 8);
  if (_swap) std::reverse(p, p + 8);
  std::int64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

double OmPayload::F64(unsigned offset) {
  unsigned char* p = At(offset, 8);
  if (_swap) std::reverse(p, p + 8);
  double value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

std::int32_t OmPayload::RawInt32(unsigned offset) const {
  std::int32_t value;
  std::memcpy(&value, At(offset, 4), sizeof value);
  return value;
}

std::uint8_t OmPayload::Byte(unsigned offset) const { return *At(offset, 1); }

void OmPayload::SetByte(unsigned offset, std::uint8_t value) { *At(offset, 1) = value; }

std::uint32_t OmPayload::Format(unsigned offset) {
  const std::uint32_t wire = std::uint32_t(Int32(offset)) & 0xFFFFFFu;
  std::memcpy(_bytes + offset, &wire, sizeof wire);
  return ConvertFormat(wire);
}

std::uint32_t OmPayload::ConvertFormat(std::uint32_t wire) {
  const std::uint32_t d = wire & 0xFF;
  std::uint32_t w = (wire >> 8) & 0xFF;
  const std::uint32_t t = (wire >> 16) & 0xFF;
  if (w > 40 && t != 1 && t != 2) w = 40;
  if (t == 1) return (1u << 16) | (d << 8) | w;
  return (d << 24) | (t << 16) | w;
}

int OmPayload::CellId(unsigned offset, const char* field) {
  return CheckCellId(Int32(offset), field);
}

int OmPayload::CheckCellId(std::int64_t id, const char* field) const {
  if (id < 0 || id >= OmCellSlots::kIdLimit) {
    Fail(std::string(field) + " out of range", double(id), OmCellSlots::kIdLimit);
  }
  return int(id);
}

std::string_view OmPayload::Text(std::uint64_t offset, std::int64_t length,
                                 const char* field) const {
  const std::int64_t available = offset > _length ? 0 : std::int64_t(_length - offset);
  if (length < 0 || length > available) {
    Fail(std::string(field) + " length out of range", double(length), double(available));
  }
  if (_bytes == nullptr) return {};
  const char* begin = reinterpret_cast<const char*>(_bytes);
  return std::string_view(begin + std::min<std::uint64_t>(offset, _length), std::size_t(length));
}

void OmPayload::Fail(const std::string& condition, double value1, double value2) const {
  const char* name = MessageCodeNameOf(_code);
  throw OMSException(std::string("OmFactory::Data::ProcessMessage() -- ") +
                         (name != nullptr ? name : "IPC_UNKNOWN") + " " + condition,
                     value1, value2);
}
