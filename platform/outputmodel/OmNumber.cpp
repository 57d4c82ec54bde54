#include "platform/outputmodel/OmNumber.h"

#include <cmath>
#include <functional>

#include "platform/outputmodel/OmNumberFormat.h"

OmNumber::OmNumber(double value, std::uint32_t format) : _value(value), _format(format) {}

void OmNumber::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::string OmNumber::Text() const { return OmNumberFormat::Format(_value, _format); }

std::unique_ptr<OmCellText> OmNumber::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmNumber>(*this);
}

std::int16_t OmNumber::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  const double b = static_cast<const OmNumber&>(other)._value;
  const bool aNaN = std::isnan(_value), bNaN = std::isnan(b);
  if (aNaN || bNaN) return Sign(int(aNaN) - int(bNaN));
  return Sign((_value > b) - (_value < b));
}

std::size_t OmNumber::Hash() const {
  // 0.0 and -0.0 compare equal and must hash equal; all NaNs compare equal too.
  const double v = (_value == 0) ? 0.0 : (std::isnan(_value) ? NAN : _value);
  return HashMix(std::size_t(kNumber), std::hash<double>()(v));
}
