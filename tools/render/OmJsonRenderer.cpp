#include "tools/render/OmJsonRenderer.h"

#include <algorithm>
#include <cmath>
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

using json = OmJsonRenderer::Json;

namespace {

// Outlines and category trees nest at most this deep; anything deeper (only a damaged stream
// makes such trees) is attached to the deepest node allowed, so that writing the JSON never
// recurses without bound.
constexpr std::size_t kMaxNesting = 64;

const char* AxisName(OmTableLayout::Axis axis) {
  switch (axis) {
    case OmTableLayout::kColumns: return "columns";
    case OmTableLayout::kLayers: return "layers";
    case OmTableLayout::kRows: break;
  }
  return "rows";
}

json Numbers(const std::vector<std::int16_t>& values) {
  json list = json::array();
  for (std::int16_t v : values) list.push_back(v);
  return list;
}

// The number a cell holds; null for texts, the system-missing value and non-finite values.
json ValueOf(const OmCellText* cell) {
  double value = 0;
  if (auto* number = dynamic_cast<const OmNumber*>(cell)) {
    value = number->Value();
  } else if (auto* data = dynamic_cast<const OmNumDataValue*>(cell)) {
    value = data->Value();
  } else {
    return nullptr;
  }
  if (value == OmNumber::kSysMiss || !std::isfinite(value)) return nullptr;
  return value;
}

// Sets node's kind and the fields of that kind.
class KindWriter : public OmOutputPart::Visitor {
public:
  KindWriter(json& node, const OmJsonRenderer& renderer, const OmDisplayText& text)
      : _node(node), _renderer(renderer), _text(text) {}

  void Visit(OmPivotTable& table) override {
    _node["kind"] = "table";
    _node.update(_renderer.Table(table));
  }
  void Visit(OmProcedure& procedure) override {
    _node["kind"] = "procedure";
    _node["command"] = _text.Plain(procedure.CommandName());
  }
  void Visit(OmHeading&) override { _node["kind"] = "heading"; }
  void Visit(OmTextBlock& block) override {
    _node["kind"] = "text";
    _node["lines"] = Lines(block.Lines());
    _node["log"] = block.IsLog();
  }
  void Visit(OmPageTitle& title) override {
    _node["kind"] = "pagetitle";
    _node["lines"] = Lines(title.Lines());
  }
  void Visit(OmChart&) override { _node["kind"] = "chart"; }
  void Visit(OmAnswerTree&) override { _node["kind"] = "tree"; }
  void Visit(OmModel&) override { _node["kind"] = "model"; }
  void Visit(OmInteractive&) override { _node["kind"] = "interactive"; }

private:
  json Lines(const std::vector<std::string>& lines) const {
    json list = json::array();
    for (const std::string& line : lines) list.push_back(_text.Plain(line));
    return list;
  }

  json& _node;
  const OmJsonRenderer& _renderer;
  const OmDisplayText& _text;
};

}  // namespace

OmJsonRenderer::OmJsonRenderer() : OmJsonRenderer(Options{}) {}

OmJsonRenderer::OmJsonRenderer(Options options)
    : _options(std::move(options)), _text(_options.codePage) {}

json OmJsonRenderer::Part(OmOutputPart& part) const {
  json node = json::object();
  node["kind"] = "heading";
  node["label"] = _text.Text(part.Label());
  KindWriter writer(node, *this, _text);
  part.Accept(writer);
  if (!part._keep) node["excluded"] = true;
  node["children"] = json::array();
  return node;
}

json OmJsonRenderer::Outline(OmOutputTree& tree) const {
  json root = {{"kind", "root"}, {"label", ""}, {"children", json::array()}};
  // Open nodes, outermost first: the level of each and its children list. A list stays valid
  // while it is open, since only the innermost open list grows.
  std::vector<std::pair<int, json*>> open{{-1, &root["children"]}};
  for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
    OmOutputPart* part = n.Value();
    const int level = n.Level();
    if (part != nullptr && !part->_keep && !_options.showExcluded &&
        ExcludedPartHidesItsSubtree(*part)) {
      n = n.SubtreeEnd().Here();
      continue;
    }
    n = n.Next();
    // A node without a part (the tree's root) adds nothing: its children join its parent's.
    if (part == nullptr) continue;
    while (open.back().first >= level) open.pop_back();
    json& children = *open.back().second;
    children.push_back(Part(*part));
    if (open.size() < kMaxNesting) open.emplace_back(level, &children.back()["children"]);
  }
  return json{{"outline", std::move(root)}};
}

