#include "platform/outputmodel/OmTextRenderer.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>

#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"

namespace {

// Display width of UTF-8 text: one column per code point.
std::size_t Columns(const std::string& text) {
  std::size_t n = 0;
  for (unsigned char c : text) n += (c & 0xC0) != 0x80;
  return n;
}

std::string Pad(const std::string& text, std::size_t width, bool right) {
  const std::size_t w = Columns(text);
  if (w >= width) return text;
  const std::string fill(width - w, ' ');
  return right ? fill + text : text + fill;
}

std::string TrimRight(std::string s) {
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return s;
}

// One category of one dimension as the layout uses it: its coordinate and the labels from the
// dimension's top level down to it.
struct Leaf {
  int coord = 0;
  std::vector<const OmDimensionNode*> path;
};

std::vector<Leaf> LeavesOf(const OmDimension& dim) {
  std::vector<Leaf> leaves;
  for (const OmDimensionNode* node : dim.Leaves()) {
    Leaf leaf;
    leaf.coord = node->LeafIndex();
    for (const OmDimensionNode* n = node; n->Parent() != nullptr; n = n->Parent()) leaf.path.push_back(n);
    std::reverse(leaf.path.begin(), leaf.path.end());
    leaves.push_back(std::move(leaf));
  }
  // A dimension without categories still addresses its cells at coordinate 0.
  if (leaves.empty()) leaves.push_back(Leaf{});
  return leaves;
}

// Every combination of one leaf per dimension, the first dimension outermost.
std::vector<std::vector<const Leaf*>> Combinations(const std::vector<std::vector<Leaf>>& dims) {
  std::vector<std::vector<const Leaf*>> out(1);
  for (const auto& leaves : dims) {
    std::vector<std::vector<const Leaf*>> next;
    next.reserve(out.size() * leaves.size());
    for (const auto& prefix : out) {
      for (const Leaf& leaf : leaves) {
        next.push_back(prefix);
        next.back().push_back(&leaf);
      }
    }
    out = std::move(next);
  }
  return out;
}

std::size_t MaxDepth(const std::vector<Leaf>& leaves) {
  std::size_t depth = 0;
  for (const Leaf& l : leaves) depth = std::max(depth, l.path.size());
  return depth;
}

// The labels of a leaf spread over `depth` header slots, each at its own level. In column
// headers (categoryLast) a category sits in the last slot, level with the other categories.
std::vector<const OmDimensionNode*> Slots(const Leaf& leaf, std::size_t depth, bool categoryLast) {
  std::vector<const OmDimensionNode*> slots(depth, nullptr);
  if (leaf.path.empty()) return slots;
  for (std::size_t i = 0; i + 1 < leaf.path.size(); ++i) slots[i] = leaf.path[i];
  slots[categoryLast ? depth - 1 : leaf.path.size() - 1] = leaf.path.back();
  return slots;
}

// A group label repeats what the previous combination showed in the same slot; it is shown once.
bool IsRepeatedGroup(const OmDimensionNode* node, const Leaf& leaf, const Leaf* previous,
                     std::size_t depth, std::size_t level, bool categoryLast) {
  return previous != nullptr && node != leaf.path.back() &&
         Slots(*previous, depth, categoryLast)[level] == node;
}

// Writes lines indented by pad, as Indent() would indent the text they make: every line of a
// text broken at its line breaks, empty ones left empty.
class LineWriter {
public:
  LineWriter(std::ostream& out, std::size_t pad) : _out(out), _pad(pad, ' ') {}

  void Line(std::string_view text) {
    for (;;) {
      const std::size_t end = text.find('\n');
      const std::string_view line = text.substr(0, end);
      if (!line.empty()) _out << _pad << line;
      _out << '\n';
      if (end == std::string_view::npos) return;
      text.remove_prefix(end + 1);
    }
  }

private:
  std::ostream& _out;
  std::string _pad;
};

class TableWriter {
public:
  TableWriter(const OmPivotTable& table, LineWriter& out) : _table(table), _out(out) {}

