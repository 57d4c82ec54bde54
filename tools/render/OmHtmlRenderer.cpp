#include "tools/render/OmHtmlRenderer.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/outputmodel/OmTextRenderer.h"
#include "tools/render/OmTableLayout.h"

namespace {

// The outline nests at most this deep; deeper parts (only a damaged stream makes them) are shown
// at this depth.
constexpr std::size_t kMaxNesting = 64;

const char* const kStyle = R"(
*{box-sizing:border-box}
body{margin:0;display:flex;font:14px/1.4 "DejaVu Sans",Arial,sans-serif;color:#222;background:#fff}
nav{flex:0 0 18rem;height:100vh;position:sticky;top:0;overflow:auto;padding:.8rem;
  background:#f3f5f8;border-right:1px solid #ccd}
nav h1{font-size:1rem;margin:0 0 .5rem}
nav ul{list-style:none;margin:0;padding-left:1rem}
nav>ul{padding-left:0}
nav summary{cursor:pointer}
nav a{color:#1a4d8f;text-decoration:none}
nav a:hover{text-decoration:underline}
nav .excluded>a,nav a.excluded{color:#888}
main{flex:1;padding:1rem 1.5rem;min-width:0}
section{margin:.4rem 0 1.2rem}
h2.procedure{font-size:1.25rem;margin:1.2rem 0 .4rem;border-bottom:2px solid #1a4d8f}
h3,h4,h5,h6{margin:.8rem 0 .3rem}
.pivot .title{font-weight:bold;margin:.2rem 0 .4rem}
.pivot .layer{color:#333;margin:.3rem 0}
table.grid{border-collapse:collapse;margin:.2rem 0 .5rem}
table.grid th,table.grid td{border:1px solid #b8bec8;padding:.15rem .5rem;vertical-align:top}
table.grid thead th{background:#e4eaf3;text-align:center}
table.grid tbody th{background:#f4f6f9;text-align:left;font-weight:normal}
table.grid th.corner{background:#fff;text-align:left}
table.grid th.dimension{font-weight:bold}
table.grid th.group{font-style:italic}
table.grid td.num{text-align:right;font-variant-numeric:tabular-nums}
sup.fn{color:#a00;font-size:.75em}
.marker{color:#a00}
.caption{font-size:.9em;margin:.2rem 0}
.notes{font-size:.85em;margin:.2rem 0}
.textblock pre{background:#f8f8f8;border:1px solid #ddd;padding:.5rem;margin:.2rem 0;white-space:pre-wrap}
.textblock .label{font-weight:bold}
.log pre{color:#444}
.pagetitle{font-size:1.1rem;font-weight:bold;text-align:center;border-top:1px solid #999;border-bottom:1px solid #999;padding:.3rem}
.rich{border:1px dashed #99a;padding:.6rem;display:inline-block;color:#444}
.rich .kind{font-weight:bold;margin-right:.4rem}
.excluded{opacity:.55}
.toolarge{color:#a00}
)";

// A colour of a cell style, used in a style attribute only when it is a plain "#rgb" /
// "#rrggbb" value or a colour name of letters: anything else could break out of the attribute.
bool SafeColour(const std::string& colour) {
  if (colour.empty() || colour.size() > 32) return false;
  if (colour[0] == '#') {
    if (colour.size() != 4 && colour.size() != 7 && colour.size() != 9) return false;
    return std::all_of(colour.begin() + 1, colour.end(),
                       [](unsigned char c) { return std::isxdigit(c) != 0; });
  }
  return std::all_of(colour.begin(), colour.end(),
                     [](unsigned char c) { return std::isalpha(c) != 0; });
}

const char* KindClass(const OmOutputPart& part) {
  if (dynamic_cast<const OmPivotTable*>(&part)) return "table";
  if (dynamic_cast<const OmProcedure*>(&part)) return "procedure";
  if (dynamic_cast<const OmHeading*>(&part)) return "heading";
  if (auto* block = dynamic_cast<const OmTextBlock*>(&part)) return block->IsLog() ? "text log" : "text";
  if (dynamic_cast<const OmPageTitle*>(&part)) return "pagetitle";
  if (dynamic_cast<const OmChart*>(&part)) return "chart";
  if (dynamic_cast<const OmAnswerTree*>(&part)) return "tree";
  if (dynamic_cast<const OmModel*>(&part)) return "model";
  if (dynamic_cast<const OmInteractive*>(&part)) return "interactive";
  return "part";
}

// Writes one table; collects the footnotes its texts refer to for the notes below it.
class TableWriter {
public:
  TableWriter(const OmPivotTable& table, const OmDisplayText& text, std::size_t maxGridCells)
      : _table(table), _text(text), _layout(table), _maxGridCells(maxGridCells) {}

  void Write(std::ostream& out) {
    out << "<div class=\"pivot\">\n";
    const OmCellText* title = _table.TableTitle() ? _table.TableTitle() : _table.Label();
    std::string titleHtml = Decorated(title);
    if (_table.Label() != nullptr && title != _table.Label()) titleHtml += Refs(_table.Label());
    out << "<div class=\"title\">" << titleHtml << "</div>\n";

    const std::size_t size = _layout.GridSize();
    if (size > _maxGridCells) {
      out << "<p class=\"toolarge\">This table is not laid out: its " << _table.NDimensions()
          << " dimensions make more than " << _maxGridCells << " positions.</p>\n</div>\n";
      return;
    }
    const auto layers = _layout.Combinations(OmTableLayout::kLayers);
    const auto rows = _layout.Combinations(OmTableLayout::kRows);
    const auto columns = _layout.Combinations(OmTableLayout::kColumns);
    const std::vector<int>& layerDims = _layout.Dimensions(OmTableLayout::kLayers);
    for (const auto& layer : layers) {
      for (std::size_t k = 0; k < layerDims.size(); ++k) {
        const OmDimension& dimension = _table.Dimension(layerDims[k]);
        if (dimension.HideCategories()) continue;  // a split kept at one value says nothing
        out << "<div class=\"layer\">";
        if (!dimension.HideLabel()) out << Decorated(dimension.Label()) << ": ";
        bool first = true;
        for (const OmDimensionNode* node : layer[k]->path) {
          if (!first) out << " / ";
          first = false;
          out << Decorated(node->Label());
        }
        out << "</div>\n";
      }
      WriteGrid(out, rows, columns, layer);
    }
    if (_table.Caption()) out << "<div class=\"caption\">" << Decorated(_table.Caption()) << "</div>\n";
    for (int index : _referenced) {
      if (index < 0 || std::size_t(index) >= _table.Footnotes().size()) continue;
      out << "<div class=\"notes\"><sup class=\"fn\">" << Marker(index) << "</sup> "
          << Decorated(&_table.Footnotes()[std::size_t(index)].Text()) << "</div>\n";
    }
    out << "</div>\n";
  }

private:
  std::string Marker(int index) const {
    const auto& notes = _table.Footnotes();
    if (index >= 0 && std::size_t(index) < notes.size() && notes[std::size_t(index)].Marker()) {
      return OmHtmlRenderer::Escape(_text.Text(notes[std::size_t(index)].Marker()));
    }
    return OmHtmlRenderer::Escape(_text.Plain(OmTextRenderer::FootnoteMarker(_table, index)));
  }

  std::string Refs(const OmCellText* cell) {
    if (cell == nullptr || cell->Footnotes().empty() || !cell->Visible()) return std::string();
    std::string refs = "<sup class=\"fn\">";
    bool first = true;
    for (std::int16_t index : cell->Footnotes()) {
      if (!first) refs += ",";
      first = false;
      refs += Marker(index);
      _referenced.insert(index);
    }
    return refs + "</sup>";
  }

  // The escaped text of a cell with its markers and footnote references; "" for a hidden cell.
  std::string Decorated(const OmCellText* cell) {
    if (cell == nullptr || !cell->Visible()) return std::string();
    std::string html = OmHtmlRenderer::Escape(_text.Text(cell));
    for (const std::string& m : cell->Markers()) {
      html += "<span class=\"marker\">" + OmHtmlRenderer::Escape(_text.Plain(m)) + "</span>";
    }
    return html + Refs(cell);
  }

  static std::string Style(const OmCellText* cell) {
    if (cell == nullptr || !cell->HasDecorations()) return std::string();
    std::string style;
    if (cell->TextBold()) style += "font-weight:bold;";
    if (SafeColour(cell->TextColor())) style += "color:" + cell->TextColor() + ";";
    if (SafeColour(cell->BackgroundColor())) style += "background:" + cell->BackgroundColor() + ";";
    return style.empty() ? std::string() : " style=\"" + style + "\"";
  }

  static std::string Spans(int rowSpan, int colSpan) {
    std::string s;
    if (rowSpan > 1) s += " rowspan=\"" + std::to_string(rowSpan) + "\"";
    if (colSpan > 1) s += " colspan=\"" + std::to_string(colSpan) + "\"";
    return s;
  }

  static const char* HeaderClass(OmTableLayout::HeaderCell::Kind kind) {
    switch (kind) {
      case OmTableLayout::HeaderCell::kDimension: return "dimension";
      case OmTableLayout::HeaderCell::kGroup: return "group";
      case OmTableLayout::HeaderCell::kCategory: return "category";
      case OmTableLayout::HeaderCell::kEmpty: break;
    }
    return "empty";
  }

  void WriteGrid(std::ostream& out, const std::vector<OmTableLayout::Combination>& rows,
                 const std::vector<OmTableLayout::Combination>& columns,
                 const OmTableLayout::Combination& layer) {
    int columnBands = 0;
    int rowBands = 0;
    auto columnCells = _layout.Header(OmTableLayout::kColumns, columns, columnBands);
    const auto rowCells = _layout.Header(OmTableLayout::kRows, rows, rowBands);
    const std::vector<int>& rowDims = _layout.Dimensions(OmTableLayout::kRows);
    bool cornerLabels = _table.CornerText() != nullptr;
    for (int d : rowDims) {
      const OmDimension& dimension = _table.Dimension(d);
      cornerLabels |= _layout.CategoryBands(d) > 0 && !dimension.HideLabel() && dimension.Label();
    }
    if (columnBands == 0 && cornerLabels) {
      // No column labels: one header row of empty cells still carries the corner.
      columnBands = 1;
      for (std::size_t c = 0; c < columns.size(); ++c) {
        OmTableLayout::HeaderCell empty;
        empty.position = int(c);
        columnCells.push_back(empty);
      }
    }
    std::vector<std::vector<const OmTableLayout::HeaderCell*>> byBand{std::size_t(columnBands)};
    for (const auto& cell : columnCells) byBand[std::size_t(cell.band)].push_back(&cell);
    std::vector<std::vector<const OmTableLayout::HeaderCell*>> byRow(rows.size());
    for (const auto& cell : rowCells) byRow[std::size_t(cell.position)].push_back(&cell);
    for (auto& list : byRow) {
      std::stable_sort(list.begin(), list.end(),
                       [](const auto* a, const auto* b) { return a->band < b->band; });
    }

    out << "<table class=\"grid\">\n";
    if (columnBands > 0) out << "<thead>\n";
    for (int b = 0; b < columnBands; ++b) {
      out << "<tr>";
      if (rowBands > 0) {
        if (_table.CornerText() != nullptr) {
          if (b == 0) {
            out << "<th class=\"corner\"" << Spans(columnBands, rowBands) << ">"
                << Decorated(_table.CornerText()) << "</th>";
          }
        } else {
          if (b == 0 && columnBands > 1) {
            out << "<th class=\"corner\"" << Spans(columnBands - 1, rowBands) << "></th>";
          }
          if (b == columnBands - 1) {
            for (int d : rowDims) {
              const int bands = _layout.CategoryBands(d);
              if (bands == 0) continue;
              const OmDimension& dimension = _table.Dimension(d);
              out << "<th class=\"corner dimension\"" << Spans(1, bands) << ">"
                  << (dimension.HideLabel() ? std::string() : Decorated(dimension.Label())) << "</th>";
            }
          }
        }
      }
      for (const auto* cell : byBand[std::size_t(b)]) {
        out << "<th class=\"" << HeaderClass(cell->kind) << "\" scope=\""
            << (cell->span > 1 ? "colgroup" : "col") << "\"" << Spans(cell->depth, cell->span)
            << Style(cell->label) << ">" << Decorated(cell->label) << "</th>";
      }
      out << "</tr>\n";
    }
    if (columnBands > 0) out << "</thead>\n";
    out << "<tbody>\n";
    for (std::size_t r = 0; r < rows.size(); ++r) {
      out << "<tr>";
      for (const auto* cell : byRow[r]) {
        out << "<th class=\"" << HeaderClass(cell->kind) << "\" scope=\""
            << (cell->span > 1 ? "rowgroup" : "row") << "\"" << Spans(cell->span, cell->depth)
            << Style(cell->label) << ">" << Decorated(cell->label) << "</th>";
      }
      for (const auto& column : columns) {
        OmNumber scratch(0.0);  // a plain number is read without making its cell object
        const OmCellText* cell = _table.ReadCell(_layout.Coordinates(rows[r], column, layer), scratch);
        const bool number = dynamic_cast<const OmNumber*>(cell) != nullptr;
        out << "<td" << (number ? " class=\"num\"" : "") << Style(cell) << ">" << Decorated(cell)
            << "</td>";
      }
      out << "</tr>\n";
    }
    out << "</tbody>\n</table>\n";
  }

  const OmPivotTable& _table;
  const OmDisplayText& _text;
  OmTableLayout _layout;
  std::size_t _maxGridCells;
  std::set<int> _referenced;
};

struct Entry {
  OmOutputPart* part;
  std::size_t depth;
};

}  // namespace

OmHtmlRenderer::OmHtmlRenderer() : OmHtmlRenderer(Options{}) {}

OmHtmlRenderer::OmHtmlRenderer(Options options)
    : _options(std::move(options)), _text(_options.codePage) {}

std::string OmHtmlRenderer::Escape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string OmHtmlRenderer::RenderTable(const OmPivotTable& table) const {
  std::ostringstream out;
  TableWriter(table, _text, _options.maxGridCells).Write(out);
  return out.str();
}

std::string OmHtmlRenderer::Render(OmOutputTree& tree) const {
  std::ostringstream out;
  Write(tree, out);
  return out.str();
}

void OmHtmlRenderer::Write(OmOutputTree& tree, std::ostream& page) const {
  // The parts shown, in pre-order, with their depth in the outline.
  std::vector<Entry> entries;
  std::vector<int> open;  // levels of the parts that enclose the next one
  for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
    OmOutputPart* part = n.Value();
    const int level = n.Level();
    if (part != nullptr && !part->_keep && !_options.showExcluded &&
        ExcludedPartHidesItsSubtree(*part)) {
      n = n.SubtreeEnd().Here();
      continue;
    }
    n = n.Next();
    if (part == nullptr) continue;
    while (!open.empty() && open.back() >= level) open.pop_back();
    entries.push_back({part, open.size()});
    if (open.size() + 1 < kMaxNesting) open.push_back(level);
  }

  // Labels and the outline first, then the parts one by one as they are made.
  std::vector<std::string> labels;
  labels.reserve(entries.size());
  for (const Entry& entry : entries) {
    std::string label = Escape(_text.Text(entry.part->Label()));
    labels.push_back(label.empty() ? Escape(entry.part->KindName()) : std::move(label));
  }
  page << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>"
       << Escape(_options.title) << "</title>\n<style>" << kStyle << "</style>\n</head>\n<body>\n"
       << "<nav id=\"outline\">\n<h1>Outline</h1>\n<ul>\n";
  std::size_t openLists = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    OmOutputPart& part = *entries[i].part;
    const std::size_t depth = entries[i].depth;
    const std::string id = "p" + std::to_string(i + 1);
    const std::string kind = KindClass(part);
    const bool marked = !part._keep && _options.showExcluded;
    const std::string excluded = marked ? " excluded" : "";
    const std::string link = "<a class=\"" + kind + excluded + "\" href=\"#" + id + "\">" + labels[i] + "</a>";
    const bool hasChildren = i + 1 < entries.size() && entries[i + 1].depth > depth;
    if (hasChildren) {
      page << "<li><details open><summary>" << link << "</summary><ul>\n";
      ++openLists;
    } else {
      page << "<li>" << link << "</li>\n";
    }
    const std::size_t next = i + 1 < entries.size() ? entries[i + 1].depth : 0;
    while (openLists > next) {
      page << "</ul></details></li>\n";
      --openLists;
    }
  }
  page << "</ul>\n</nav>\n<main>\n";

  for (std::size_t i = 0; i < entries.size(); ++i) {
    OmOutputPart& part = *entries[i].part;
    const std::size_t depth = entries[i].depth;
    const std::string id = "p" + std::to_string(i + 1);
    const std::string& label = labels[i];
    const std::string kind = KindClass(part);
    // Unselected headings shown for what they hold are marked only when excluded parts are asked for.
    const bool marked = !part._keep && _options.showExcluded;
    const std::string excluded = marked ? " excluded" : "";
    std::ostream& body = page;
    body << "<section id=\"" << id << "\" class=\"" << kind << excluded
         << "\" style=\"margin-left:" << depth * 1.5 << "rem\">\n";
    if (marked) body << "<div class=\"note\">(excluded)</div>\n";
    if (auto* table = dynamic_cast<const OmPivotTable*>(&part)) {
      TableWriter(*table, _text, _options.maxGridCells).Write(body);
    } else if (dynamic_cast<const OmProcedure*>(&part)) {
      body << "<h2 class=\"procedure\">" << label << "</h2>\n";
    } else if (dynamic_cast<const OmHeading*>(&part)) {
      const std::size_t h = std::min<std::size_t>(depth + 2, 6);
      body << "<h" << h << ">" << label << "</h" << h << ">\n";
    } else if (auto* block = dynamic_cast<const OmTextBlock*>(&part)) {
      body << "<div class=\"textblock\"><div class=\"label\">" << label << "</div><pre>";
      for (const std::string& line : block->Lines()) body << Escape(_text.Plain(line)) << "\n";
      body << "</pre></div>\n";
    } else if (auto* title = dynamic_cast<const OmPageTitle*>(&part)) {
      body << "<div class=\"pagetitle\">";
      bool first = true;
      for (const std::string& line : title->Lines()) {
        if (!first) body << "<br>";
        first = false;
        body << Escape(_text.Plain(line));
      }
      body << "</div>\n";
    } else {
      body << "<div class=\"rich\"><span class=\"kind\">" << Escape(part.KindName()) << "</span>"
           << label << "</div>\n";
    }
    body << "</section>\n";
  }
  page << "</main>\n</body>\n</html>\n";
}
