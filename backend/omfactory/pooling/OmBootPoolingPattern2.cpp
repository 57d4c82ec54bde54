#include "backend/omfactory/pooling/OmBootPoolingPattern2.h"

#include <memory>

#include "backend/omfactory/pooling/BootstrapCellCalculator.h"
#include "backend/omfactory/pooling/BootstrapResultWriter.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/PoolingData.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmPivotTable.h"

namespace {

// Pools the statistic at node of the statistics dimension: a category directly, a group through
// its categories.
void PoolNode(const OmDimensionNode& node, const PoolingData& data, int category,
              BootstrapCellCalculator& calculator) {
  if (node.NChildren() > 0) {
    for (const auto& child : node.Children()) PoolNode(*child, data, category, calculator);
    return;
  }
  if (node.LeafIndex() < 0) return;  // an empty group
  OmPivotTable& table = data.Table();
  const int statDim = data.StatisticsDim();
  const int bootDim = data.BootstrapDim();
  const int splitDim = data.SplitDim();
  const SliceIndex walk(table, {statDim, bootDim, splitDim});
  const OmPivotTable::Coordinates noStdError;
  OmPivotTable::Coordinates estimate;
  for (std::uint64_t i = 0; i < walk.Count(); ++i) {
    walk.Position(i, estimate);
    estimate[std::size_t(statDim)] = node.LeafIndex();
    estimate[std::size_t(bootDim)] = category;
    estimate[std::size_t(splitDim)] = 0;
    calculator.ComputeCell(estimate, noStdError, false);
  }
}

}  // namespace

OmBootPoolingPattern2::OmBootPoolingPattern2(const std::string& procedureName,
                                             const std::string& templateName)
    : OmBootPattern(procedureName, templateName),
      _statisticsDimension(std::string(), false),
      _bootstrapDimension(std::string(), false),
      _groupLabel("Bootstrap", true) {}

bool OmBootPoolingPattern2::MatchesTable(const OmPivotTable& table) const {
  return OmBootPattern::MatchesTable(table) &&
         FindDimension(table, _statisticsDimension.KeyText()) >= 0;
}

bool OmBootPoolingPattern2::PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list,
                                     const SvrBootstrapSpecs* specs,
                                     const ReplicateValues* values) const {
  (void)list;
  if (specs == nullptr) return false;
  const PoolingData data(*this, table, *specs);
  if (!data.Valid()) return false;

  auto writer = std::make_unique<BootstrapResultWriter>(
      specs->GetCILevelPct(), table, data.BootstrapDim(), _groupLabel, data.SampleText(),
      specs->GetNSamples(), false, data.JackknifeCount() != 0, false);
  BootstrapCellCalculator calculator(*specs, table, std::move(writer), data.SplitDim(),
                                     data.RequiredDims(), values);
  if (data.SplitDim() < 0 || data.StatisticsDim() < 0 || _statistics.empty()) return false;

  const OmDimension& statistics = table.Dimension(data.StatisticsDim());
  const OmDimension& bootstrap = table.Dimension(data.BootstrapDim());
  for (const std::string& label : _statistics) {
    const OmStringCell wanted(label, true);
    const OmDimensionNode* first = statistics.Root().NChildren() > 0 ? statistics.Root().Child(0) : nullptr;
    const OmDimensionNode* node = OmPoolingTools::Find(first, nullptr, &wanted);
    const int c = OmPoolingTools::FindMatchingCategory(OmStringCell(_statisticCategory, true),
                                                       &bootstrap.Root());
    if (node != nullptr && c >= 0 && data.SampleCount() >= 1) PoolNode(*node, data, c, calculator);
  }
  return false;
}

void OmBootPoolingPattern2::SetStatisticsDimension(const std::string& label) {
  _statisticsDimension = OmStringCell(label, false);
}

void OmBootPoolingPattern2::SetBootstrapDimension(const std::string& label) {
  _bootstrapDimension = OmStringCell(label, false);
}

void OmBootPoolingPattern2::AddStatistic(const std::string& label) { _statistics.push_back(label); }
