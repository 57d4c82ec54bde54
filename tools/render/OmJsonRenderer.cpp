#include "tools/render/OmJsonRenderer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/outputmodel/OmTextRenderer.h"
#include "tools/render/OmTableLayout.h"

namespace {

// Outlines and category trees nest at most this deep; anything deeper (only a damaged stream
// makes such trees) is attached to the deepest node allowed, so that writing the JSON never
// recurses without bound.
constexpr std::size_t kMaxNesting = 64;
// An object of plain values takes one line when the line is at most this long.
constexpr std::size_t kLineWidth = 100;

const char* AxisName(OmTableLayout::Axis axis) {
  switch (axis) {
    case OmTableLayout::kColumns: return "columns";
    case OmTableLayout::kLayers: return "layers";
    case OmTableLayout::kRows: break;
  }
  return "rows";
}

template <class T>
std::string Integer(T value) {
  char buffer[24];
  return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

// A list of plain values, on one line.
std::string List(const std::vector<std::string>& items) {
  std::string out = "[";
  for (std::size_t i = 0; i < items.size(); ++i) out += (i == 0 ? "" : ", ") + items[i];
  return out + "]";
}

template <class T>
std::string Numbers(const std::vector<T>& values) {
  std::vector<std::string> items;
  items.reserve(values.size());
  for (T v : values) items.push_back(Integer(v));
  return List(items);
}

// The number a cell holds; null for texts, the system-missing value and non-finite values.
std::string ValueOf(const OmCellText* cell) {
  double value = 0;
  if (auto* number = dynamic_cast<const OmNumber*>(cell)) {
    value = number->Value();
  } else if (auto* data = dynamic_cast<const OmNumDataValue*>(cell)) {
    value = data->Value();
  } else {
    return "null";
  }
  if (value == OmNumber::kSysMiss) return "null";
  return OmJsonRenderer::Number(value);
}

// One member of an object: its value's text when the value is flat (plain, or a list of plain
// values), else a writer that lays the value out at a given indentation.
struct Member {
  std::string key;
  std::string flat;
  std::function<void(std::ostream&, std::size_t)> nested;
};

Member Flat(const char* key, std::string text) { return {key, std::move(text), nullptr}; }

// An object: on one line when every member is flat and the line fits, else one member a line.
void WriteObject(std::ostream& out, const std::vector<Member>& members, std::size_t indent) {
  if (members.empty()) {
    out << "{}";
    return;
  }
  if (std::all_of(members.begin(), members.end(), [](const Member& m) { return !m.nested; })) {
    std::string line = "{";
    for (std::size_t i = 0; i < members.size(); ++i) {
      line += (i == 0 ? "\"" : ", \"") + members[i].key + "\": " + members[i].flat;
    }
    line += "}";
    if (line.size() <= kLineWidth) {
      out << line;
      return;
    }
  }
  const std::string inner(indent + 2, ' ');
  out << "{\n";
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (i > 0) out << ",\n";
    out << inner << '"' << members[i].key << "\": ";
    if (members[i].nested) {
      members[i].nested(out, indent + 2);
    } else {
      out << members[i].flat;
    }
  }
  out << "\n" << std::string(indent, ' ') << "}";
}

// A list of count objects, each written by item(out, index, indent); count > 0.
template <class Item>
void WriteList(std::ostream& out, std::size_t count, std::size_t indent, Item item) {
  const std::string inner(indent + 2, ' ');
  out << "[\n";
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out << ",\n";
    out << inner;
    item(out, i, indent + 2);
  }
  out << "\n" << std::string(indent, ' ') << "]";
}

// A member holding a list of objects: "[]" when empty, else laid out one object a line.
template <class Item>
Member ListMember(const char* key, std::size_t count, Item item) {
  if (count == 0) return Flat(key, "[]");
  return {key, std::string(), [count, item](std::ostream& out, std::size_t indent) {
            WriteList(out, count, indent, item);
          }};
}

class Writer {
public:
  Writer(const OmJsonRenderer::Options& options, const OmDisplayText& text) : _options(options), _text(text) {}

