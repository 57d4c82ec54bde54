#include "tools/render/OmExportView.h"

#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextRenderer.h"

std::vector<OmExportView::Part> OmExportView::Parts(OmOutputTree& tree) {
  std::vector<Part> shown;
  std::vector<std::pair<int, const OmProcedure*>> open;  // enclosing parts: level, procedure
  for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
    OmOutputPart* part = n.Value();
    const int level = n.Level();
    if (part != nullptr && !part->_keep && ExcludedPartHidesItsSubtree(*part)) {
      n = n.SubtreeEnd().Here();
      continue;
    }
    n = n.Next();
    if (part == nullptr) continue;
    while (!open.empty() && open.back().first >= level) open.pop_back();
    const OmProcedure* procedure = open.empty() ? nullptr : open.back().second;
    if (auto* p = dynamic_cast<const OmProcedure*>(part)) procedure = p;
    shown.push_back({part, int(open.size()), procedure});
    open.emplace_back(level, procedure);
  }
  return shown;
}

OmExportView::Table::Table(const OmPivotTable& table, const OmDisplayText& text)
    : table(table), layout(table), _text(text) {}

std::string OmExportView::Table::Text(const OmCellText* cell) const {
  if (cell == nullptr || !cell->Visible()) return std::string();
  std::string text = _text.Text(cell);
  for (const std::string& m : cell->Markers()) text += _text.Plain(m);
  return text;
}

std::vector<std::string> OmExportView::Table::Refs(const OmCellText* cell) {
  std::vector<std::string> refs;
  if (cell == nullptr || !cell->Visible()) return refs;
  for (std::int16_t index : cell->Footnotes()) {
    if (index < 0 || std::size_t(index) >= table.Footnotes().size()) continue;
    refs.push_back(Marker(index));
    if (_seen.insert(index).second) _referenced.push_back(index);
  }
  return refs;
}

std::string OmExportView::Table::Marker(int index) const {
  const OmFootnote& note = table.Footnotes()[std::size_t(index)];
  return note.Marker() ? _text.Text(note.Marker()) : _text.Plain(OmTextRenderer::FootnoteMarker(table, index));
}

std::vector<std::pair<std::string, std::string>> OmExportView::Table::Notes() const {
  std::vector<std::pair<std::string, std::string>> notes;
  for (int index : _referenced) {
    notes.emplace_back(Marker(index), _text.Text(&table.Footnotes()[std::size_t(index)].Text()));
  }
  return notes;
}

const OmCellText* OmExportView::Table::Title() const {
  return table.TableTitle() ? table.TableTitle() : table.Label();
}

std::string OmExportView::Table::Path(const OmTableLayout::Leaf& leaf) const {
  std::string path;
  for (const OmDimensionNode* node : leaf.path) {
    const std::string label = Text(node->Label());
    if (label.empty()) continue;
    path += (path.empty() ? "" : " / ") + label;
  }
  return path;
}

std::vector<std::string> OmExportView::Table::LayerLines(const OmTableLayout::Combination& layer) const {
  std::vector<std::string> lines;
  const std::vector<int>& dims = layout.Dimensions(OmTableLayout::kLayers);
  for (std::size_t k = 0; k < dims.size(); ++k) {
    const OmDimension& dimension = table.Dimension(dims[k]);
    if (dimension.HideCategories()) continue;
    const std::string label = dimension.HideLabel() ? std::string() : Text(dimension.Label());
    lines.push_back((label.empty() ? "" : label + ": ") + Path(*layer[k]));
  }
  return lines;
}
