#include "platform/outputmodel/OmVariable.h"

#include <functional>

OmVariable::OmVariable(std::string name, std::string label, unsigned displayMode)
    : _name(std::move(name)), _label(std::move(label)), _mode(displayMode) {}

void OmVariable::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::string OmVariable::Text() const {
  if (_mode == 1 || _label.empty()) return _name;
  if (_mode == 3) return _label + " [" + _name + "]";
  return _label;
}

std::unique_ptr<OmCellText> OmVariable::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmVariable>(*this);
}

std::int16_t OmVariable::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  return Sign(_name.compare(static_cast<const OmVariable&>(other)._name));
}

std::size_t OmVariable::Hash() const {
  return HashMix(std::size_t(kVariable), std::hash<std::string>()(_name));
}