  void Write(OmOutputTree& tree, std::ostream& out) {
    Collect(tree);
    out << "{\n  \"outline\": ";
    std::vector<Member> root{Flat("kind", "\"root\""), Flat("label", "\"\"")};
    root.push_back(Children(0, 0));
    WriteObject(out, root, 2);
    out << "\n}\n";
  }

private:
  struct Entry {
    OmOutputPart* part;
    std::size_t depth;
  };

  // The parts shown, in pre-order, each with its depth in the JSON's nesting.
  void Collect(OmOutputTree& tree) {
    // Levels of the open nodes; the root's list is always open.
    std::vector<int> open{-1};
    for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
      OmOutputPart* part = n.Value();
      const int level = n.Level();
      if (part != nullptr && !part->_keep && !_options.showExcluded && ExcludedPartHidesItsSubtree(*part)) {
        n = n.SubtreeEnd().Here();
        continue;
      }
      n = n.Next();
      // A node without a part (the tree's root) adds nothing: its children join its parent's.
      if (part == nullptr) continue;
      while (open.back() >= level) open.pop_back();
      _entries.push_back({part, open.size() - 1});
      if (open.size() < kMaxNesting) open.push_back(level);
    }
  }

  // The "children" member of the node whose children start at entry first, at depth.
  Member Children(std::size_t first, std::size_t depth) {
    std::vector<std::size_t> children;
    for (std::size_t i = first; i < _entries.size() && _entries[i].depth >= depth; ++i) {
      if (_entries[i].depth == depth) children.push_back(i);
    }
    return ListMember("children", children.size(), [this, children](std::ostream& out, std::size_t i, std::size_t indent) {
      WriteNode(out, children[i], indent);
    });
  }

  void WriteNode(std::ostream& out, std::size_t index, std::size_t indent) {
    OmOutputPart& part = *_entries[index].part;
    std::vector<Member> members{Flat("kind", "\"heading\""), Flat("label", Str(_text.Text(part.Label())))};
    if (auto* table = dynamic_cast<const OmPivotTable*>(&part)) {
      members[0].flat = "\"table\"";
      TableMembers(*table, members);
    } else if (auto* procedure = dynamic_cast<const OmProcedure*>(&part)) {
      members[0].flat = "\"procedure\"";
      members.push_back(Flat("command", Str(_text.Plain(procedure->CommandName()))));
    } else if (auto* block = dynamic_cast<const OmTextBlock*>(&part)) {
      members[0].flat = "\"text\"";
      members.push_back(Flat("lines", Lines(block->Lines())));
      members.push_back(Flat("log", block->IsLog() ? "true" : "false"));
    } else if (auto* title = dynamic_cast<const OmPageTitle*>(&part)) {
      members[0].flat = "\"pagetitle\"";
      members.push_back(Flat("lines", Lines(title->Lines())));
    } else if (dynamic_cast<const OmChart*>(&part)) {
      members[0].flat = "\"chart\"";
    } else if (dynamic_cast<const OmAnswerTree*>(&part)) {
      members[0].flat = "\"tree\"";
    } else if (dynamic_cast<const OmModel*>(&part)) {
      members[0].flat = "\"model\"";
    } else if (dynamic_cast<const OmInteractive*>(&part)) {
      members[0].flat = "\"interactive\"";
    }
    if (!part._keep) members.push_back(Flat("excluded", "true"));
    members.push_back(Children(index + 1, _entries[index].depth + 1));
    WriteObject(out, members, indent);
  }

  std::string Str(std::string_view text) const { return OmJsonRenderer::String(text); }
  std::string Lines(const std::vector<std::string>& lines) const {
    std::vector<std::string> items;
    items.reserve(lines.size());
    for (const std::string& line : lines) items.push_back(Str(_text.Plain(line)));
    return List(items);
  }
  std::string Nullable(const OmCellText* cell) const { return cell ? Str(_text.Text(cell)) : "null"; }

  void TableMembers(const OmPivotTable& table, std::vector<Member>& members) {
    const OmCellText* title = table.TableTitle() ? table.TableTitle() : table.Label();
    members.push_back(Flat("title", Str(_text.Text(title))));
    members.push_back(Flat("subtype", Str(_text.Text(&table.TemplateName()))));
    members.push_back(Flat("caption", Nullable(table.Caption())));
    members.push_back(Flat("corner", Nullable(table.CornerText())));
    members.push_back(Flat("id", Integer(table.TableId())));

    // The title's footnotes: its own and the outline label's.
    std::vector<std::int16_t> titleNotes;
    for (const OmCellText* cell : {title, static_cast<const OmCellText*>(table.Label())}) {
      if (cell == nullptr) continue;
      for (std::int16_t i : cell->Footnotes()) {
        if (std::find(titleNotes.begin(), titleNotes.end(), i) == titleNotes.end()) titleNotes.push_back(i);
      }
    }
    if (!titleNotes.empty()) members.push_back(Flat("titleFootnotes", Numbers(titleNotes)));

    members.push_back(ListMember("footnotes", table.Footnotes().size(),
                                 [this, &table](std::ostream& out, std::size_t i, std::size_t indent) {
      const OmFootnote& note = table.Footnotes()[i];
      const std::string marker = note.Marker() ? _text.Text(note.Marker())
                                               : _text.Plain(OmTextRenderer::FootnoteMarker(table, int(i)));
      WriteObject(out, {Flat("index", Integer(i)), Flat("marker", Str(marker)), Flat("text", Str(_text.Text(&note.Text())))},
                  indent);
    }));
    std::vector<const char*> axes;
    {
      const OmTableLayout layout(table);
      for (int d = 0; d < table.NDimensions(); ++d) axes.push_back(AxisName(layout.AxisOf(d)));
    }
    members.push_back(ListMember("dimensions", std::size_t(table.NDimensions()),
                                 [this, &table, axes](std::ostream& out, std::size_t d, std::size_t indent) {
      const OmDimension& dimension = table.Dimension(int(d));
      std::vector<Member> dim{Flat("label", Str(_text.Text(dimension.Label()))),
                              Flat("axis", std::string("\"") + axes[d] + "\""),
                              Categories(&dimension.Root(), 1)};
      if (dimension.HideLabel()) dim.push_back(Flat("hideLabel", "true"));
      if (dimension.HideCategories()) dim.push_back(Flat("hideCategories", "true"));
      WriteObject(out, dim, indent);
    }));
    Cells(table, members);
  }

  // The "categories" or "children" member listing node's children, which sit at depth (the
  // dimension's top level is 1). Below the deepest level allowed a node's descendants follow it
  // in its own list.
  Member Categories(const OmDimensionNode* node, std::size_t depth, const char* key = "categories") {
    std::vector<std::pair<const OmDimensionNode*, bool>> items;  // node, whether it lists children
    for (std::size_t i = 0; i < node->NChildren(); ++i) {
      const OmDimensionNode* child = node->Child(i);
      if (depth < kMaxNesting) {
        items.emplace_back(child, true);
        continue;
      }
      std::vector<const OmDimensionNode*> todo{child};
      while (!todo.empty()) {
        const OmDimensionNode* n = todo.back();
        todo.pop_back();
        items.emplace_back(n, false);
        for (std::size_t j = n->NChildren(); j-- > 0;) todo.push_back(n->Child(j));
      }
    }
    return ListMember(key, items.size(), [this, items, depth](std::ostream& out, std::size_t i, std::size_t indent) {
      const auto [child, nested] = items[i];
      std::vector<Member> cat{Flat("label", Str(_text.Text(child->Label()))),
                              Flat("index", Integer(child->IsGroup() ? -1 : child->LeafIndex())),
                              nested ? Categories(child, depth + 1, "children") : Flat("children", "[]")};
      if (child->Label() != nullptr && !child->Label()->Visible()) cat.push_back(Flat("hidden", "true"));
      if (child->Label() != nullptr && !child->Label()->Footnotes().empty()) {
        cat.push_back(Flat("footnotes", Numbers(child->Label()->Footnotes())));
      }
      WriteObject(out, cat, indent);
    });
  }

  // The "cells" member: every stored cell, sorted by coordinates.
  void Cells(const OmPivotTable& table, std::vector<Member>& members) {
    // Cells are usually stored in coordinate order already; otherwise they are sorted by a key
    // that packs their coordinates, when the coordinates fit 64 bits, or by the coordinates.
    std::size_t count = 0;
    bool sorted = true;
    const std::size_t n = std::size_t(table.NDimensions());
    std::vector<int> previous, largest(n, 0);
    for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) {
      std::vector<int> coords = it.Coord();
      if (count++ > 0 && sorted && !(previous < coords)) sorted = false;
      for (std::size_t d = 0; d < n && d < coords.size(); ++d) largest[d] = std::max(largest[d], coords[d]);
      previous = std::move(coords);
    }
    auto write = [this](std::ostream& out, const std::vector<int>& coords, const OmCellText* cell, std::size_t indent) {
      std::vector<Member> entry{Flat("at", Numbers(coords)), Flat("value", ValueOf(cell)),
                                Flat("text", Str(_text.Text(cell))), Flat("footnotes", Numbers(cell->Footnotes()))};
      if (!cell->Markers().empty()) {
        std::vector<std::string> markers;
        for (const std::string& m : cell->Markers()) markers.push_back(Str(_text.Plain(m)));
        entry.push_back(Flat("markers", List(markers)));
      }
      if (!cell->Visible()) entry.push_back(Flat("hidden", "true"));
      WriteObject(out, entry, indent);
    };
    if (count == 0) {
      members.push_back(Flat("cells", "[]"));
      return;
    }
    members.push_back({"cells", std::string(), [&table, write, sorted, largest](std::ostream& out, std::size_t indent) {
      const std::string inner(indent + 2, ' ');
      std::size_t written = 0;
      auto item = [&](const std::vector<int>& coords, const OmCellText* cell) {
        out << (written++ == 0 ? "[\n" : ",\n") << inner;
        write(out, coords, cell, indent + 2);
      };
      // Cells are read without making objects for plain numbers: each is written at once.
      OmNumber scratch(0.0);
      if (sorted) {
        for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) {
          item(it.Coord(), it.Read(scratch));
        }
      } else {
        SortedCells(table, largest, scratch, item);
      }
      out << "\n" << std::string(indent, ' ') << "]";
    }});
  }

  template <class Item>
  static void SortedCells(const OmPivotTable& table, const std::vector<int>& largest, OmNumber& scratch,
                          Item item) {
    std::vector<int> bits;
    int total = 0;
    for (int most : largest) {
      bits.push_back(int(std::bit_width(unsigned(most))));
      total += bits.back();
    }
    if (total <= 64) {
      // Positions, not cell pointers, are sorted: a plain number has no object to point to.
      std::vector<std::pair<std::uint64_t, OmPivotTable::Iterator>> keyed;
      for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) {
        const std::vector<int> coords = it.Coord();
        std::uint64_t key = 0;
        for (std::size_t d = 0; d < bits.size(); ++d) {
          key = bits[d] == 0 ? key : (key << bits[d]) | std::uint64_t(d < coords.size() ? coords[d] : 0);
        }
        keyed.emplace_back(key, it);
      }
      std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
      std::vector<int> coords(bits.size());
      for (const auto& [key, at] : keyed) {
        std::uint64_t rest = key;
        for (std::size_t d = bits.size(); d-- > 0;) {
          coords[d] = int(bits[d] == 0 ? 0 : rest & ((std::uint64_t(1) << bits[d]) - 1));
          rest = bits[d] == 0 ? rest : rest >> bits[d];
        }
        item(coords, at.Read(scratch));
      }
      return;
    }
    std::vector<std::pair<std::vector<int>, OmPivotTable::Iterator>> stored;
    for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) stored.emplace_back(it.Coord(), it);
    std::sort(stored.begin(), stored.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [coords, at] : stored) item(coords, at.Read(scratch));
  }

  const OmJsonRenderer::Options& _options;
  const OmDisplayText& _text;
  std::vector<Entry> _entries;
};

