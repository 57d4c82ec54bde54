// Reads fields out of written payloads at their table offsets, in a given byte order, so that the
// stream tests compare numbers rather than byte arrays.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

class PayloadFields {
public:
  PayloadFields(const std::vector<std::uint8_t>& payload, bool bigEndian)
      : _payload(payload), _bigEndian(bigEndian) {}

  std::uint64_t Unsigned(std::size_t offset, std::size_t width, bool bigEndian) const {
    EXPECT_LE(offset + width, _payload.size())
        << "field at " << offset << " lies outside the payload";
    if (offset + width > _payload.size()) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
      const std::size_t shift = 8 * (bigEndian ? width - 1 - i : i);
      value |= static_cast<std::uint64_t>(_payload[offset + i]) << shift;
    }
    return value;
  }
  std::int32_t Int32(std::size_t offset) const {
    return static_cast<std::int32_t>(Unsigned(offset, 4, _bigEndian));
  }
  // A field the factory never swaps: little-endian in either order.
  std::int32_t FixedInt32(std::size_t offset) const {
    return static_cast<std::int32_t>(Unsigned(offset, 4, false));
  }
  std::int16_t Int16(std::size_t offset) const {
    return static_cast<std::int16_t>(Unsigned(offset, 2, _bigEndian));
  }
  std::int64_t Int64(std::size_t offset) const {
    return static_cast<std::int64_t>(Unsigned(offset, 8, _bigEndian));
  }
  double Double(std::size_t offset) const {
    const std::uint64_t bits = Unsigned(offset, 8, _bigEndian);
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }
  std::uint8_t Byte(std::size_t offset) const {
    return static_cast<std::uint8_t>(Unsigned(offset, 1, false));
  }
  std::string Text(std::size_t offset, std::size_t length) const {
    EXPECT_LE(offset + length, _payload.size())
        << "text at " << offset << " lies outside the payload";
    if (offset + length > _payload.size()) return {};
    return std::string(_payload.begin() + static_cast<std::ptrdiff_t>(offset),
                       _payload.begin() + static_cast<std::ptrdiff_t>(offset + length));
  }
  std::size_t Size() const { return _payload.size(); }

private:
  const std::vector<std::uint8_t>& _payload;
  bool _bigEndian;
};
