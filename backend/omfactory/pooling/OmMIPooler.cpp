#include "backend/omfactory/pooling/OmMIPooler.h"

#include <vector>

#include "backend/omfactory/pooling/MIPoolingPatterns.h"
#include "backend/omfactory/pooling/OmMIPattern.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/settings/BackendSettings.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "platform/stringtables/PathFactory.h"

namespace {

// The cell-limit note, looked up in the "OMS" section of the current language's string table.
constexpr const char* kCellLimitKey = "Pooling exceeded limit of ^1 pivot table cells...";
constexpr const char* kCellLimitSection = "OMS";
constexpr const char* kCellLimitColour = "#FF0000";

}  // namespace

struct OmMIPooler::Data {
  const OmCellText* procedureName;
  OmOutputTree* state;
  std::vector<const OmMIPattern*> patterns;
  bool pooled;
  bool observed;
  bool imputed;
};

OmMIPooler::OmMIPooler(const OmCellText* procedureName, OmOutputTree* state, bool pooled,
                       bool observed, bool imputed, bool /*diagnostics*/)
    : _my(std::make_unique<Data>(Data{procedureName, state, {}, pooled, observed, imputed})) {
  if (!procedureName) return;  // an unnamed procedure matches no pattern
  const std::size_t hash = procedureName->Hash();
  for (const OmMIPattern* pattern : MIPoolingPatterns()) {
    if (pattern->ProcedureHash() == hash && pattern->MatchesProcedure(*procedureName)) {
      _my->patterns.push_back(pattern);
    }
  }
}

OmMIPooler::~OmMIPooler() = default;

std::size_t OmMIPooler::NPatterns() const { return _my->patterns.size(); }

const OmMIPattern* OmMIPooler::Pattern(std::size_t i) const {
  if (i >= _my->patterns.size()) {
    throw OMSException("OmMIPooler::Pattern -- i < NPatterns()", double(i), double(_my->patterns.size()));
  }
  return _my->patterns[i];
}

void OmMIPooler::Visit(OmPivotTable& table) {
  _discard = false;
  for (const OmMIPattern* pattern : _my->patterns) {
    if (!pattern->MatchesTable(table) || table.IsScratched()) continue;
    table.setImputed(true);
    pattern->Pool(table, _my->state);
    if (table.IsScratched()) {
      ReportCellLimit(table);
      table.Scratch(false);
    }
  }
  const int imputationDim = OmPoolingTools::FindImputationDim(table);
  if (imputationDim < 0) return;
  OmDimension& dimension = table.Dimension(imputationDim);
  const bool allRemoved = PruneImputationCategories(dimension, &dimension.Root(), _my->observed,
                                                    _my->imputed, _my->pooled);
  table.setImputed(true);
  _discard = allRemoved;
}

void OmMIPooler::Visit(OmHeading&) { _discard = false; }
void OmMIPooler::Visit(OmTextBlock&) { _discard = false; }
void OmMIPooler::Visit(OmChart&) { _discard = false; }
void OmMIPooler::Visit(OmAnswerTree&) { _discard = false; }
void OmMIPooler::Visit(OmModel&) { _discard = false; }
void OmMIPooler::Visit(OmInteractive&) { _discard = false; }

bool OmMIPooler::PruneImputationCategories(OmDimension& dimension, OmDimension::Node node,
                                           bool observed, bool imputed, bool pooled) {
  bool allRemoved = true;
  std::size_t i = 0;
  while (i < node->NChildren()) {
    OmDimension::Node child = node->Child(i);
    if (child->NChildren() > 0) {
      if (allRemoved) allRemoved = PruneImputationCategories(dimension, child, observed, imputed, pooled);
      ++i;
      continue;
    }
    bool keep;
    if (const auto* value = dynamic_cast<const OmNumDataValue*>(child->Label())) {
      keep = value->Value() == 0.0 ? observed : imputed;
    } else {
      keep = pooled;
    }
    if (keep) {
      allRemoved = false;
      ++i;
    } else {
      dimension.Delete(child);  // the next sibling moves into position i
    }
  }
  return allRemoved;
}

void OmMIPooler::ReportCellLimit(OmPivotTable& table) {
  FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::kStringTables).Directory());
  dictionary.SetProcedure(kCellLimitSection);
  OmComposite note(dictionary.LookUp(kCellLimitKey), false);  // already in the output language
  const auto& settings = table.getBackendSettings();
  const double limit = settings ? double(settings->getMaxCells()) : double(table.MaxCells());
  note.Add(OmNumber(limit, OmNumber::kDefaultFormat));
  note.Substitute();
  OmCellText* title = table.TableTitle() ? table.TableTitle() : table.Label();
  const int index = table.Footnote(OmFootnote(note), false);
  if (!title) return;
  table.FootnoteAt(index).AddReference();
  title->Footnote(std::int16_t(index));
  title->setTextColor(kCellLimitColour);
}
