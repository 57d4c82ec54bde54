// Exports for the tools analysts move output into: tidy CSV (one row per table cell), GitHub
// Markdown and LaTeX. Each walks the shown parts in outline order and writes to a stream as it
// goes, so that a big output is never held twice; tables are read through OmTableLayout, the
// layout the text and HTML views use.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "tools/render/OmDisplayText.h"

class OmOutputTree;

class OmExport {
public:
  enum class Kind { kCsv, kMarkdown, kLatex };

  // codePage: the session's code page (texts are written as UTF-8); tables with more grid
  // positions than maxGridCells are named but not laid out.
  OmExport(Kind kind, const std::string& codePage, std::size_t maxGridCells);

  void Write(OmOutputTree& tree, std::ostream& out) const;

  // One field of an RFC 4180 record: quoted when it holds a comma, quote, CR or LF.
  static std::string CsvField(const std::string& text);
  // Text for a pipe-table cell or a Markdown line: backslashes, pipes and the characters that
  // start emphasis, links or HTML are escaped; line breaks become spaces.
  static std::string MarkdownEscape(const std::string& text);
  // Text for LaTeX: & % $ # _ { } ~ ^ \ and the characters that typeset unexpectedly in text
  // mode (< > |) become commands; line breaks become spaces.
  static std::string LatexEscape(const std::string& text);

private:
  Kind _kind;
  OmDisplayText _text;
  std::size_t _maxGridCells;
};
