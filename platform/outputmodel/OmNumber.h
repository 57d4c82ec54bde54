// A numeric cell: a double and its 32-bit format word (bits 0-15 width, 16-23 type, 24-31
// decimals). The most negative double is the system-missing value and renders as ".".
#pragma once

#include <cstdint>
#include <limits>

#include "platform/outputmodel/OmCellText.h"

class OmNumber : public OmCellText {
public:
  static constexpr double kSysMiss = -std::numeric_limits<double>::max();
  // F, width 40, no decimals.
  static constexpr std::uint32_t kDefaultFormat = 0x50028;

  explicit OmNumber(double value, std::uint32_t format = kDefaultFormat);

  double Value() const { return _value; }
  void setValue(double value) { _value = value; }
  std::uint32_t Format() const { return _format; }
  void setFormat(std::uint32_t format) { _format = format; }
  bool IsSysMiss() const { return _value == kSysMiss; }

  // The parts of a format word.
  static int Width(std::uint32_t format) { return int(format & 0xFFFF); }
  static int Type(std::uint32_t format) { return int((format >> 16) & 0xFF); }
  static int Decimals(std::uint32_t format) { return int((format >> 24) & 0xFF); }
  static std::uint32_t MakeFormat(int type, int width, int decimals) {
    return (std::uint32_t(decimals & 0xFF) << 24) | (std::uint32_t(type & 0xFF) << 16) |
           std::uint32_t(width & 0xFFFF);
  }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kNumber; }
  std::string Text() const override;
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Numbers order by value (NaN after every number, system-missing before); format ignored.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

private:
  double _value;
  std::uint32_t _format;
};
