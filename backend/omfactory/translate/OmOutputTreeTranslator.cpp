#include "backend/omfactory/translate/OmOutputTreeTranslator.h"

#include <vector>

#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmDimensionNode.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmPivotTable.h"

namespace {

void Translate(OmCellText* text, OmCellTextTranslator& translator) {
  if (text != nullptr) text->Accept(translator);
}

// The labels below root, each node before its children. Children are reached through the mutable
// accessor on purpose: it drops the node's label look-up index, which new label texts would make
// stale.
void TranslateCategories(OmDimensionNode& root, OmCellTextTranslator& translator) {
  std::vector<OmDimensionNode*> pending{&root};
  while (!pending.empty()) {
    OmDimensionNode* node = pending.back();
    pending.pop_back();
    if (node != &root) Translate(node->Label(), translator);
    auto& children = node->Children();
    for (auto it = children.rbegin(); it != children.rend(); ++it) pending.push_back(it->get());
  }
}

}  // namespace

OmOutputTreeTranslator::OmOutputTreeTranslator(FacSTDictionary* dictionary)
    : _cellTranslator(dictionary) {}

void OmOutputTreeTranslator::Visit(OmPivotTable& table) {
  OmCellTextTranslator& translator = _cellTranslator;
  Translate(table.Label(), translator);
  Translate(table.TableTitle(), translator);
  Translate(table.Caption(), translator);
  Translate(table.CornerText(), translator);

  for (int d = 0; d < table.NDimensions(); ++d) {
    OmDimension& dimension = table.Dimension(d);
    Translate(dimension.Label(), translator);
    TranslateCategories(dimension.Root(), translator);
  }

  const int nFootnotes = int(table.Footnotes().size());
  for (int i = 0; i < nFootnotes; ++i) {
    OmFootnote& footnote = table.FootnoteAt(i);
    Translate(footnote.Marker(), translator);
    Translate(&footnote.Text(), translator);
  }

  // Plain numbers kept without an object have nothing to translate.
  for (OmPivotTable::Iterator it = table.FirstCell(); !it.AtEnd(); ++it) {
    Translate(it.Object(), translator);
  }
}
