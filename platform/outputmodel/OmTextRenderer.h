// Renders an output tree as plain text for the command-line tool and golden tests: an indented
// outline of headings, each part under its heading, pivot tables laid out as text grids with
// nested row and column headers, one block per layer combination, and footnotes listed below.
//
// A table reads: its title (the label when there is no title), then per layer combination one
// line "dimension: category" per layer dimension and the grid between rules of dashes; then the
// caption and the footnotes referred to, "a. text". Column headers give each column dimension's
// label and one line per level of its groups; row headers give one column per level of each row
// dimension, a repeated group label shown once. Markers follow a text directly ("0.01*"),
// footnote references follow in brackets ("34.5[a,b]"), lettered by footnote index unless the
// footnote has a marker of its own. Hidden labels and display flags are honoured; numbers align
// right. Dimensions placed on no axis are shown with the rows.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"

class OmTextRenderer {
public:
  struct Options {
    // Spaces of indentation per outline level.
    int indent = 2;
    // Render parts whose keep flag is clear (marked "(excluded)").
    bool showExcluded = false;
    // Render every layer combination; false renders only the first and notes how many there are.
    bool allLayers = true;
  };

  OmTextRenderer();
  explicit OmTextRenderer(Options options);

  // The Write functions write as they go: a table's lines are made twice (once to measure the
  // columns) rather than held, so that a huge table costs no more memory than its headers.
  void Write(OmOutputTree& tree, std::ostream& out) const;
  std::string Render(OmOutputTree& tree) const;
  // One part at outline level (indentation) level, without its children.
  void WritePart(std::ostream& out, const OmOutputPart& part, int level = 0) const;
  std::string RenderPart(const OmOutputPart& part, int level = 0) const;
  std::string RenderTable(const OmPivotTable& table) const;

  // The marker shown for footnote index: the footnote's own marker text, else "a".."z", "aa"...
  static std::string FootnoteMarker(const OmPivotTable& table, int index);

private:
  // A part other than a table, indented by pad spaces.
  std::string PartText(const OmOutputPart& part, std::size_t pad, const std::string& excluded) const;

  Options _options;
};

// Whether a part that the OMS selection did not keep hides everything below it when rendered.
// Every part does but a heading (a procedure included): the end of a procedure keeps an
// unselected heading only while it still holds selected output, which is shown.
bool ExcludedPartHidesItsSubtree(const OmOutputPart& part);