  void Write(bool allLayers) {
    Prepare();
    LineWriter& out = _out;
    const OmCellText* title = _table.TableTitle() ? _table.TableTitle() : _table.Label();
    std::string titleLine = Decorated(title);
    if (_table.Label() && title != _table.Label()) titleLine += Refs(_table.Label());
    if (!titleLine.empty()) out.Line(titleLine);

    auto layerCombos = Combinations(_layerLeaves);
    const std::size_t shown = allLayers ? layerCombos.size() : std::min<std::size_t>(1, layerCombos.size());
    for (std::size_t i = 0; i < shown; ++i) {
      for (std::size_t k = 0; k < _layerDims.size(); ++k) {
        const OmDimension& dim = _table.Dimension(_layerDims[k]);
        if (dim.HideCategories()) continue;  // a split kept at one value says nothing
        std::string line = dim.HideLabel() ? std::string() : Decorated(dim.Label()) + ": ";
        line += PathText(*layerCombos[i][k]);
        out.Line(TrimRight(line));
      }
      WriteGrid(layerCombos[i]);
    }
    if (shown < layerCombos.size()) {
      out.Line("(" + std::to_string(layerCombos.size()) + " layers; only the first is shown)");
    }
    if (_table.Caption()) out.Line(Decorated(_table.Caption()));
    for (int index : _referenced) {
      if (index < 0 || std::size_t(index) >= _table.Footnotes().size()) continue;
      out.Line(OmTextRenderer::FootnoteMarker(_table, index) + ". " +
               CellText(&_table.Footnotes()[std::size_t(index)].Text()));
    }
  }

private:
  void Prepare() {
    std::vector<bool> placed(std::size_t(_table.NDimensions()), false);
    auto take = [&](const std::vector<short>& axis, std::vector<int>& dims) {
      for (short d : axis) {
        if (d >= 0 && d < _table.NDimensions() && !placed[std::size_t(d)]) {
          placed[std::size_t(d)] = true;
          dims.push_back(d);
        }
      }
    };
    take(_table.Rows(), _rowDims);
    take(_table.Columns(), _colDims);
    take(_table.Layers(), _layerDims);
    // A dimension on no axis still holds cells: show it with the rows.
    for (int d = 0; d < _table.NDimensions(); ++d) {
      if (!placed[std::size_t(d)]) _rowDims.push_back(d);
    }
    for (int d : _rowDims) _rowLeaves.push_back(LeavesOf(_table.Dimension(d)));
    for (int d : _colDims) _colLeaves.push_back(LeavesOf(_table.Dimension(d)));
    for (int d : _layerDims) _layerLeaves.push_back(LeavesOf(_table.Dimension(d)));
  }

  std::string CellText(const OmCellText* cell) {
    if (!cell || !cell->Visible()) return std::string();
    if (auto* composite = dynamic_cast<const OmComposite*>(cell)) return composite->SubstitutedText();
    return cell->Text();
  }

  // Footnote references of a cell as "[a,b]", remembered for the list under the table.
  std::string Refs(const OmCellText* cell) {
    if (!cell || cell->Footnotes().empty()) return std::string();
    std::string refs = "[";
    bool first = true;
    for (std::int16_t index : cell->Footnotes()) {
      if (!first) refs += ",";
      first = false;
      refs += OmTextRenderer::FootnoteMarker(_table, index);
      _referenced.insert(index);
    }
    return refs + "]";
  }

  std::string Decorated(const OmCellText* cell) {
    if (!cell) return std::string();
    std::string text = CellText(cell);
    for (const std::string& m : cell->Markers()) text += m;
    return text + Refs(cell);
  }

  std::string PathText(const Leaf& leaf) {
    std::string text;
    for (const OmDimensionNode* n : leaf.path) {
      if (!text.empty()) text += " / ";
      text += Decorated(n->Label());
    }
    return text;
  }

