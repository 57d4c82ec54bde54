#include "tools/render/OmXlsxExport.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmNumberFormat.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "tools/render/OmExportView.h"
#include "tools/render/OmTableLayout.h"

namespace {

using Combination = OmTableLayout::Combination;
using HeaderCell = OmTableLayout::HeaderCell;

// Excel shows at most this many decimals, and holds at most this many characters in a cell.
constexpr int kMaxDecimals = 30;
constexpr std::size_t kMaxCellText = 32767;

std::string Folded(std::string text) {
  for (char& c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The first n code points of UTF-8 text.
std::string FirstCodePoints(const std::string& text, std::size_t n) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && count++ == n) return text.substr(0, i);
  }
  return text;
}

std::string Join(const std::vector<std::string>& list, const char* separator) {
  std::string out;
  for (std::size_t i = 0; i < list.size(); ++i) out += (i == 0 ? "" : separator) + list[i];
  return out;
}

// Footnote references as the text view shows them: "[a,b]".
std::string Brackets(const std::vector<std::string>& refs) {
  return refs.empty() ? std::string() : "[" + Join(refs, ",") + "]";
}

// The number a cell shows, when it shows one: a number cell, or a data value shown as its value
// rather than its label. The system-missing value and non-finite values are texts.
bool NumberOf(const OmCellText* cell, const OmDisplayText& text, double& value, std::uint32_t& format) {
  if (cell == nullptr || !cell->Visible()) return false;
  if (auto* number = dynamic_cast<const OmNumber*>(cell)) {
    value = number->Value();
    format = number->Format();
  } else if (auto* data = dynamic_cast<const OmNumDataValue*>(cell)) {
    value = data->Value();
    format = data->Format();
    if (!std::isfinite(value) || text.Text(cell) != OmNumberFormat::Format(value, format)) return false;
  } else {
    return false;
  }
  return value != OmNumber::kSysMiss && std::isfinite(value);
}

// Rows and columns a table's block takes on a sheet, saturating far beyond a sheet's size.
struct BlockSize {
  std::size_t rows = 0;
  std::size_t columns = 1;
  bool laidOut = true;
};

