#include "platform/outputmodel/OmStringDataValue.h"

#include <functional>

OmStringDataValue::OmStringDataValue(std::string variableName, std::string label,
                                     std::string value, std::uint32_t format, unsigned displayMode)
    : _name(std::move(variableName)),
      _label(std::move(label)),
      _value(std::move(value)),
      _format(format),
      _mode(displayMode) {}

void OmStringDataValue::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::string OmStringDataValue::Text() const {
  if (_mode == 1 || _label.empty()) return _value;
  if (_mode == 3) return _label + " [" + _value + "]";
  return _label;
}

std::unique_ptr<OmCellText> OmStringDataValue::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmStringDataValue>(*this);
}

std::int16_t OmStringDataValue::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  const auto& b = static_cast<const OmStringDataValue&>(other);
  if (int c = _name.compare(b._name)) return Sign(c);
  return Sign(_value.compare(b._value));
}

std::size_t OmStringDataValue::Hash() const {
  return HashMix(HashMix(std::size_t(kStringDataValue), std::hash<std::string>()(_name)),
                 std::hash<std::string>()(_value));
}