  void WriteGrid(const std::vector<const Leaf*>& layer) {
    // Row header columns: one per label level of each row dimension that shows its categories.
    std::vector<std::size_t> rowDepth;
    std::size_t headerCols = 0;
    for (std::size_t k = 0; k < _rowDims.size(); ++k) {
      const bool hidden = _table.Dimension(_rowDims[k]).HideCategories();
      rowDepth.push_back(hidden ? 0 : MaxDepth(_rowLeaves[k]));
      headerCols += rowDepth.back();
    }
    auto rowCombos = Combinations(_rowLeaves);
    auto colCombos = Combinations(_colLeaves);
    const std::size_t nCols = headerCols + colCombos.size();

    // Header rows: per column dimension its label (unless hidden) and its label levels.
    std::vector<std::vector<std::string>> header;
    for (std::size_t k = 0; k < _colDims.size(); ++k) {
      const OmDimension& dim = _table.Dimension(_colDims[k]);
      if (!dim.HideLabel() && dim.Label()) {
        std::vector<std::string> row(nCols);
        for (std::size_t c = 0; c < colCombos.size(); ++c) {
          if (c == 0 || !SamePrefix(colCombos[c], colCombos[c - 1], k)) {
            row[headerCols + c] = Decorated(dim.Label());
          }
        }
        header.push_back(std::move(row));
      }
      if (dim.HideCategories()) continue;
      const std::size_t depth = MaxDepth(_colLeaves[k]);
      for (std::size_t level = 0; level < depth; ++level) {
        std::vector<std::string> row(nCols);
        for (std::size_t c = 0; c < colCombos.size(); ++c) {
          const OmDimensionNode* node = Slots(*colCombos[c][k], depth, true)[level];
          const Leaf* previous =
              (c > 0 && SamePrefix(colCombos[c], colCombos[c - 1], k)) ? colCombos[c - 1][k] : nullptr;
          const bool repeat = node && IsRepeatedGroup(node, *colCombos[c][k], previous, depth, level, true);
          if (node && !repeat) row[headerCols + c] = Decorated(node->Label());
        }
        header.push_back(std::move(row));
      }
    }
    if (header.empty()) header.emplace_back(nCols);
    // The corner: the corner text, else the row dimensions' labels in the last header row.
    if (_table.CornerText()) {
      if (nCols > 0) header.front()[0] = Decorated(_table.CornerText());
    } else {
      std::size_t col = 0;
      for (std::size_t k = 0; k < _rowDims.size(); ++k) {
        const OmDimension& dim = _table.Dimension(_rowDims[k]);
        if (rowDepth[k] > 0 && !dim.HideLabel()) header.back()[col] = Decorated(dim.Label());
        col += rowDepth[k];
      }
    }

    // Body rows are made twice, once to measure and once to write, rather than held: a table
    // may have millions of cells.
    std::vector<int> coords(std::size_t(_table.NDimensions()), 0);
    for (std::size_t k = 0; k < _layerDims.size(); ++k) coords[std::size_t(_layerDims[k])] = layer[k]->coord;
    std::vector<std::string> row(nCols);
    std::vector<bool> right(nCols, false);
    auto bodyRow = [&](std::size_t r) {
      std::fill(row.begin(), row.end(), std::string());
      std::fill(right.begin(), right.end(), false);
      std::size_t col = 0;
      for (std::size_t k = 0; k < _rowDims.size(); ++k) {
        coords[std::size_t(_rowDims[k])] = rowCombos[r][k]->coord;
        const std::size_t depth = rowDepth[k];
        for (std::size_t level = 0; level < depth; ++level) {
          const OmDimensionNode* node = Slots(*rowCombos[r][k], depth, false)[level];
          const Leaf* previous =
              (r > 0 && SamePrefix(rowCombos[r], rowCombos[r - 1], k)) ? rowCombos[r - 1][k] : nullptr;
          const bool repeat = node && IsRepeatedGroup(node, *rowCombos[r][k], previous, depth, level, false);
          if (node && !repeat) row[col + level] = Decorated(node->Label());
        }
        col += depth;
      }
      for (std::size_t c = 0; c < colCombos.size(); ++c) {
        for (std::size_t k = 0; k < _colDims.size(); ++k) coords[std::size_t(_colDims[k])] = colCombos[c][k]->coord;
        OmNumber scratch(0.0);  // a plain number is read without making its cell object
        const OmCellText* cell = _table.ReadCell(coords, scratch);
        row[headerCols + c] = Decorated(cell);
        right[headerCols + c] = dynamic_cast<const OmNumber*>(cell) != nullptr;
      }
    };

    // Body cells set the column widths; a header label may run on over the empty header cells
    // that follow it, and widens the last of them only when even that is too narrow.
    std::vector<std::size_t> widths(nCols, 0);
    for (std::size_t r = 0; r < rowCombos.size(); ++r) {
      bodyRow(r);
      for (std::size_t c = 0; c < nCols; ++c) widths[c] = std::max(widths[c], Columns(row[c]));
    }
    for (const auto& line : header) {
      for (std::size_t c = 0; c < nCols; ++c) {
        if (line[c].empty()) continue;
        std::size_t end = c;
        while (end + 1 < nCols && line[end + 1].empty()) ++end;
        std::size_t room = 0;
        for (std::size_t i = c; i <= end; ++i) room += widths[i] + (i > c ? 2 : 0);
        const std::size_t need = Columns(line[c]);
        if (need > room) widths[end] += need - room;
      }
    }
    std::vector<std::size_t> offsets(nCols, 0);
    std::size_t total = 0;
    for (std::size_t c = 0; c < nCols; ++c) {
      offsets[c] = total + (c > 0 ? 2 : 0);
      total = offsets[c] + widths[c];
    }
    const std::string rule(std::max<std::size_t>(total, 1), '-');

    auto headerLine = [&](const std::vector<std::string>& labels) {
      std::string text;
      std::size_t at = 0;
      for (std::size_t c = 0; c < nCols; ++c) {
        if (labels[c].empty()) continue;
        if (at < offsets[c]) text += std::string(offsets[c] - at, ' ');
        text += labels[c];
        at = std::max(at, offsets[c]) + Columns(labels[c]);
      }
      _out.Line(TrimRight(text));
    };
    _out.Line(rule);
    for (const auto& line : header) headerLine(line);
    _out.Line(rule);
    std::string text;
    for (std::size_t r = 0; r < rowCombos.size(); ++r) {
      bodyRow(r);
      text.clear();
      for (std::size_t c = 0; c < nCols; ++c) {
        if (c > 0) text += "  ";
        text += Pad(row[c], widths[c], right[c]);
      }
      _out.Line(TrimRight(text));
    }
    _out.Line(rule);
  }