class Workbook {
public:
  Workbook(const std::string& path, const OmDisplayText& text, std::size_t maxGridCells)
      : _text(text), _maxGridCells(maxGridCells) {
    lxw_workbook_options options{};
    // Each row goes to the sheet's file once the next row is started: a sheet's cells are
    // never held together. Rows must therefore be written in order, merges from their top row.
    options.constant_memory = LXW_TRUE;
    _book = workbook_new_opt(path.c_str(), &options);
    if (_book == nullptr) throw OMSException("OmXlsxExport::Write -- workbook cannot be created: " + path);
    _bold = workbook_add_format(_book);
    format_set_bold(_bold);
    _procedure = workbook_add_format(_book);
    format_set_bold(_procedure);
    format_set_font_size(_procedure, 14);
    _columnHeader = workbook_add_format(_book);
    format_set_bold(_columnHeader);
    format_set_align(_columnHeader, LXW_ALIGN_CENTER);
    format_set_align(_columnHeader, LXW_ALIGN_VERTICAL_TOP);
    _rowHeader = workbook_add_format(_book);
    format_set_align(_rowHeader, LXW_ALIGN_LEFT);
    format_set_align(_rowHeader, LXW_ALIGN_VERTICAL_TOP);
    _italic = workbook_add_format(_book);
    format_set_italic(_italic);
  }
  ~Workbook() {
    // Only after a failure: the file is left as far as it got.
    if (_book != nullptr) workbook_close(_book);
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  void Close() {
    const lxw_error error = workbook_close(std::exchange(_book, nullptr));
    if (error != LXW_NO_ERROR) {
      throw OMSException(std::string("OmXlsxExport::Write -- workbook not written: ") + lxw_strerror(error));
    }
  }

  void Write(const std::vector<OmExportView::Part>& parts) {
    for (std::size_t i = 0; i < parts.size();) {
      // The parts of one procedure, or a run of parts outside any.
      std::size_t end = i + 1;
      while (end < parts.size() && parts[end].procedure == parts[i].procedure) ++end;
      WriteProcedure(parts, i, end);
      i = end;
    }
    if (_sheets.empty()) NewSheet("Output");
  }

private:
  struct Sheet {
    lxw_worksheet* sheet = nullptr;
    lxw_row_t row = 0;
  };

  void WriteProcedure(const std::vector<OmExportView::Part>& parts, std::size_t begin, std::size_t end) {
    const OmProcedure* procedure = parts[begin].procedure;
    std::string name = procedure ? _text.Text(procedure->Label()) : std::string("Output");
    if (name.empty() && procedure) name = _text.Plain(procedure->CommandName());
    // Whether every part fits one sheet: else each table gets a sheet of its own.
    std::size_t rows = 0;
    bool fits = true;
    for (std::size_t i = begin; i < end && fits; ++i) {
      if (auto* table = dynamic_cast<const OmPivotTable*>(parts[i].part)) {
        const BlockSize size = SizeOf(*table);
        rows += size.rows;
        fits = size.columns <= OmXlsxExport::kMaxColumns && size.rows <= OmXlsxExport::kMaxRows;
      } else if (auto* block = dynamic_cast<const OmTextBlock*>(parts[i].part)) {
        rows += block->Lines().size() + 2;
      } else {
        rows += 3;
      }
      fits = fits && rows <= OmXlsxExport::kMaxRows;
    }
    NewSheet(name);
    const std::size_t own = _sheets.size() - 1;
    for (std::size_t i = begin; i < end; ++i) {
      const OmExportView::Part& shown = parts[i];
      if (auto* table = dynamic_cast<const OmPivotTable*>(shown.part)) {
        OmExportView::Table view(*table, _text);
        WriteTable(fits ? _sheets[own] : NewSheet(view.Text(view.Title())), view);
      } else {
        WritePart(_sheets[own], shown);
      }
    }
  }

  void WritePart(Sheet& sheet, const OmExportView::Part& shown) {
    const std::string label = _text.Text(shown.part->Label());
    if (dynamic_cast<const OmProcedure*>(shown.part) != nullptr) {
      Text(sheet, 0, label, _procedure);
      sheet.row += 2;
    } else if (dynamic_cast<const OmHeading*>(shown.part) != nullptr) {
      Text(sheet, lxw_col_t(std::max(shown.depth - 1, 0)), label, _bold);
      sheet.row += 2;
    } else if (auto* block = dynamic_cast<const OmTextBlock*>(shown.part)) {
      Text(sheet, 0, label, _bold);
      ++sheet.row;
      for (const std::string& line : block->Lines()) {
        Text(sheet, 0, _text.Plain(line), nullptr);
        ++sheet.row;
      }
      ++sheet.row;
    } else if (auto* page = dynamic_cast<const OmPageTitle*>(shown.part)) {
      for (const std::string& line : page->Lines()) {
        Text(sheet, 0, _text.Plain(line), _bold);
        ++sheet.row;
      }
      ++sheet.row;
    } else {
      Text(sheet, 0, std::string(shown.part->KindName()) + ": " + label, _italic);
      sheet.row += 2;
    }
  }

  // Header bands above the body: each column dimension's label (unless hidden) and category
  // levels; with none, one band of empty cells still holds the row dimensions' labels.
  int ColumnBands(const OmTableLayout& layout) const {
    const OmPivotTable& table = layout.Table();
    int bands = 0;
    for (int d : layout.Dimensions(OmTableLayout::kColumns)) {
      const OmDimension& dimension = table.Dimension(d);
      bands += (!dimension.HideLabel() && dimension.Label() != nullptr) + layout.CategoryBands(d);
    }
    return bands == 0 && CornerLabels(layout) ? 1 : bands;
  }
  static bool CornerLabels(const OmTableLayout& layout) {
    const OmPivotTable& table = layout.Table();
    bool labels = table.CornerText() != nullptr;
    for (int d : layout.Dimensions(OmTableLayout::kRows)) {
      const OmDimension& dimension = table.Dimension(d);
      labels |= layout.CategoryBands(d) > 0 && !dimension.HideLabel() && dimension.Label() != nullptr;
    }
    return labels;
  }
  static int RowBands(const OmTableLayout& layout) {
    int bands = 0;
    for (int d : layout.Dimensions(OmTableLayout::kRows)) bands += layout.CategoryBands(d);
    return bands;
  }

  BlockSize SizeOf(const OmPivotTable& table) const {
    const OmTableLayout layout(table);
    BlockSize size;
    // Title, caption, the notes at most and a blank row.
    size.rows = 3 + table.Footnotes().size();
    if (layout.GridSize() > _maxGridCells) {
      size.laidOut = false;
      return size;
    }
    const std::size_t layers = layout.CombinationCount(OmTableLayout::kLayers);
    const std::size_t perLayer = layout.Dimensions(OmTableLayout::kLayers).size() + std::size_t(ColumnBands(layout)) +
                                 layout.CombinationCount(OmTableLayout::kRows) + 1;
    size.rows += std::min(layers, OmXlsxExport::kMaxRows + 1) * std::min(perLayer, OmXlsxExport::kMaxRows + 1);
    size.columns = std::size_t(RowBands(layout)) + layout.CombinationCount(OmTableLayout::kColumns);
    return size;
  }

  void WriteTable(Sheet& sheet, OmExportView::Table& view) {
    const OmPivotTable& table = view.table;
    const OmTableLayout& layout = view.layout;
    const OmCellText* title = view.Title();
    std::vector<std::string> titleRefs = view.Refs(title);
    if (table.Label() != nullptr && title != table.Label()) {
      for (const std::string& ref : view.Refs(table.Label())) titleRefs.push_back(ref);
    }
    Text(sheet, 0, view.Text(title) + Brackets(titleRefs), _bold);
    ++sheet.row;
    const BlockSize size = SizeOf(table);
    if (!size.laidOut || size.rows > OmXlsxExport::kMaxRows || size.columns > OmXlsxExport::kMaxColumns) {
      Text(sheet, 0,
           size.laidOut ? "(not laid out: more rows or columns than a worksheet holds)"
                        : "(not laid out: more than " + std::to_string(_maxGridCells) + " positions)",
           _italic);
      sheet.row += 2;
      return;
    }
    const auto layers = layout.Combinations(OmTableLayout::kLayers);
    const auto rows = layout.Combinations(OmTableLayout::kRows);
    const auto columns = layout.Combinations(OmTableLayout::kColumns);
    int columnBands = 0, rowBands = 0;
    auto columnCells = layout.Header(OmTableLayout::kColumns, columns, columnBands);
    const auto rowCells = layout.Header(OmTableLayout::kRows, rows, rowBands);
    if (columnBands == 0 && CornerLabels(layout)) columnBands = 1;
    std::vector<std::vector<const HeaderCell*>> byBand{std::size_t(columnBands)};
    for (const HeaderCell& cell : columnCells) byBand[std::size_t(cell.band)].push_back(&cell);
    std::vector<std::vector<const HeaderCell*>> byRow(rows.size());
    for (const HeaderCell& cell : rowCells) byRow[std::size_t(cell.position)].push_back(&cell);
    if (rowBands > 0) worksheet_set_column(sheet.sheet, 0, lxw_col_t(rowBands - 1), 24, nullptr);
    const lxw_col_t first = lxw_col_t(rowBands);

    for (const Combination& layer : layers) {
      for (const std::string& line : view.LayerLines(layer)) {
        Text(sheet, 0, line, _italic);
        ++sheet.row;
      }
      for (int b = 0; b < columnBands; ++b, ++sheet.row) {
        if (rowBands > 0 && table.CornerText() != nullptr) {
          if (b == 0) {
            Merge(sheet, 0, columnBands - 1, rowBands - 1, Label(view, table.CornerText()), _rowHeader);
          }
        } else if (b == columnBands - 1) {
          lxw_col_t at = 0;
          for (int d : layout.Dimensions(OmTableLayout::kRows)) {
            const int bands = layout.CategoryBands(d);
            if (bands == 0) continue;
            const OmDimension& dimension = table.Dimension(d);
            if (!dimension.HideLabel()) Merge(sheet, at, 0, at + lxw_col_t(bands) - 1, Label(view, dimension.Label()), _bold);
            at += lxw_col_t(bands);
          }
        }
        for (const HeaderCell* cell : byBand[std::size_t(b)]) {
          const lxw_col_t col = first + lxw_col_t(cell->position);
          Merge(sheet, col, cell->depth - 1, col + lxw_col_t(cell->span) - 1, Label(view, cell->label), _columnHeader);
        }
      }
      for (std::size_t r = 0; r < rows.size(); ++r, ++sheet.row) {
        for (const HeaderCell* cell : byRow[r]) {
          const lxw_col_t col = lxw_col_t(cell->band);
          Merge(sheet, col, cell->span - 1, col + lxw_col_t(cell->depth) - 1, Label(view, cell->label), _rowHeader);
        }
        for (std::size_t c = 0; c < columns.size(); ++c) {
          OmNumber scratch(0.0);  // a plain number is read without making its cell object
          Cell(sheet, first + lxw_col_t(c), view, table.ReadCell(layout.Coordinates(rows[r], columns[c], layer), scratch));
        }
      }
      ++sheet.row;
    }
    if (table.Caption() != nullptr) {
      Text(sheet, 0, Label(view, table.Caption()), nullptr);
      ++sheet.row;
    }
    for (const auto& [marker, note] : view.Notes()) {
      Text(sheet, 0, marker + ". " + note, nullptr);
      ++sheet.row;
    }
    ++sheet.row;
  }

  static std::string Label(OmExportView::Table& view, const OmCellText* cell) {
    return view.Text(cell) + Brackets(view.Refs(cell));
  }

  // One cell of a grid: a number with its format (markers and footnote references shown by the
  // format, so that the value stays a number), else its text.
  void Cell(Sheet& sheet, lxw_col_t col, OmExportView::Table& view, const OmCellText* cell) {
    double value = 0;
    std::uint32_t format = 0;
    if (!NumberOf(cell, _text, value, format)) {
      Text(sheet, col, Label(view, cell), nullptr);
      return;
    }
    std::string suffix;
    for (const std::string& m : cell->Markers()) suffix += _text.Plain(m);
    suffix += Brackets(view.Refs(cell));
    worksheet_write_number(sheet.sheet, sheet.row, col, value, NumberFormatOf(format, suffix));
  }

  lxw_format* NumberFormatOf(std::uint32_t format, const std::string& suffix) {
    std::string code = OmXlsxExport::NumberFormat(format);
    if (!suffix.empty()) {
      // A quoted literal cannot hold a quote.
      std::string literal;
      for (char c : suffix) {
        if (c != '"') literal += c;
      }
      code += "\"" + literal + "\"";
    }
    auto [it, added] = _numberFormats.emplace(code, nullptr);
    if (added) {
      it->second = workbook_add_format(_book);
      format_set_num_format(it->second, code.c_str());
    }
    return it->second;
  }

  void Text(Sheet& sheet, lxw_col_t col, const std::string& text, lxw_format* format) {
    if (text.empty() && format == nullptr) return;
    // A cell holds at most 32,767 characters; the library refuses longer texts outright.
    if (text.size() > kMaxCellText) {
      worksheet_write_string(sheet.sheet, sheet.row, col, FirstCodePoints(text, kMaxCellText).c_str(), format);
      return;
    }
    worksheet_write_string(sheet.sheet, sheet.row, col, text.c_str(), format);
  }

  // A label over the rows below the sheet's row and the columns from col to lastCol. The range
  // is merged without a format, which writes nothing into the rows below (they come later);
  // its first cell then takes the label with its format.
  void Merge(Sheet& sheet, lxw_col_t col, int rowsBelow, lxw_col_t lastCol, const std::string& text,
             lxw_format* format) {
    if (rowsBelow > 0 || lastCol > col) {
      worksheet_merge_range(sheet.sheet, sheet.row, col, sheet.row + lxw_row_t(std::max(rowsBelow, 0)),
                            std::max(lastCol, col), "", nullptr);
    }
    Text(sheet, col, text, format);
  }

  Sheet& NewSheet(const std::string& wanted) {
    const std::string name = OmXlsxExport::SheetName(wanted, _names);
    lxw_worksheet* sheet = workbook_add_worksheet(_book, name.c_str());
    if (sheet == nullptr) throw OMSException("OmXlsxExport::Write -- sheet not added: " + name);
    _sheets.push_back({sheet, 0});
    return _sheets.back();
  }

  const OmDisplayText& _text;
  std::size_t _maxGridCells;
  lxw_workbook* _book = nullptr;
  lxw_format* _bold = nullptr;
  lxw_format* _procedure = nullptr;
  lxw_format* _columnHeader = nullptr;
  lxw_format* _rowHeader = nullptr;
  lxw_format* _italic = nullptr;
  std::map<std::string, lxw_format*> _numberFormats;
  std::set<std::string> _names;
  std::vector<Sheet> _sheets;
};

}  // namespace

