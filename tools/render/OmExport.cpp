#include "tools/render/OmExport.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <vector>

#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "tools/render/OmExportView.h"
#include "tools/render/OmTableLayout.h"

namespace {

using Combination = OmTableLayout::Combination;

using Shown = OmExportView::Part;
using TableView = OmExportView::Table;

std::string Join(const std::vector<std::string>& list, const char* separator) {
  std::string out;
  for (std::size_t i = 0; i < list.size(); ++i) out += (i == 0 ? "" : separator) + list[i];
  return out;
}

// The number a cell holds, shortest round-trip form; "" for texts and missing values.
std::string NumberText(const OmCellText* cell) {
  double value = 0;
  if (auto* number = dynamic_cast<const OmNumber*>(cell)) {
    value = number->Value();
  } else if (auto* data = dynamic_cast<const OmNumDataValue*>(cell)) {
    value = data->Value();
  } else {
    return std::string();
  }
  if (value == OmNumber::kSysMiss || !std::isfinite(value)) return std::string();
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string DimensionName(const TableView& view, int d) {
  const std::string label = view.Text(view.table.Dimension(d).Label());
  return label.empty() ? "Dimension " + std::to_string(d + 1) : label;
}

// ---- CSV: procedure, table, table id, one column per dimension label met in any shown table
// (a table's second dimension of the same label gets " (2)"), value, text, footnotes.
void WriteCsv(const std::vector<Shown>& shown, const OmDisplayText& text, std::size_t maxGrid,
              std::ostream& out) {
  std::vector<std::string> columns;
  std::map<std::string, std::size_t> columnOf;
  auto names = [](const TableView& view) {
    std::vector<std::string> names;
    std::map<std::string, int> count;
    for (int d = 0; d < view.table.NDimensions(); ++d) {
      const std::string name = DimensionName(view, d);
      const int n = ++count[name];
      names.push_back(n == 1 ? name : name + " (" + std::to_string(n) + ")");
    }
    return names;
  };
  for (const Shown& s : shown) {
    auto* table = dynamic_cast<const OmPivotTable*>(s.part);
    if (table == nullptr) continue;
    for (const std::string& name : names(TableView(*table, text))) {
      if (columnOf.emplace(name, columns.size()).second) columns.push_back(name);
    }
  }
  std::vector<std::string> header{"procedure", "table", "table_id"};
  header.insert(header.end(), columns.begin(), columns.end());
  header.insert(header.end(), {"value", "text", "footnotes"});
  for (std::string& h : header) h = OmExport::CsvField(h);
  out << Join(header, ",") << "\r\n";

  for (const Shown& s : shown) {
    auto* table = dynamic_cast<const OmPivotTable*>(s.part);
    if (table == nullptr) continue;
    TableView view(*table, text);
    if (view.layout.GridSize() > maxGrid) continue;
    const std::vector<std::string> dimensionNames = names(view);
    const std::string prefix =
        OmExport::CsvField(s.procedure ? text.Plain(s.procedure->CommandName()) : "") + "," +
        OmExport::CsvField(view.Text(view.Title())) + "," + std::to_string(table->TableId()) + ",";
    const auto layers = view.layout.Combinations(OmTableLayout::kLayers);
    const auto rows = view.layout.Combinations(OmTableLayout::kRows);
    const auto cols = view.layout.Combinations(OmTableLayout::kColumns);
    std::vector<std::string> fields(columns.size());
    auto place = [&](OmTableLayout::Axis axis, const Combination& combination) {
      const std::vector<int>& dims = view.layout.Dimensions(axis);
      for (std::size_t k = 0; k < dims.size(); ++k) {
        fields[columnOf[dimensionNames[std::size_t(dims[k])]]] = OmExport::CsvField(view.Path(*combination[k]));
      }
    };
    for (const Combination& layer : layers) {
      place(OmTableLayout::kLayers, layer);
      for (const Combination& row : rows) {
        place(OmTableLayout::kRows, row);
        for (const Combination& column : cols) {
          OmNumber scratch(0.0);  // a plain number is read without making its cell object
          const OmCellText* cell = table->ReadCell(view.layout.Coordinates(row, column, layer), scratch);
          if (cell == nullptr) continue;
          place(OmTableLayout::kColumns, column);
          out << prefix << Join(fields, ",") << (fields.empty() ? "" : ",") << NumberText(cell) << ","
              << OmExport::CsvField(view.Text(cell)) << "," << OmExport::CsvField(Join(view.Refs(cell), ","))
              << "\r\n";
        }
      }
    }
  }
}

// ---- Markdown: headings for procedures and outline nodes, code blocks for logs and texts, a
// pipe table per layer with the row dimensions as leading columns.
std::string Sup(const std::vector<std::string>& refs) {
  return refs.empty() ? std::string() : "<sup>" + OmExport::MarkdownEscape(Join(refs, ",")) + "</sup>";
}

void MarkdownTable(TableView& view, std::size_t maxGrid, std::ostream& out) {
  const OmCellText* title = view.Title();
  out << "**" << OmExport::MarkdownEscape(view.Text(title)) << "**" << Sup(view.Refs(title)) << "\n\n";
  if (view.layout.GridSize() > maxGrid) {
    out << "*(not laid out: more than " << maxGrid << " positions)*\n\n";
    return;
  }
  const auto layers = view.layout.Combinations(OmTableLayout::kLayers);
  const auto rows = view.layout.Combinations(OmTableLayout::kRows);
  const auto cols = view.layout.Combinations(OmTableLayout::kColumns);
  const std::vector<int>& rowDims = view.layout.Dimensions(OmTableLayout::kRows);
  for (const Combination& layer : layers) {
    for (const std::string& line : view.LayerLines(layer)) out << "*" << OmExport::MarkdownEscape(line) << "*\n\n";
    out << "|";
    for (int d : rowDims) {
      const OmDimension& dimension = view.table.Dimension(d);
      out << " " << (dimension.HideLabel() ? "" : OmExport::MarkdownEscape(view.Text(dimension.Label()))) << " |";
    }
    for (const Combination& column : cols) {
      std::vector<std::string> parts;
      for (const OmTableLayout::Leaf* leaf : column) {
        const std::string path = view.Path(*leaf);
        if (!path.empty()) parts.push_back(path);
      }
      out << " " << OmExport::MarkdownEscape(Join(parts, " / ")) << " |";
    }
    out << "\n|";
    for (std::size_t i = 0; i < rowDims.size(); ++i) out << " --- |";
    for (std::size_t i = 0; i < cols.size(); ++i) out << " ---: |";
    out << "\n";
    for (const Combination& row : rows) {
      out << "|";
      for (const OmTableLayout::Leaf* leaf : row) out << " " << OmExport::MarkdownEscape(view.Path(*leaf)) << " |";
      for (const Combination& column : cols) {
        OmNumber scratch(0.0);
        const OmCellText* cell = view.table.ReadCell(view.layout.Coordinates(row, column, layer), scratch);
        out << " " << OmExport::MarkdownEscape(view.Text(cell)) << Sup(view.Refs(cell)) << " |";
      }
      out << "\n";
    }
    out << "\n";
  }
  if (view.table.Caption()) out << OmExport::MarkdownEscape(view.Text(view.table.Caption())) << "\n\n";
  const auto notes = view.Notes();
  for (const auto& [marker, note] : notes) {
    out << "- " << OmExport::MarkdownEscape(marker) << ". " << OmExport::MarkdownEscape(note) << "\n";
  }
  if (!notes.empty()) out << "\n";
}

void WriteMarkdown(const std::vector<Shown>& shown, const OmDisplayText& text, std::size_t maxGrid,
                   std::ostream& out) {
  for (const Shown& s : shown) {
    const std::string label = OmExport::MarkdownEscape(text.Text(s.part->Label()));
    if (auto* table = dynamic_cast<const OmPivotTable*>(s.part)) {
      TableView view(*table, text);
      MarkdownTable(view, maxGrid, out);
    } else if (dynamic_cast<const OmProcedure*>(s.part) || dynamic_cast<const OmHeading*>(s.part)) {
      out << std::string(std::size_t(std::min(s.depth + 2, 6)), '#') << " " << label << "\n\n";
    } else if (auto* block = dynamic_cast<const OmTextBlock*>(s.part)) {
      // A fence longer than any run of backticks in the lines cannot be closed by them.
      std::size_t fence = 3;
      for (const std::string& line : block->Lines()) {
        std::size_t run = 0;
        for (char c : line) fence = std::max(fence, (run = c == '`' ? run + 1 : 0) + 1);
      }
      out << "**" << label << "**\n\n" << std::string(fence, '`') << "\n";
      for (const std::string& line : block->Lines()) out << text.Plain(line) << "\n";
      out << std::string(fence, '`') << "\n\n";
    } else if (auto* page = dynamic_cast<const OmPageTitle*>(s.part)) {
      for (const std::string& line : page->Lines()) out << "**" << OmExport::MarkdownEscape(text.Plain(line)) << "**\n\n";
    } else {
      out << "*" << OmExport::MarkdownEscape(s.part->KindName()) << ": " << label << "*\n\n";
    }
  }
}

// ---- LaTeX: a document with a booktabs table per layer of every table.
void LatexTable(TableView& view, std::size_t maxGrid, std::ostream& out) {
  auto escaped = [&](const OmCellText* cell) {
    std::string s = OmExport::LatexEscape(view.Text(cell));
    const std::vector<std::string> refs = view.Refs(cell);
    if (!refs.empty()) s += "\\textsuperscript{" + OmExport::LatexEscape(Join(refs, ",")) + "}";
    return s;
  };
  out << "\\begin{table}[htbp]\n\\centering\n{\\bfseries " << escaped(view.Title()) << "}\\par\\medskip\n";
  if (view.layout.GridSize() > maxGrid) {
    out << "(not laid out: more than " << maxGrid << " positions)\n\\end{table}\n\n";
    return;
  }
  const auto layers = view.layout.Combinations(OmTableLayout::kLayers);
  const auto rows = view.layout.Combinations(OmTableLayout::kRows);
  const auto cols = view.layout.Combinations(OmTableLayout::kColumns);
  int columnBands = 0, rowBands = 0;
  const auto columnCells = view.layout.Header(OmTableLayout::kColumns, cols, columnBands);
  const auto rowCells = view.layout.Header(OmTableLayout::kRows, rows, rowBands);
  for (const Combination& layer : layers) {
    for (const std::string& line : view.LayerLines(layer)) out << OmExport::LatexEscape(line) << "\\par\n";
    out << "\\begin{tabular}{" << std::string(std::size_t(rowBands), 'l') << std::string(cols.size(), 'r')
        << "}\n\\toprule\n";
    for (int b = 0; b < columnBands; ++b) {
      // One entry per column position: a label starting in this band, or nothing.
      std::vector<const OmTableLayout::HeaderCell*> starts(cols.size(), nullptr);
      for (const auto& cell : columnCells) {
        if (cell.band == b && cell.position >= 0 && std::size_t(cell.position) < cols.size()) starts[std::size_t(cell.position)] = &cell;
      }
      // The corner: the row dimensions' labels in the last band, each over its own bands.
      std::vector<std::string> fields(static_cast<std::size_t>(rowBands));
      if (b == columnBands - 1) {
        std::size_t at = 0;
        for (int d : view.layout.Dimensions(OmTableLayout::kRows)) {
          const int bands = view.layout.CategoryBands(d);
          if (bands == 0) continue;
          const OmDimension& dimension = view.table.Dimension(d);
          if (!dimension.HideLabel() && at < fields.size()) fields[at] = escaped(dimension.Label());
          at += std::size_t(bands);
        }
      }
      std::string rules;
      for (std::size_t p = 0; p < cols.size();) {
        const OmTableLayout::HeaderCell* cell = starts[p];
        const int span = cell ? std::max(cell->span, 1) : 1;
        if (cell && span > 1) {
          fields.push_back("\\multicolumn{" + std::to_string(span) + "}{c}{" + escaped(cell->label) + "}");
          rules += "\\cmidrule(lr){" + std::to_string(rowBands + int(p) + 1) + "-" + std::to_string(rowBands + int(p) + span) + "}";
        } else {
          fields.push_back(cell ? escaped(cell->label) : std::string());
        }
        p += std::size_t(span);
      }
      const std::string line = Join(fields, " & ");
      out << line << " \\\\" << (rules.empty() ? "" : "\n" + rules) << "\n";
    }
    out << "\\midrule\n";
    std::vector<std::vector<const OmTableLayout::HeaderCell*>> byRow(rows.size());
    for (const auto& cell : rowCells) {
      if (cell.position >= 0 && std::size_t(cell.position) < rows.size()) byRow[std::size_t(cell.position)].push_back(&cell);
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
      std::vector<std::string> fields(static_cast<std::size_t>(rowBands));
      for (const auto* cell : byRow[r]) {
        if (cell->band < 0 || cell->band >= rowBands) continue;
        std::string& field = fields[std::size_t(cell->band)];
        field = cell->span > 1 ? "\\multirow{" + std::to_string(cell->span) + "}{*}{" + escaped(cell->label) + "}" : escaped(cell->label);
      }
      for (const Combination& column : cols) {
        OmNumber scratch(0.0);
        fields.push_back(escaped(view.table.ReadCell(view.layout.Coordinates(rows[r], column, layer), scratch)));
      }
      out << Join(fields, " & ") << " \\\\\n";
    }
    out << "\\bottomrule\n\\end{tabular}\\par\\medskip\n";
  }
  if (view.table.Caption()) out << escaped(view.table.Caption()) << "\\par\n";
  const auto notes = view.Notes();
  if (!notes.empty()) {
    out << "\\begin{minipage}{\\linewidth}\\footnotesize\n";
    for (const auto& [marker, note] : notes) {
      out << "\\textsuperscript{" << OmExport::LatexEscape(marker) << "}~" << OmExport::LatexEscape(note) << "\\par\n";
    }
    out << "\\end{minipage}\n";
  }
  out << "\\end{table}\n\n";
}

void WriteLatex(const std::vector<Shown>& shown, const OmDisplayText& text, std::size_t maxGrid,
                std::ostream& out) {
  out << "\\documentclass{article}\n\\usepackage[T1]{fontenc}\n\\usepackage[utf8]{inputenc}\n"
         "\\usepackage{booktabs}\n\\usepackage{multirow}\n\\usepackage[margin=2cm]{geometry}\n"
         "\\begin{document}\n\n";
  const char* const sections[] = {"section", "subsection", "subsubsection", "paragraph"};
  for (const Shown& s : shown) {
    const std::string label = OmExport::LatexEscape(text.Text(s.part->Label()));
    if (auto* table = dynamic_cast<const OmPivotTable*>(s.part)) {
      TableView view(*table, text);
      LatexTable(view, maxGrid, out);
    } else if (dynamic_cast<const OmProcedure*>(s.part) || dynamic_cast<const OmHeading*>(s.part)) {
      out << "\\" << sections[std::min(s.depth, 3)] << "*{" << label << "}\n\n";
    } else if (auto* block = dynamic_cast<const OmTextBlock*>(s.part)) {
      out << "\\paragraph*{" << label << "}\n{\\ttfamily\\small\n";
      for (const std::string& line : block->Lines()) out << OmExport::LatexEscape(text.Plain(line)) << "\\par\n";
      out << "}\n\n";
    } else if (auto* page = dynamic_cast<const OmPageTitle*>(s.part)) {
      for (const std::string& line : page->Lines()) out << "{\\bfseries " << OmExport::LatexEscape(text.Plain(line)) << "}\\par\n";
      out << "\n";
    } else {
      out << "\\emph{" << OmExport::LatexEscape(s.part->KindName()) << ": " << label << "}\\par\n\n";
    }
  }
  out << "\\end{document}\n";
}

}  // namespace

OmExport::OmExport(Kind kind, const std::string& codePage, std::size_t maxGridCells)
    : _kind(kind), _text(codePage), _maxGridCells(maxGridCells) {}

void OmExport::Write(OmOutputTree& tree, std::ostream& out) const {
  const std::vector<Shown> shown = OmExportView::Parts(tree);
  switch (_kind) {
    case Kind::kCsv: WriteCsv(shown, _text, _maxGridCells, out); break;
    case Kind::kMarkdown: WriteMarkdown(shown, _text, _maxGridCells, out); break;
    case Kind::kLatex: WriteLatex(shown, _text, _maxGridCells, out); break;
  }
}

std::string OmExport::CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string out = "\"";
  for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
  return out + "\"";
}

std::string OmExport::MarkdownEscape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\n' || c == '\r') {
      out += ' ';
    } else if (c == '<') {
      out += "&lt;";
    } else if (c == '&') {
      out += "&amp;";
    } else {
      if (std::string_view("\\|*_`[]#~").find(c) != std::string_view::npos) out += '\\';
      out += c;
    }
  }
  return out;
}

std::string OmExport::LatexEscape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': case '%': case '$': case '#': case '_': case '{': case '}': out += '\\'; out += c; break;
      case '~': out += "\\textasciitilde{}"; break;
      case '^': out += "\\textasciicircum{}"; break;
      case '\\': out += "\\textbackslash{}"; break;
      case '<': out += "\\textless{}"; break;
      case '>': out += "\\textgreater{}"; break;
      case '|': out += "\\textbar{}"; break;
      case '\n': case '\r': out += ' '; break;
      default: out += c;
    }
  }
  return out;
}
