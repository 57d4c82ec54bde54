#include "backend/omfactory/translate/OmCellTextTranslator.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/stringtables/FacSTDictionary.h"

OmCellTextTranslator::OmCellTextTranslator(FacSTDictionary* dictionary) : _dictionary(dictionary) {
  if (_dictionary == nullptr) {
    throw OMSException("OmCellTextTranslator::OmCellTextTranslator -- dictionary != nullptr");
  }
}

void OmCellTextTranslator::Visit(OmStringCell& cell) {
  // Names copied from a procedure (variables, values, user titles) are never looked up.
  if (!cell.Translatable()) return;
  _dictionary->setICUTracker(cell.getICUTracker());
  std::string second;
  std::string third;
  const std::string translation = _dictionary->LookUp(cell.KeyText(), second, third);
  cell.setShownText(translation);
  cell.setSecondText(second);
  cell.setFurtherText(third);
}

void OmCellTextTranslator::Visit(OmComposite& composite) {
  icuTracker* const tracker = composite.getICUTracker();
  _dictionary->setICUTracker(tracker);

  OmComposite::Part& root = composite.Root();
  if (OmCellText* pattern = root.Cell()) {
    pattern->setICUTracker(tracker);
    pattern->Accept(*this);
  }

  // Arguments in pre-order, each given the tracker of the part above it. A repeat list has no
  // cell of its own and passes its tracker on. An explicit stack: argument trees come from the
  // stream and may nest deeper than the call stack should.
  std::vector<std::pair<OmComposite::Part*, icuTracker*>> pending;
  auto pushChildren = [&pending](OmComposite::Part& part, icuTracker* inherited) {
    icuTracker* const own = part.Cell() ? part.Cell()->getICUTracker() : inherited;
    auto& parts = part.Parts();
    for (auto it = parts.rbegin(); it != parts.rend(); ++it) pending.emplace_back(it->get(), own);
  };
  pushChildren(root, tracker);
  while (!pending.empty()) {
    auto [part, parentTracker] = pending.back();
    pending.pop_back();
    if (OmCellText* cell = part->Cell()) {
      cell->setICUTracker(parentTracker);
      cell->Accept(*this);
    }
    pushChildren(*part, parentTracker);
  }

  composite.Substitute(nullptr, _keepUnused);
}
