#include "platform/outputmodel/OmDimensionNode.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <typeinfo>

#include <unicode/coll.h>
#include <unicode/locid.h>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/strings/CodePage.h"
#include "platform/strings/icuTracker.h"

namespace {

// Below this many children a linear scan beats building a hash index.
constexpr std::size_t kIndexThreshold = 16;

const icu::Collator* RootCollator() {
  static std::unique_ptr<icu::Collator> collator;
  static std::once_flag once;
  std::call_once(once, [] {
    UErrorCode status = U_ZERO_ERROR;
    collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) collator.reset();
  });
  return collator.get();
}

// A label's text as Unicode: UTF-8 cells are UTF-8 whatever the code page; the others are in the
// session's code page, like every text of the stream.
icu::UnicodeString Decoded(const OmCellText& cell) {
  const std::string text = cell.Text();
  if (dynamic_cast<const OmStringCellUTF8*>(&cell) != nullptr) {
    return icu::UnicodeString::fromUTF8(text);
  }
  return CodePage::Current().Decode(text);
}

// The collation of the procedure's locale, through the tracker of either label; the root
// collation for labels without one.
const icu::Collator* CollatorFor(const OmCellText& a, const OmCellText& b) {
  if (const icuTracker* tracker = a.getICUTracker()) return &tracker->GetCollator();
  if (const icuTracker* tracker = b.getICUTracker()) return &tracker->GetCollator();
  return RootCollator();
}

// A label's numeric value, for labels that are numbers; false otherwise.
bool NumericValue(const OmCellText& cell, double& value) {
  if (auto* n = dynamic_cast<const OmNumber*>(&cell)) {
    value = n->Value();
    return true;
  }
  if (auto* v = dynamic_cast<const OmNumDataValue*>(&cell)) {
    value = v->Value();
    return true;
  }
  return false;
}

bool LabelsEqual(const OmCellText* a, const OmCellText* b) {
  if (!a || !b) return !a && !b;
  return a->Equals(*b);
}

}  // namespace

OmDimensionNode::OmDimensionNode(std::unique_ptr<OmCellText> label, bool group, int leafIndex)
    : _label(std::move(label)), _leaf(group ? -1 : leafIndex), _group(group) {}

OmDimensionNode::OmDimensionNode(const OmDimensionNode& other)
    : _label(other._label ? other._label->Clone() : nullptr),
      _leaf(other._leaf),
      _sortMark(other._sortMark),
      _group(other._group),
      _ungroup(other._ungroup) {
  _children.reserve(other._children.size());
  for (const auto& c : other._children) {
    _children.push_back(std::make_unique<OmDimensionNode>(*c));
    _children.back()->_parent = this;
  }
}

OmDimensionNode::~OmDimensionNode() = default;

void OmDimensionNode::setLabel(std::unique_ptr<OmCellText> label) {
  _label = std::move(label);
  if (_parent) _parent->Forget();
}

int OmDimensionNode::Depth() const {
  int depth = 0;
  for (const OmDimensionNode* p = _parent; p != nullptr; p = p->_parent) ++depth;
  return depth;
}

int OmDimensionNode::IndexInParent() const {
  if (!_parent) return -1;
  for (std::size_t i = 0; i < _parent->_children.size(); ++i) {
    if (_parent->_children[i].get() == this) return int(i);
  }
  return -1;
}

OmDimensionNode* OmDimensionNode::Child(std::size_t i) const {
  if (i >= _children.size()) {
    throw OMSException("OmDimensionNode::Child -- i < NChildren()", double(i),
                       double(_children.size()));
  }
  return _children[i].get();
}

OmDimensionNode::Children_t& OmDimensionNode::Children() {
  Forget();
  return _children;
}

OmDimensionNode* OmDimensionNode::AddChild(std::unique_ptr<OmDimensionNode> child) {
  if (!child) throw OMSException("OmDimensionNode::AddChild -- child != null");
  child->_parent = this;
  OmDimensionNode* added = child.get();
  _children.push_back(std::move(child));
  _textsUnique = kUnknown;
  if (_index) {
    if (added->_label) {
      _index->emplace(added->_label->Hash(), int(_children.size() - 1));
    } else {
      _index.reset();  // unlabelled children are found by scanning
    }
  }
  return added;
}

std::unique_ptr<OmDimensionNode> OmDimensionNode::RemoveChild(std::size_t i) {
  if (i >= _children.size()) {
    throw OMSException("OmDimensionNode::RemoveChild -- i < NChildren()", double(i),
                       double(_children.size()));
  }
  std::unique_ptr<OmDimensionNode> child = std::move(_children[i]);
  _children.erase(_children.begin() + std::ptrdiff_t(i));
  child->_parent = nullptr;
  Forget();
  return child;
}