// The length of the valid UTF-8 sequence at text[i], or 0 with bad set to how many bytes make
// up its maximal invalid prefix (at least 1).
std::size_t Utf8Sequence(std::string_view text, std::size_t i, std::size_t& bad) {
  const unsigned char lead = static_cast<unsigned char>(text[i]);
  std::size_t length = 0;
  unsigned char low = 0x80, high = 0xBF;  // the second byte's range
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    bad = 1;
    return 0;
  }
  for (std::size_t k = 1; k < length; ++k) {
    if (i + k >= text.size()) {
      bad = k;
      return 0;
    }
    const unsigned char c = static_cast<unsigned char>(text[i + k]);
    if (c < (k == 1 ? low : 0x80) || c > (k == 1 ? high : 0xBF)) {
      bad = k;
      return 0;
    }
  }
  return length;
}

}  // namespace

OmJsonRenderer::OmJsonRenderer() : OmJsonRenderer(Options{}) {}

OmJsonRenderer::OmJsonRenderer(Options options)
    : _options(std::move(options)), _text(_options.codePage) {}

void OmJsonRenderer::Write(OmOutputTree& tree, std::ostream& out) const { Writer(_options, _text).Write(tree, out); }

std::string OmJsonRenderer::Render(OmOutputTree& tree) const {
  std::ostringstream out;
  Write(tree, out);
  return out.str();
}

