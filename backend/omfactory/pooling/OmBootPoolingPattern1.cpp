#include "backend/omfactory/pooling/OmBootPoolingPattern1.h"

#include <memory>

#include "backend/omfactory/pooling/BootstrapCellCalculator.h"
#include "backend/omfactory/pooling/BootstrapResultWriter.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/PoolingData.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmPivotTable.h"

OmBootPoolingPattern1::OmBootPoolingPattern1(const std::string& procedureName,
                                             const std::string& templateName)
    : OmBootPattern(procedureName, templateName),
      _statisticsDimension(std::string(), false),
      _excludedDimension(std::string(), false) {}

bool OmBootPoolingPattern1::MatchesTable(const OmPivotTable& table) const {
  if (!OmBootPattern::MatchesTable(table)) return false;
  // An empty name excludes nothing.
  const std::string& excluded = _excludedDimension.KeyText();
  return excluded.empty() || FindDimension(table, excluded) < 0;
}

bool OmBootPoolingPattern1::PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list,
                                     const SvrBootstrapSpecs* specs,
                                     const ReplicateValues* values) const {
  (void)list;
  if (specs == nullptr) return false;
  const PoolingData data(*this, table, *specs);
  if (!data.Valid() || data.SplitDim() < 0 || data.StatisticsDim() < 0) return false;
  const int statDim = data.StatisticsDim();
  const int splitDim = data.SplitDim();

  for (const auto& [estimateLabel, secondLabel] : _statistics) {
    OmComposite groupLabel(_groupLabel, !_groupLabel.empty());
    groupLabel.Add(OmStringCell(estimateLabel, true));
    groupLabel.Substitute();
    auto writer = std::make_unique<BootstrapResultWriter>(
        specs->GetCILevelPct(), table, statDim, groupLabel, data.SampleText(),
        specs->GetNSamples(), !secondLabel.empty(), data.JackknifeCount() != 0,
        _significanceOnly);
    BootstrapCellCalculator calculator(*specs, table, std::move(writer), splitDim,
                                       data.RequiredDims(), values);

    const OmDimensionNode* statistics = &table.Dimension(statDim).Root();
    const int e = OmPoolingTools::FindMatchingCategory(OmStringCell(estimateLabel, true), statistics);
    if (e < 0) continue;
    const bool zeroFill = secondLabel == kZeroFill;
    const int s = (secondLabel.empty() || zeroFill)
                      ? -1
                      : OmPoolingTools::FindMatchingCategory(OmStringCell(secondLabel, true), statistics);
    if (data.SampleCount() < 1) continue;

    const SliceIndex walk(table, {statDim, splitDim});
    OmPivotTable::Coordinates estimate;
    OmPivotTable::Coordinates stdError;
    for (std::uint64_t i = 0; i < walk.Count(); ++i) {
      walk.Position(i, estimate);
      estimate[std::size_t(statDim)] = e;
      estimate[std::size_t(splitDim)] = 0;
      if (s >= 0) {
        stdError = estimate;
        stdError[std::size_t(statDim)] = s;
      }
      calculator.ComputeCell(estimate, stdError, zeroFill);
    }
  }
  return false;
}

void OmBootPoolingPattern1::SetStatisticsDimension(const std::string& label) {
  _statisticsDimension = OmStringCell(label, false);
}

void OmBootPoolingPattern1::SetExcludedDimension(const std::string& label) {
  _excludedDimension = OmStringCell(label, false);
}

void OmBootPoolingPattern1::SetGroupLabel(const std::string& labelTemplate) {
  _groupLabel = labelTemplate;
}

void OmBootPoolingPattern1::AddStatistic(const std::string& estimate, const std::string& second) {
  _statistics.emplace_back(estimate, second);
}

void OmBootPoolingPattern1::SetSignificanceOnly(bool on) { _significanceOnly = on; }