OmXlsxExport::OmXlsxExport(const std::string& codePage, std::size_t maxGridCells)
    : _text(codePage), _maxGridCells(maxGridCells) {}

void OmXlsxExport::Write(OmOutputTree& tree, const std::string& path) const {
  Workbook book(path, _text, _maxGridCells);
  book.Write(OmExportView::Parts(tree));
  book.Close();
}

std::string OmXlsxExport::SheetName(const std::string& wanted, std::set<std::string>& used) {
  std::string base;
  for (char c : wanted) {
    base += std::string_view("[]:*?/\\").find(c) != std::string_view::npos || c == '\n' || c == '\r' ? '_' : c;
  }
  while (!base.empty() && (base.front() == '\'' || base.front() == ' ')) base.erase(base.begin());
  base = FirstCodePoints(base, 31);
  while (!base.empty() && (base.back() == '\'' || base.back() == ' ')) base.pop_back();
  if (base.empty()) base = "Sheet";
  std::string name = base;
  for (int n = 2; used.count(Folded(name)) > 0 || Folded(name) == "history"; ++n) {
    const std::string tail = " (" + std::to_string(n) + ")";
    name = FirstCodePoints(base, 31 - tail.size()) + tail;
  }
  used.insert(Folded(name));
  return name;
}

std::string OmXlsxExport::NumberFormat(std::uint32_t format) {
  const int type = int((format >> 16) & 0xFF);
  const int decimals = std::min(OmNumber::Decimals(format), kMaxDecimals);
  const std::string fraction = decimals > 0 ? "." + std::string(std::size_t(decimals), '0') : "";
  switch (type) {
    case OmNumberFormat::kGeneral: return decimals > 0 ? "0" + fraction : "General";
    case OmNumberFormat::kComma:
    case OmNumberFormat::kDot: return "#,##0" + fraction;
    case OmNumberFormat::kDollar: return "\\$#,##0" + fraction;
    case OmNumberFormat::kE: return "0" + fraction + "E+00";
    // The value is already a percentage: Excel's % would multiply it by 100.
    case OmNumberFormat::kPct: return "0" + fraction + "\\%";
    default: return "0" + fraction;
  }
}
