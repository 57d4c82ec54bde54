#include "backend/omfactory/pooling/OmBootPoolingPattern3.h"

#include <memory>

#include "backend/omfactory/pooling/BootstrapCellCalculator.h"
#include "backend/omfactory/pooling/BootstrapResultWriter.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/PoolingData.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"

namespace {

using ListNode = ListTree<OmOutputPart*>::Node;

constexpr const char* kStatisticsLabel = "Bootstrap Statistics";

void ClearFootnotes(OmCellText& cell) {
  const std::vector<std::int16_t> references = cell.Footnotes();
  for (std::int16_t k : references) cell.RemoveFootnote(k);
}

// Copies the category tree below source into target below parent, with the same category numbers
// and marks; the copied labels refer to no footnote (the new table has none of the source's).
void CopyNodes(OmDimension& target, OmDimension::Node parent, const OmDimensionNode& source) {
  for (const auto& child : source.Children()) {
    std::unique_ptr<OmCellText> label = child->Label() ? child->Label()->Clone() : nullptr;
    if (label) ClearFootnotes(*label);
    const bool group = child->IsGroup();
    OmDimension::Node node = target.Child(parent, group ? -1 : child->LeafIndex(), std::move(label), group);
    node->setSortMark(child->SortMark());
    node->setUngroupMark(child->UngroupMark());
    CopyNodes(target, node, *child);
  }
}

void CopyDimension(OmPivotTable& table, const OmDimension& source) {
  const OmStringCell unlabelled{std::string()};
  const int d = table.AddDimension(source.Label() ? *source.Label() : static_cast<const OmCellText&>(unlabelled));
  OmDimension& copy = table.Dimension(d);
  if (OmCellText* label = copy.Label()) ClearFootnotes(*label);
  copy.setDisplayFlags(source.HideLabel(), source.HideCategories());
  copy.setProperty3(source.Property3());
  copy.Root().setSortMark(source.Root().SortMark());
  copy.Root().setUngroupMark(source.Root().UngroupMark());
  CopyNodes(copy, &copy.Root(), source.Root());
}

// The node of part in list, or the end of the list.
ListNode FindNode(ListTree<OmOutputPart*>& list, const OmOutputPart& part) {
  for (ListNode n = list.Begin(); !n.IsEnd(); ++n) {
    if (n.Value() == &part) return n;
  }
  return list.End();
}

// The source table's dimensions and axes without the bootstrap split dimension, the statistics
// dimension replaced by one holding only the estimate.
std::unique_ptr<OmPivotTable> NewTable(const PoolingData& data, const std::string& estimate,
                                       const OmCellText& titleArgument) {
  const OmPivotTable& source = data.Table();
  OmComposite title("Bootstrap for ^1", true);
  title.Add(titleArgument);
  title.Substitute();
  auto table = std::make_unique<OmPivotTable>(
      title, OmStringCell(OmBootPoolingPattern3::kTemplateName, false), true);
  table->setBackendSettings(source.getBackendSettings());
  table->SetTableTitle(title);
  table->TableId(source.TableId() + OmBootPoolingPattern3::kTableIdOffset);
  // Shown the way its source is.
  table->setLang(source.Lang());
  table->setVariableMode(source.VariableMode());
  table->setValueMode(source.ValueMode());
  table->setLabelsOnly(source.LabelsOnly());
  table->TableLocale(source.TableLocale());
  table->setICUTracker(source.getICUTracker());

  const int splitDim = data.SplitDim();
  for (int d = 0; d < source.NDimensions(); ++d) {
    if (d == splitDim) continue;
    if (d != data.StatisticsDim()) {
      CopyDimension(*table, source.Dimension(d));
      continue;
    }
    const int statistics = table->AddDimension(OmStringCell(kStatisticsLabel, true));
    OmDimension& dimension = table->Dimension(statistics);
    dimension.Child(&dimension.Root(), -1, OmStringCell(estimate, true), false);
    dimension.setDisplayFlags(true, dimension.HideCategories());
  }
  for (int axis = 0; axis < 3; ++axis) {
    const std::vector<short>& from = axis == 0 ? source.Rows() : axis == 1 ? source.Columns() : source.Layers();
    PuppetVector<short> to = table->Axis(axis);
    to.Clear();
    for (short d : from) {
      if (d == splitDim) continue;
      to.push_back(d > splitDim ? short(d - 1) : d);
    }
  }
  return table;
}

}  // namespace