namespace {

constexpr std::size_t kLineWidth = 100;

bool Plain(const json& value) { return !value.is_object() && !value.is_array(); }

// Nesting is bounded by the renderer (kMaxNesting), so the recursion is too.
void WriteValue(const json& value, std::size_t indent, std::string& out) {
  if (Plain(value)) {
    out += value.dump(-1, ' ', false, json::error_handler_t::replace);
    return;
  }
  const bool array = value.is_array();
  if (value.empty()) {
    out += array ? "[]" : "{}";
    return;
  }
  if (array && std::all_of(value.begin(), value.end(), Plain)) {
    out += "[";
    bool first = true;
    for (const json& item : value) {
      if (!first) out += ", ";
      first = false;
      WriteValue(item, indent, out);
    }
    out += "]";
    return;
  }
  // A small object of plain values and lists of them (a cell, a leaf category) takes one line.
  auto flat = [](const json& item) {
    return Plain(item) || (item.is_array() && std::all_of(item.begin(), item.end(), Plain));
  };
  if (!array && std::all_of(value.begin(), value.end(), flat)) {
    std::string line = "{";
    bool first = true;
    for (auto it = value.begin(); it != value.end(); ++it) {
      if (!first) line += ", ";
      first = false;
      line += json(it.key()).dump(-1, ' ', false, json::error_handler_t::replace) + ": ";
      WriteValue(*it, indent, line);
    }
    line += "}";
    if (line.size() <= kLineWidth) {
      out += line;
      return;
    }
  }
  const std::string inner(indent + 2, ' ');
  out += array ? "[\n" : "{\n";
  bool first = true;
  for (auto it = value.begin(); it != value.end(); ++it) {
    if (!first) out += ",\n";
    first = false;
    out += inner;
    if (!array) out += json(it.key()).dump(-1, ' ', false, json::error_handler_t::replace) + ": ";
    WriteValue(*it, indent + 2, out);
  }
  out += "\n" + std::string(indent, ' ') + (array ? "]" : "}");
}

}  // namespace

std::string OmJsonRenderer::Write(const Json& value) {
  std::string out;
  WriteValue(value, 0, out);
  return out + "\n";
}

std::string OmJsonRenderer::Render(OmOutputTree& tree) const { return Write(Outline(tree)); }

json OmJsonRenderer::Table(const OmPivotTable& table) const {
  json out = json::object();
  const OmCellText* title = table.TableTitle() ? table.TableTitle() : table.Label();
  out["title"] = _text.Text(title);
  out["subtype"] = _text.Text(&table.TemplateName());
  out["caption"] = table.Caption() ? json(_text.Text(table.Caption())) : json(nullptr);
  out["corner"] = table.CornerText() ? json(_text.Text(table.CornerText())) : json(nullptr);
  out["id"] = table.TableId();

  // The title's footnotes: its own and the outline label's.
  std::vector<std::int16_t> titleNotes;
  for (const OmCellText* cell : {title, static_cast<const OmCellText*>(table.Label())}) {
    if (cell == nullptr) continue;
    for (std::int16_t i : cell->Footnotes()) {
      if (std::find(titleNotes.begin(), titleNotes.end(), i) == titleNotes.end()) titleNotes.push_back(i);
    }
  }
  if (!titleNotes.empty()) out["titleFootnotes"] = Numbers(titleNotes);

  json notes = json::array();
  for (std::size_t i = 0; i < table.Footnotes().size(); ++i) {
    const OmFootnote& note = table.Footnotes()[i];
    const std::string marker = note.Marker() ? _text.Text(note.Marker())
                                             : _text.Plain(OmTextRenderer::FootnoteMarker(table, int(i)));
    notes.push_back({{"index", i}, {"marker", marker}, {"text", _text.Text(&note.Text())}});
  }
  out["footnotes"] = std::move(notes);

  const OmTableLayout layout(table);
  json dimensions = json::array();
  for (int d = 0; d < table.NDimensions(); ++d) {
    const OmDimension& dimension = table.Dimension(d);
    json dim = {{"label", _text.Text(dimension.Label())},
                {"axis", AxisName(layout.AxisOf(d))},
                {"categories", json::array()}};
    if (dimension.HideLabel()) dim["hideLabel"] = true;
    if (dimension.HideCategories()) dim["hideCategories"] = true;
    // Depth first without recursion: each open node with its next child and its list.
    struct Open {
      const OmDimensionNode* node;
      std::size_t next;
      json* list;
    };
    std::vector<Open> open{{&dimension.Root(), 0, &dim["categories"]}};
    while (!open.empty()) {
      Open& top = open.back();
      if (top.next >= top.node->NChildren()) {
        open.pop_back();
        continue;
      }
      const OmDimensionNode* child = top.node->Child(top.next++);
      json cat = {{"label", _text.Text(child->Label())},
                  {"index", child->IsGroup() ? -1 : child->LeafIndex()},
                  {"children", json::array()}};
      if (child->Label() != nullptr && !child->Label()->Visible()) cat["hidden"] = true;
      if (child->Label() != nullptr && !child->Label()->Footnotes().empty()) {
        cat["footnotes"] = Numbers(child->Label()->Footnotes());
      }
      json* list = top.list;
      list->push_back(std::move(cat));
      if (child->NChildren() > 0) {
        json* children = &list->back()["children"];
        // Too deep: the rest of this branch joins the deepest list allowed.
        open.push_back({child, 0, open.size() < kMaxNesting ? children : list});
      }
    }
    dimensions.push_back(std::move(dim));
  }
  out["dimensions"] = std::move(dimensions);

  std::vector<std::pair<std::vector<int>, const OmCellText*>> stored;
  stored.reserve(table.NCells());
  for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) {
    if (it.Cell() != nullptr) stored.emplace_back(it.Coord(), it.Cell());
  }
  std::sort(stored.begin(), stored.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  json cells = json::array();
  for (const auto& [coords, cell] : stored) {
    json entry = {{"at", coords},
                  {"value", ValueOf(cell)},
                  {"text", _text.Text(cell)},
                  {"footnotes", Numbers(cell->Footnotes())}};
    if (!cell->Markers().empty()) {
      json markers = json::array();
      for (const std::string& m : cell->Markers()) markers.push_back(_text.Plain(m));
      entry["markers"] = std::move(markers);
    }
    if (!cell->Visible()) entry["hidden"] = true;
    cells.push_back(std::move(entry));
  }
  out["cells"] = std::move(cells);
  return out;
}
