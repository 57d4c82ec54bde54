#include "platform/outputmodel/OmNumDataValue.h"

#include <cmath>
#include <functional>

#include "platform/outputmodel/OmNumberFormat.h"

OmNumDataValue::OmNumDataValue(std::string variableName, std::string label, double value,
                               std::uint32_t format, unsigned displayMode)
    : _name(std::move(variableName)),
      _label(std::move(label)),
      _value(value),
      _format(format),
      _mode(displayMode) {}

void OmNumDataValue::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::string OmNumDataValue::Text() const {
  const std::string value = OmNumberFormat::Format(_value, _format);
  if (_mode == 1 || _label.empty()) return value;
  if (_mode == 3) return _label + " [" + value + "]";
  return _label;
}

std::unique_ptr<OmCellText> OmNumDataValue::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmNumDataValue>(*this);
}

std::int16_t OmNumDataValue::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  const auto& b = static_cast<const OmNumDataValue&>(other);
  if (int c = _name.compare(b._name)) return Sign(c);
  const bool aNaN = std::isnan(_value), bNaN = std::isnan(b._value);
  if (aNaN || bNaN) return Sign(int(aNaN) - int(bNaN));
  return Sign((_value > b._value) - (_value < b._value));
}

std::size_t OmNumDataValue::Hash() const {
  const double v = (_value == 0) ? 0.0 : (std::isnan(_value) ? NAN : _value);
  return HashMix(HashMix(std::size_t(kNumDataValue), std::hash<std::string>()(_name)),
                 std::hash<double>()(v));
}