const OmDimensionNode::Index& OmDimensionNode::LookupIndex() const {
  if (!_index) {
    auto index = std::make_unique<Index>();
    index->reserve(_children.size());
    for (std::size_t i = 0; i < _children.size(); ++i) {
      if (_children[i]->_label) index->emplace(_children[i]->_label->Hash(), int(i));
    }
    _index = std::move(index);
  }
  return *_index;
}

int OmDimensionNode::FindChild(const OmCellText& label, bool group) const {
  if (_children.size() < kIndexThreshold) {
    for (std::size_t i = 0; i < _children.size(); ++i) {
      const auto& c = *_children[i];
      if (c._group == group && c._label && c._label->Equals(label)) return int(i);
    }
    return -1;
  }
  int found = -1;
  auto [first, last] = LookupIndex().equal_range(label.Hash());
  for (auto it = first; it != last; ++it) {
    const auto& c = *_children[std::size_t(it->second)];
    if (c._group == group && c._label && c._label->Equals(label) &&
        (found < 0 || it->second < found)) {
      found = it->second;
    }
  }
  return found;
}

namespace {

// The text of a label that is a plain string cell, or null.
const std::string* PlainText(const OmCellText* label) {
  if (!label || typeid(*label) != typeid(OmStringCell)) return nullptr;
  return &static_cast<const OmStringCell&>(*label).ShownText();
}

}  // namespace

bool OmDimensionNode::TextsUnique() const {
  if (_textsUnique == kUnknown) {
    std::vector<std::string_view> texts;
    for (const auto& c : _children) {
      if (const std::string* text = PlainText(c->_label.get())) texts.push_back(*text);
    }
    std::sort(texts.begin(), texts.end());
    _textsUnique = std::adjacent_find(texts.begin(), texts.end()) == texts.end() ? kUnique : kShared;
  }
  return _textsUnique == kUnique;
}

int OmDimensionNode::FindCategoryText(std::string_view text, int guess) const {
  if (guess >= 0 && std::size_t(guess) < _children.size()) {
    const OmDimensionNode& c = *_children[std::size_t(guess)];
    const std::string* shown = c._group ? nullptr : PlainText(c._label.get());
    if (shown && *shown == text && TextsUnique()) return guess;
  }
  return FindCategoryText(text);
}

int OmDimensionNode::FindCategoryText(std::string_view text) const {
  // What Equals decides for an OmStringCell(text): the same dynamic type, the same shown text.
  auto matches = [text](const OmDimensionNode& c) {
    if (c._group) return false;
    const std::string* shown = PlainText(c._label.get());
    return shown && *shown == text;
  };
  if (_children.size() < kIndexThreshold) {
    for (std::size_t i = 0; i < _children.size(); ++i) {
      if (matches(*_children[i])) return int(i);
    }
    return -1;
  }
  int found = -1;
  auto [first, last] = LookupIndex().equal_range(OmStringCell::HashOf(text));
  for (auto it = first; it != last; ++it) {
    if (matches(*_children[std::size_t(it->second)]) && (found < 0 || it->second < found)) {
      found = it->second;
    }
  }
  return found;
}

void OmDimensionNode::CollectLeaves(std::vector<int>& leaves) const {
  if (!_group && _leaf >= 0) leaves.push_back(_leaf);
  for (const auto& c : _children) c->CollectLeaves(leaves);
}

bool OmDimensionNode::operator==(const OmDimensionNode& other) const {
  return _group == other._group && LabelsEqual(_label.get(), other._label.get());
}

bool OmDimensionNode::operator<(const OmDimensionNode& other) const {
  const OmCellText* a = _label.get();
  const OmCellText* b = other._label.get();
  if (!a || !b) return !a && b;
  double va = 0, vb = 0;
  const bool na = NumericValue(*a, va), nb = NumericValue(*b, vb);
  if (na != nb) return na;
  if (na) {
    // NaN sorts last so that the order stays strict and weak.
    if (va != va || vb != vb) return va == va && vb != vb;
    return va < vb;
  }
  const icu::UnicodeString ua = Decoded(*a), ub = Decoded(*b);
  if (const icu::Collator* collator = CollatorFor(*a, *b)) {
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult r = collator->compare(ua, ub, status);
    if (U_SUCCESS(status)) return r == UCOL_LESS;
  }
  return ua < ub;
}
