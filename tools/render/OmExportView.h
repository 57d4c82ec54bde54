// What the exports (CSV, Markdown, LaTeX, Excel) show of an output tree: the parts in outline
// order with their depth and procedure, and a shown table's texts with their markers, footnote
// references and the notes those references call for, read through the shared table layout.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/render/OmDisplayText.h"
#include "tools/render/OmTableLayout.h"

class OmCellText;
class OmOutputPart;
class OmOutputTree;
class OmPivotTable;
class OmProcedure;

class OmExportView {
public:
  // A part shown in the outline, with its depth below the root and the procedure it belongs to
  // (null outside any procedure).
  struct Part {
    OmOutputPart* part;
    int depth;
    const OmProcedure* procedure;
  };
  // The shown parts in pre-order: a part the OMS selection did not keep is left out, with what it
  // hides.
  static std::vector<Part> Parts(OmOutputTree& tree);

  // A shown table as the exports read it. Footnotes are noted as their references are read, so
  // that Notes() lists those referred to, in the order first referred to.
  class Table {
  public:
    Table(const OmPivotTable& table, const OmDisplayText& text);

    const OmPivotTable& table;
    OmTableLayout layout;

    // The shown text of a cell with its markers; "" for a null or hidden cell.
    std::string Text(const OmCellText* cell) const;
    // The footnote markers of a cell, each noted as referred to.
    std::vector<std::string> Refs(const OmCellText* cell);
    std::string Marker(int index) const;
    // The referred-to footnotes: marker and text.
    std::vector<std::pair<std::string, std::string>> Notes() const;
    // The title, else the outline label.
    const OmCellText* Title() const;
    // A category's labels from its dimension's top level down, groups first, joined by " / ".
    std::string Path(const OmTableLayout::Leaf& leaf) const;
    // The layer lines of a layer combination, "Dimension: category path"; split dimensions kept
    // at one value are left out.
    std::vector<std::string> LayerLines(const OmTableLayout::Combination& layer) const;

  private:
    const OmDisplayText& _text;
    std::set<int> _seen;
    std::vector<int> _referenced;
  };
};
