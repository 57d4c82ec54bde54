#include "platform/outputmodel/OmCellText.h"

#include <algorithm>

#include "platform/outputmodel/OmMemoryRegion.h"

struct OmCellText::Decorations {
  std::vector<std::int16_t> footnotes;
  std::vector<std::string> markers;
  std::vector<std::string> properties;
  std::string textColor;
  std::string backgroundColor;
  bool bold = false;
  bool visible = true;
};

namespace {
const std::vector<std::int16_t> kNoFootnotes;
const std::vector<std::string> kNoTexts;
const std::string kNoColour;
}  // namespace

OmCellText::OmCellText() = default;

OmCellText::OmCellText(const OmCellText& other)
    : _tracker(other._tracker),
      _decor(other._decor ? std::make_unique<Decorations>(*other._decor) : nullptr) {}

OmCellText& OmCellText::operator=(const OmCellText& other) {
  if (this != &other) {
    _tracker = other._tracker;
    _decor = other._decor ? std::make_unique<Decorations>(*other._decor) : nullptr;
  }
  return *this;
}

OmCellText::~OmCellText() = default;

bool OmCellText::Equals(const OmCellText& other) const {
  return TypeIdentity() == other.TypeIdentity() && Compare(other) == 0;
}

OmCellText::Decorations& OmCellText::Decor() {
  if (!_decor) _decor = std::make_unique<Decorations>();
  return *_decor;
}

const std::vector<std::int16_t>& OmCellText::Footnotes() const {
  return _decor ? _decor->footnotes : kNoFootnotes;
}

void OmCellText::Footnote(std::int16_t index) {
  auto& refs = Decor().footnotes;
  if (std::find(refs.begin(), refs.end(), index) == refs.end()) refs.push_back(index);
}

void OmCellText::RemoveFootnote(std::int16_t index) {
  if (!_decor) return;
  auto& refs = _decor->footnotes;
  refs.erase(std::remove(refs.begin(), refs.end(), index), refs.end());
}

const std::vector<std::string>& OmCellText::Markers() const {
  return _decor ? _decor->markers : kNoTexts;
}

void OmCellText::addMarker(const std::string& marker) { Decor().markers.push_back(marker); }

const std::vector<std::string>& OmCellText::MiscProperties() const {
  return _decor ? _decor->properties : kNoTexts;
}

void OmCellText::addMiscProperty(const std::string& property) {
  Decor().properties.push_back(property);
}

bool OmCellText::TextBold() const { return _decor && _decor->bold; }
void OmCellText::setTextBold(bool bold) {
  if (bold || _decor) Decor().bold = bold;
}

const std::string& OmCellText::TextColor() const { return _decor ? _decor->textColor : kNoColour; }
void OmCellText::setTextColor(const std::string& colour) { Decor().textColor = colour; }

const std::string& OmCellText::BackgroundColor() const {
  return _decor ? _decor->backgroundColor : kNoColour;
}
void OmCellText::setBackgroundColor(const std::string& colour) { Decor().backgroundColor = colour; }

bool OmCellText::Visible() const { return !_decor || _decor->visible; }
void OmCellText::setVisible(bool visible) {
  if (!visible || _decor) Decor().visible = visible;
}

void OmCellText::CountClone(OmMemoryRegion* region) {
  (region ? region : OmMemoryRegion::DefaultHeap())->Count();
}
