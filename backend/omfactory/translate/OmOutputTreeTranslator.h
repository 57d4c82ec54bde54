// Translates every text of the pivot tables of a procedure's tree: label, titles, dimension and
// category labels, footnotes and cells. The factory session owns one on its dictionary; the end of
// a procedure runs it over each part, and the OMS selector borrows its cell-text translator.
#pragma once

#include "backend/omfactory/translate/OmCellTextTranslator.h"
#include "platform/outputmodel/OmOutputPart.h"

class FacSTDictionary;

class OmOutputTreeTranslator : public OmOutputPart::Visitor {
public:
  // dictionary is borrowed and must outlive the translator; it must not be null.
  explicit OmOutputTreeTranslator(FacSTDictionary* dictionary);

  // The translator of single cell texts, on the same dictionary.
  OmCellTextTranslator& GetCellTextTranslator() { return _cellTranslator; }

  // Translates, in order: label, title, caption and corner text, each dimension's label and
  // category tree (each node before its children), footnote markers and texts, then the cells.
  void Visit(OmPivotTable& table) override;

private:
  OmCellTextTranslator _cellTranslator;
};
