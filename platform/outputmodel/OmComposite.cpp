#include "platform/outputmodel/OmComposite.h"

#include <cctype>
#include <functional>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmStringCell.h"

OmComposite::Part::Part(const Part& other) : _cell(other._cell ? other._cell->Clone() : nullptr) {
  _parts.reserve(other._parts.size());
  for (const auto& p : other._parts) _parts.push_back(std::make_unique<Part>(*p));
}

OmComposite::Part& OmComposite::Part::operator=(const Part& other) {
  if (this != &other) {
    Part copy(other);
    _cell = std::move(copy._cell);
    _parts = std::move(copy._parts);
  }
  return *this;
}

OmComposite::OmComposite(const OmCellText& pattern) : OmComposite(pattern.Clone()) {}

OmComposite::OmComposite(std::unique_ptr<OmCellText> pattern) : _root(std::move(pattern)) {
  if (!_root.Cell()) throw OMSException("OmComposite::OmComposite -- pattern != null");
  _text = _root.Cell()->Text();
}

OmComposite::OmComposite(const std::string& pattern, bool translatable)
    : OmComposite(std::make_unique<OmStringCell>(pattern, translatable)) {}

OmComposite::OmComposite(const OmComposite& other) = default;
OmComposite& OmComposite::operator=(const OmComposite& other) = default;
OmComposite::~OmComposite() = default;

OmComposite::Part& OmComposite::Current() {
  Part* p = &_root;
  for (int i = 0; i < _openDepth; ++i) p = p->Parts().back().get();
  return *p;
}

void OmComposite::Add(const OmCellText& cell) { Add(cell.Clone()); }

void OmComposite::Add(std::unique_ptr<OmCellText> cell) {
  if (!cell) throw OMSException("OmComposite::Add -- cell != null");
  Current().Parts().push_back(std::make_unique<Part>(std::move(cell)));
}

void OmComposite::BeginRepeatList() {
  Current().Parts().push_back(std::make_unique<Part>());
  ++_openDepth;
}

void OmComposite::EndRepeatList() {
  if (_openDepth == 0) throw OMSException("OmComposite::EndRepeatList -- no open repeat list");
  --_openDepth;
}

bool OmComposite::InRepeatList() const { return _openDepth > 0; }

OmComposite::Part& OmComposite::Root() { return _root; }
const OmComposite::Part& OmComposite::Root() const { return _root; }
OmCellText& OmComposite::Pattern() const { return *_root.Cell(); }

std::size_t OmComposite::NArguments() const { return _root.Parts().size(); }

OmCellText* OmComposite::Argument(std::size_t i) const {
  if (i >= _root.Parts().size()) {
    throw OMSException("OmComposite::Argument -- i < NArguments()", double(i),
                       double(_root.Parts().size()));
  }
  return _root.Parts()[i]->Cell();
}

namespace {

std::string PartText(const OmComposite::Part& part, bool keepUnused);

// The text an argument stands for: a cell's text (a nested composite substituted), or the
// members of a repeat list joined by ", ".
std::string ArgumentText(const OmComposite::Part& part, bool keepUnused) {
  if (part.IsRepeatList()) {
    std::string joined;
    for (std::size_t i = 0; i < part.Parts().size(); ++i) {
      if (i > 0) joined += ", ";
      joined += ArgumentText(*part.Parts()[i], keepUnused);
    }
    return joined;
  }
  if (auto* nested = dynamic_cast<const OmComposite*>(part.Cell())) {
    return nested->SubstitutedText(nullptr, keepUnused);
  }
  // A cell with sub-parts of its own acts as a pattern for them.
  if (!part.Parts().empty()) return PartText(part, keepUnused);
  return part.Cell()->Text();
}

std::string PartText(const OmComposite::Part& part, bool keepUnused) {
  if (part.IsRepeatList()) return ArgumentText(part, keepUnused);
  std::vector<std::string> args;
  args.reserve(part.Parts().size());
  for (const auto& p : part.Parts()) args.push_back(ArgumentText(*p, keepUnused));
  return OmComposite::SubstituteText(part.Cell()->Text(), args, keepUnused);
}

std::int16_t ComparePart(const OmComposite::Part& a, const OmComposite::Part& b) {
  if (a.IsRepeatList() != b.IsRepeatList()) return a.IsRepeatList() ? 1 : -1;
  if (!a.IsRepeatList()) {
    if (a.Cell()->TypeIdentity() != b.Cell()->TypeIdentity()) {
      const int ka = a.Cell()->Kind(), kb = b.Cell()->Kind();
      if (ka != kb) return ka < kb ? -1 : 1;
      return a.Cell()->TypeIdentity().before(b.Cell()->TypeIdentity()) ? -1 : 1;
    }
    if (std::int16_t c = a.Cell()->Compare(*b.Cell())) return c;
  }
  if (a.Parts().size() != b.Parts().size()) return a.Parts().size() < b.Parts().size() ? -1 : 1;
  for (std::size_t i = 0; i < a.Parts().size(); ++i) {
    if (std::int16_t c = ComparePart(*a.Parts()[i], *b.Parts()[i])) return c;
  }
  return 0;
}

std::size_t HashPart(const OmComposite::Part& part) {
  std::size_t h = part.IsRepeatList() ? 0x5eed : part.Cell()->Hash();
  for (const auto& p : part.Parts()) h = h * 31 + HashPart(*p);
  return h;
}

}  // namespace

std::string OmComposite::SubstituteText(const std::string& pattern,
                                        const std::vector<std::string>& args, bool keepUnused) {
  std::string out;
  out.reserve(pattern.size());
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    if (c == '\\' && i + 1 < pattern.size() && pattern[i + 1] == '%') {
      out += '%';
      i += 2;
      continue;
    }
    if (c != '^' || i + 1 >= pattern.size()) {
      out += c;
      ++i;
      continue;
    }
    if (pattern[i + 1] == '^') {
      out += '^';
      i += 2;
      continue;
    }
    std::size_t j = i + 1;
    std::size_t n = 0;
    while (j < pattern.size() && std::isdigit(static_cast<unsigned char>(pattern[j])) &&
           j - i <= 4) {
      n = n * 10 + std::size_t(pattern[j] - '0');
      ++j;
    }
    if (j == i + 1) {  // "^" before anything but a digit stays as it is
      out += c;
      ++i;
      continue;
    }
    if (n >= 1 && n <= args.size()) {
      out += args[n - 1];
    } else if (keepUnused) {
      out.append(pattern, i, j - i);
    }
    i = j;
  }
  return out;
}

std::string OmComposite::SubstitutedText(const Part* node, bool keepUnused) const {
  return PartText(node ? *node : _root, keepUnused);
}

void OmComposite::Substitute(const Part* node, bool keepUnused) {
  _text = SubstitutedText(node, keepUnused);
}

void OmComposite::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::unique_ptr<OmCellText> OmComposite::Clone(OmMemoryRegion* region) const {
  CountClone(region);
  return std::make_unique<OmComposite>(*this);
}

std::int16_t OmComposite::Compare(const OmCellText& other) const {
  if (std::int16_t k = CompareKind(other)) return k;
  return ComparePart(_root, static_cast<const OmComposite&>(other)._root);
}

std::size_t OmComposite::Hash() const { return HashMix(std::size_t(kComposite), HashPart(_root)); }
