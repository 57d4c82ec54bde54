// Renders an output tree as one self-contained HTML page: the outline as a collapsible tree of
// links beside the objects, pivot tables with row and column headers spanning their groups, one
// grid per layer, footnote markers and notes. Every text is escaped; the page loads nothing.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "tools/render/OmDisplayText.h"

class OmOutputTree;
class OmPivotTable;

class OmHtmlRenderer {
public:
  struct Options {
    // The code page of the session's texts; the page is UTF-8.
    std::string codePage = "UTF-8";
    // The page's title.
    std::string title = "omfactory output";
    // Render parts whose keep flag is clear, marked as excluded.
    bool showExcluded = false;
    // A table with more grid positions than this (rows x columns x layers) is described instead
    // of laid out, so that a damaged or huge table cannot exhaust memory.
    std::size_t maxGridCells = 1000000;
  };

  OmHtmlRenderer();
  // Throws OMSException when options.codePage cannot be used.
  explicit OmHtmlRenderer(Options options);

  // The page, written part by part as it is made.
  void Write(OmOutputTree& tree, std::ostream& out) const;
  std::string Render(OmOutputTree& tree) const;
  // One table as a <div class="pivot"> block: title, one grid per layer, caption and notes.
  std::string RenderTable(const OmPivotTable& table) const;

  // text with &, <, >, " and ' replaced by character references.
  static std::string Escape(const std::string& text);

private:
  Options _options;
  OmDisplayText _text;
};
