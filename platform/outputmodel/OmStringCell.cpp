#include "platform/outputmodel/OmStringCell.h"

#include <functional>

OmStringCell::OmStringCell(std::string text, bool translatable)
    : _key(text), _shown(std::move(text)), _translatable(translatable) {}

void OmStringCell::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::unique_ptr<OmCellText> OmStringCell::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmStringCell>(*this);
}

std::int16_t OmStringCell::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  return Sign(_shown.compare(static_cast<const OmStringCell&>(other)._shown));
}

std::size_t OmStringCell::Hash() const { return HashOf(_shown); }

std::size_t OmStringCell::HashOf(std::string_view shown) {
  // std::hash of a string and of a view of the same characters agree.
  return HashMix(std::size_t(kString), std::hash<std::string_view>()(shown));
}
