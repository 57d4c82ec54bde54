#include "platform/outputmodel/OmStringCellUTF8.h"

#include <functional>

OmStringCellUTF8::OmStringCellUTF8(std::string a) : _texts{std::move(a)} {}

OmStringCellUTF8::OmStringCellUTF8(std::string a, std::string b)
    : _texts{std::move(a), std::move(b)} {}

OmStringCellUTF8::OmStringCellUTF8(std::string a, std::string b, std::string c)
    : _texts{std::move(a), std::move(b), std::move(c)} {}

void OmStringCellUTF8::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::unique_ptr<OmCellText> OmStringCellUTF8::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmStringCellUTF8>(*this);
}

std::int16_t OmStringCellUTF8::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  const auto& b = static_cast<const OmStringCellUTF8&>(other)._texts;
  for (std::size_t i = 0; i < _texts.size() && i < b.size(); ++i) {
    if (int c = _texts[i].compare(b[i])) return Sign(c);
  }
  return Sign(int(_texts.size()) - int(b.size()));
}

std::size_t OmStringCellUTF8::Hash() const {
  std::size_t h = std::size_t(kStringUTF8);
  for (const auto& t : _texts) h = HashMix(h, std::hash<std::string>()(t));
  return h;
}
