// Excel workbooks for `omfactory render --format xlsx`: one worksheet per procedure (per table
// when a procedure's tables do not fit one sheet), each table laid out as the HTML view lays it
// out through OmTableLayout: spanning headers as merged cells, numbers as numbers in the table's
// decimals, title above and notes below, one block per layer. Sheets are written row by row in
// libxlsxwriter's constant-memory mode, so a huge table is never held as a sheet of cells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "tools/render/OmDisplayText.h"

class OmOutputTree;

class OmXlsxExport {
public:
  // codePage: the session's code page (the workbook's texts are UTF-8); tables with more grid
  // positions than maxGridCells are named but not laid out.
  OmXlsxExport(const std::string& codePage, std::size_t maxGridCells);

  // Writes the workbook to path, replacing it. Throws OMSException when it cannot be written.
  void Write(OmOutputTree& tree, const std::string& path) const;

  // A sheet name Excel accepts, made from wanted: [ ] : * ? / \ become "_", at most 31 characters,
  // no apostrophe at either end, never empty or "History", and unlike every name in used (Excel
  // compares them without regard to case): a repeat gets " (2)", " (3)"... The name joins used.
  static std::string SheetName(const std::string& wanted, std::set<std::string>& used);
  // The Excel number format that shows a number as the format word does: "0.00", "#,##0.0",
  // "0.000E+00", "0.0\%"...; "General" for the general type without decimals.
  static std::string NumberFormat(std::uint32_t format);

  // The most rows and columns a worksheet holds.
  static constexpr std::size_t kMaxRows = 1048576;
  static constexpr std::size_t kMaxColumns = 16384;

private:
  OmDisplayText _text;
  std::size_t _maxGridCells;
};