OmBootPoolingPattern3::OmBootPoolingPattern3(const std::string& procedureName,
                                             const std::string& templateName)
    : OmBootPattern(procedureName, templateName),
      _statisticsDimension(std::string(), false),
      _groupLabel("Bootstrap", true) {}

bool OmBootPoolingPattern3::MatchesTable(const OmPivotTable& table) const {
  return OmBootPattern::MatchesTable(table) &&
         FindDimension(table, _statisticsDimension.KeyText()) >= 0;
}

bool OmBootPoolingPattern3::PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list,
                                     const SvrBootstrapSpecs* specs,
                                     const ReplicateValues* values) const {
  if (specs == nullptr) return false;
  const PoolingData data(*this, table, list, *specs);
  if (!data.Valid() || data.SplitDim() < 0 || data.StatisticsDim() < 0 || _statistics.empty()) {
    return false;
  }
  ListNode after = FindNode(list, table);
  if (after.IsEnd()) return false;  // nowhere to put the new tables

  const int statDim = data.StatisticsDim();
  const int splitDim = data.SplitDim();
  const OmDimensionNode* statistics = &table.Dimension(statDim).Root();
  bool made = false;
  for (const auto& [estimateLabel, secondLabel] : _statistics) {
    const int e = OmPoolingTools::FindMatchingCategory(OmStringCell(estimateLabel, true), statistics);
    if (e < 0 || data.SampleCount() < 1) continue;
    const int s = secondLabel.empty()
                      ? -1
                      : OmPoolingTools::FindMatchingCategory(OmStringCell(secondLabel, true), statistics);

    // One estimate: the table's own title names it; several: each table names its estimate.
    const OmStringCell estimateCell(estimateLabel, true);
    const OmStringCell untitled{std::string()};
    const OmCellText* titleArgument = &estimateCell;
    if (_statistics.size() < 2) {
      titleArgument = table.GetTableTitle() ? table.GetTableTitle()
                      : table.Label()       ? table.Label()
                                            : &untitled;
    }
    std::unique_ptr<OmPivotTable> bootTable = NewTable(data, estimateLabel, *titleArgument);
    OmPivotTable& target = *bootTable;
    const int resultDim = OmBootPattern::FindDimension(target, kStatisticsLabel);
    auto writer = std::make_unique<BootstrapResultWriter>(
        data.ConfidenceLevel(), target, resultDim, _groupLabel, data.SampleText(),
        specs->GetNSamples(), s >= 0, data.JackknifeCount() != 0, false);
    BootstrapCellCalculator calculator(*specs, table, std::move(writer), splitDim,
                                       data.RequiredDims(), values);
    ReplicateCollector& collector = calculator.Collector();

    const SliceIndex walk(table, {statDim, splitDim});
    OmPivotTable::Coordinates estimate;
    OmNumber scratch(0.0);  // the original sample's plain numbers, read without objects
    OmPivotTable::Coordinates stdError;
    OmPivotTable::Coordinates mapped(std::size_t(target.NDimensions()), 0);
    for (std::uint64_t i = 0; i < walk.Count(); ++i) {
      walk.Position(i, estimate);
      estimate[std::size_t(statDim)] = e;
      estimate[std::size_t(splitDim)] = 0;
      if (s >= 0) {
        stdError = estimate;
        stdError[std::size_t(statDim)] = s;
      }
      const bool collected = collector.Collect(estimate, stdError);
      if (collected && secondLabel == kTestStatistic) collector.TestStatisticsToStdErrors();
      const OmCellText* cell = table.ReadCell(estimate, scratch);
      if (cell == nullptr) continue;
      for (int d = 0, m = 0; d < table.NDimensions(); ++d) {
        if (d == splitDim) continue;
        mapped[std::size_t(m++)] = d == statDim ? 0 : estimate[std::size_t(d)];
      }
      std::unique_ptr<OmCellText> copy = cell->Clone();
      ClearFootnotes(*copy);
      target.Cell(mapped, std::move(copy));
      if (collected) calculator.ComputeCollected(mapped, false);
    }

    const ListNode placed = list.Insert(after.SubtreeEnd(), bootTable.get());
    bootTable.release();  // the list owns its parts
    after = placed;
    made = true;
  }
  return made;
}

void OmBootPoolingPattern3::SetStatisticsDimension(const std::string& label) {
  _statisticsDimension = OmStringCell(label, false);
}

void OmBootPoolingPattern3::AddStatistic(const std::string& estimate, const std::string& second) {
  _statistics.emplace_back(estimate, second);
}
