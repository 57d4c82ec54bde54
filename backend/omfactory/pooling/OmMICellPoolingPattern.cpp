#include "backend/omfactory/pooling/OmMICellPoolingPattern.h"

#include "backend/omfactory/pooling/OmMICellSteps.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/outputmodel/OmPivotTable.h"

OmMICellPoolingPattern::OmMICellPoolingPattern(const std::string& procedureName,
                                               const std::string& templateName)
    : OmMIPattern(procedureName, templateName), _statistics("", true), _excluded("", true) {}

OmMICellPoolingPattern::~OmMICellPoolingPattern() = default;

void OmMICellPoolingPattern::SetLabels(const Labels& labels) {
  _statistics = OmStringCell(labels.statistics, true);
  _excluded = OmStringCell(labels.excluded, true);
  _pair = labels.pair;
  _full = labels.full;
  _averaged = labels.averaged;
}

bool OmMICellPoolingPattern::MatchesTable(const OmPivotTable& table) const {
  return TemplateMatches(table) && OmPoolingTools::FindDim(table, _excluded) < 0 &&
         OmPoolingTools::FindDim(table, _statistics) >= 0 &&
         OmPoolingTools::FindImputationDim(table) >= 0;
}

bool OmMICellPoolingPattern::Pool(OmPivotTable& table, OmOutputTree*) const {
  const int imputationDim = OmPoolingTools::FindImputationDim(table);
  const int statDim = OmPoolingTools::FindDim(table, _statistics);
  if (imputationDim < 0 || statDim < 0) return false;
  const int original = OmPoolingTools::FindOriginalDataImputation(table, imputationDim);
  const int pooled = OmPoolingTools::MakePooledCategory(table, imputationDim);
  OmMICellSteps steps(table, imputationDim, {statDim}, original, pooled);
  auto place = [&table, statDim](const std::string& label) {
    return OmMICellSteps::Address{OmPoolingTools::AddCategory(table, statDim, label)};
  };

  // A failed step leaves the statistics after it unpooled: their cells would stand beside an
  // estimate the table does not have.
  bool anyPooled = false;
  if (_pair.size() == 2 && !_pair[0].empty()) {
    OmMICellSteps::RubinAddresses pair;
    pair.estimate = steps.Find({_pair[0]});
    pair.standardError = steps.Find({_pair[1]});
    anyPooled = steps.Rubin(pair, place);
  }
  if (!_full.estimate.empty()) {
    OmMICellSteps::RubinAddresses full;
    full.estimate = steps.Find({_full.estimate});
    full.standardError = steps.Find({_full.standardError});
    full.test = steps.Find({_full.test});
    full.df = steps.Find({_full.df});
    full.significance = steps.Find({_full.significance});
    full.interval = _full.interval;
    if (!steps.Rubin(full, place)) return anyPooled;
    anyPooled = true;
  }
  for (const std::string& statistic : _averaged) {
    if (!steps.Average(steps.Find({statistic}))) return anyPooled;
    anyPooled = true;
  }
  return anyPooled;
}