  // Whether two combinations agree on every dimension outside dimension k.
  static bool SamePrefix(const std::vector<const Leaf*>& a, const std::vector<const Leaf*>& b,
                         std::size_t k) {
    for (std::size_t i = 0; i < k; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }

  const OmPivotTable& _table;
  LineWriter& _out;
  std::vector<int> _rowDims, _colDims, _layerDims;
  std::vector<std::vector<Leaf>> _rowLeaves, _colLeaves, _layerLeaves;
  std::set<int> _referenced;
};

std::string Indent(const std::string& text, std::size_t spaces) {
  if (spaces == 0) return text;
  const std::string pad(spaces, ' ');
  std::string out;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string lineText = text.substr(start, end - start);
    out += lineText.empty() ? std::string() : pad + lineText;
    out += "\n";
    start = end + 1;
  }
  return out;
}

}  // namespace

OmTextRenderer::OmTextRenderer() = default;
OmTextRenderer::OmTextRenderer(Options options) : _options(options) {}

std::string OmTextRenderer::FootnoteMarker(const OmPivotTable& table, int index) {
  if (index >= 0 && std::size_t(index) < table.Footnotes().size()) {
    if (const OmCellText* marker = table.Footnotes()[std::size_t(index)].Marker()) {
      return marker->Text();
    }
  }
  if (index < 0) return "?";
  // a..z, then aa, ab... as spreadsheet columns count.
  std::string letters;
  for (int n = index + 1; n > 0; n = (n - 1) / 26) letters.insert(letters.begin(), char('a' + (n - 1) % 26));
  return letters;
}

std::string OmTextRenderer::RenderTable(const OmPivotTable& table) const {
  std::ostringstream out;
  LineWriter lines(out, 0);
  TableWriter(table, lines).Write(_options.allLayers);
  return out.str();
}

std::string OmTextRenderer::RenderPart(const OmOutputPart& part, int level) const {
  std::ostringstream out;
  WritePart(out, part, level);
  return out.str();
}

void OmTextRenderer::WritePart(std::ostream& out, const OmOutputPart& part, int level) const {
  const std::size_t pad = std::size_t(std::max(level, 0) * _options.indent);
  // Unselected headings shown for what they hold are marked only when excluded parts are asked for.
  const std::string excluded = part._keep || !_options.showExcluded ? "" : " (excluded)";
  if (auto* table = dynamic_cast<const OmPivotTable*>(&part)) {
    LineWriter lines(out, pad);
    if (!excluded.empty()) lines.Line("(excluded)");
    TableWriter(*table, lines).Write(_options.allLayers);
    out << "\n";
    return;
  }
  out << PartText(part, pad, excluded);
}

std::string OmTextRenderer::PartText(const OmOutputPart& part, std::size_t pad, const std::string& excluded) const {
  std::string text;
  if (auto* block = dynamic_cast<const OmTextBlock*>(&part)) {
    text = part.LabelText() + excluded + "\n";
    const std::string linePad(std::size_t(_options.indent), ' ');
    for (const std::string& l : block->Lines()) text += (l.empty() ? "" : linePad + l) + "\n";
    return Indent(text, pad) + "\n";
  }
  if (auto* title = dynamic_cast<const OmPageTitle*>(&part)) {
    std::string joined;
    for (const std::string& l : title->Lines()) joined += (joined.empty() ? "" : " / ") + l;
    return Indent("Page Title: " + joined + excluded + "\n", pad);
  }
  if (dynamic_cast<const OmHeading*>(&part)) return Indent(part.LabelText() + excluded + "\n", pad);
  // Appended piece by piece: GCC 12 at -O3 warns falsely (-Wrestrict) on "[" + std::string(...).
  std::string line = "[";
  line += part.KindName();
  line += "] ";
  line += part.LabelText();
  line += excluded;
  line += "\n";
  return Indent(line, pad);
}

std::string OmTextRenderer::Render(OmOutputTree& tree) const {
  std::ostringstream out;
  Write(tree, out);
  return out.str();
}

void OmTextRenderer::Write(OmOutputTree& tree, std::ostream& out) const {
  for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
    OmOutputPart* part = n.Value();
    if (part && !part->_keep && !_options.showExcluded && ExcludedPartHidesItsSubtree(*part)) {
      n = n.SubtreeEnd().Here();
      continue;
    }
    if (part) WritePart(out, *part, std::max(n.Level() - 1, 0));
    n = n.Next();
  }
}

bool ExcludedPartHidesItsSubtree(const OmOutputPart& part) {
  return dynamic_cast<const OmHeading*>(&part) == nullptr;
}
