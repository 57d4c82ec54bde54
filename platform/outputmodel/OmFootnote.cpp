#include "platform/outputmodel/OmFootnote.h"

#include "platform/errors/OMSException.h"

OmFootnote::OmFootnote(const OmCellText& text, const OmCellText* marker)
    : _text(text.Clone()), _marker(marker ? marker->Clone() : nullptr) {}

OmFootnote::OmFootnote(std::unique_ptr<OmCellText> text, std::unique_ptr<OmCellText> marker)
    : _text(std::move(text)), _marker(std::move(marker)) {
  if (!_text) throw OMSException("OmFootnote::OmFootnote -- text != null");
}

OmFootnote::OmFootnote(const OmFootnote& other)
    : _text(other._text->Clone()),
      _marker(other._marker ? other._marker->Clone() : nullptr),
      _refCount(other._refCount) {}

OmFootnote& OmFootnote::operator=(const OmFootnote& other) {
  if (this != &other) {
    OmFootnote copy(other);
    *this = std::move(copy);
  }
  return *this;
}

OmFootnote::OmFootnote(OmFootnote&&) noexcept = default;
OmFootnote& OmFootnote::operator=(OmFootnote&&) noexcept = default;
OmFootnote::~OmFootnote() = default;

bool OmFootnote::operator==(const OmFootnote& other) const {
  if (!_text->Equals(*other._text)) return false;
  if (!_marker || !other._marker) return !_marker && !other._marker;
  return _marker->Equals(*other._marker);
}

std::size_t OmFootnote::Hash() const {
  std::size_t h = _text->Hash();
  return _marker ? h * 1000003u + _marker->Hash() : h;
}