std::string OmJsonRenderer::String(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '"';
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    switch (c) {
      case '"': out += "\\\""; ++i; continue;
      case '\\': out += "\\\\"; ++i; continue;
      case '\b': out += "\\b"; ++i; continue;
      case '\f': out += "\\f"; ++i; continue;
      case '\n': out += "\\n"; ++i; continue;
      case '\r': out += "\\r"; ++i; continue;
      case '\t': out += "\\t"; ++i; continue;
      default: break;
    }
    if (static_cast<unsigned char>(c) < 0x20) {
      static const char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[(c >> 4) & 0xF];
      out += kHex[c & 0xF];
      ++i;
      continue;
    }
    std::size_t bad = 0;
    const std::size_t length = Utf8Sequence(text, i, bad);
    if (length == 0) {
      out += "\xEF\xBF\xBD";
      i += bad;
    } else {
      out.append(text.substr(i, length));
      i += length;
    }
  }
  out += '"';
  return out;
}

std::string OmJsonRenderer::Number(double value) {
  if (!std::isfinite(value)) return "null";
  if (value == 0) return std::signbit(value) ? "-0.0" : "0.0";
  // The shortest digits that read back, as d.ddde[+-]x, laid out as printf's %g would with
  // exponents from -4 to 15, and with ".0" on whole numbers.
  char buffer[40];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, std::abs(value), std::chars_format::scientific);
  const std::string_view text(buffer, std::size_t(result.ptr - buffer));
  const std::size_t e = text.find('e');
  std::string digits;
  for (char c : text.substr(0, e)) {
    if (c != '.') digits += c;
  }
  int exponent = 0;
  std::from_chars(text.data() + e + (text[e + 1] == '+' ? 2 : 1), text.data() + text.size(), exponent);
  const int k = int(digits.size());
  const int n = exponent + 1;  // the decimal point's place after the first digit
  std::string out = std::signbit(value) ? "-" : "";
  if (k <= n && n <= 15) {
    out += digits + std::string(std::size_t(n - k), '0') + ".0";
  } else if (0 < n && n <= 15) {
    out += digits.substr(0, std::size_t(n)) + "." + digits.substr(std::size_t(n));
  } else if (-4 < n && n <= 0) {
    out += "0." + std::string(std::size_t(-n), '0') + digits;
  } else {
    out += digits.substr(0, 1);
    if (k > 1) out += "." + digits.substr(1);
    const int x = n - 1;
    out += x < 0 ? "e-" : "e+";
    const int magnitude = std::abs(x);
    if (magnitude < 10) out += '0';
    out += Integer(magnitude);
  }
  return out;
}
