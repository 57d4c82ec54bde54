#include "backend/omfactory/pooling/OmBootPooler.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

#include "backend/omfactory/pooling/BootPoolingPatterns.h"
#include "backend/omfactory/pooling/OmBootPattern.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/ReplicateValues.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"

namespace {

int SplitNumber(const OmOutputPart* part) {
  return part ? OmPoolingTools::BootstrapSplitNum(part->Label()) : -1;
}

// True when table holds no cell for the original sample of its bootstrap split dimension d.
bool NoOriginalSampleCell(const OmPivotTable& table, int d) {
  const SliceIndex walk(table, {d});
  OmPivotTable::Coordinates coords;
  for (std::uint64_t i = 0; i < walk.Count(); ++i) {
    walk.Position(i, coords);
    coords[std::size_t(d)] = 0;
    if (table.HasCell(coords)) return false;
  }
  return true;
}

// A table that the bootstrap samples produced but the original sample did not.
bool IsReplicateOnlyTable(const OmPivotTable& table) {
  const int n = table.NDimensions();
  if (n > 0 && table.HasCell(OmPivotTable::Coordinates(std::size_t(n), 0))) return false;
  if (!table.Footnotes().empty()) return false;
  const int d = OmPoolingTools::FindBootstrapDim(table);
  return d >= 0 && NoOriginalSampleCell(table, d);
}

bool IsOriginalSample(const OmCellText* label) {
  const auto* value = dynamic_cast<const OmNumDataValue*>(label);
  return value != nullptr && value->Value() == 0.0;
}

// Removes the categories below node that are not the original sample, collecting their
// category numbers; groups are kept and walked.
void RemoveReplicateCategories(OmDimensionNode& node, std::unordered_set<int>& removed) {
  auto& children = node.Children();
  for (std::size_t i = 0; i < children.size();) {
    OmDimensionNode& child = *children[i];
    if (child.IsGroup() || child.NChildren() > 0) {
      RemoveReplicateCategories(child, removed);
      ++i;
    } else if (IsOriginalSample(child.Label())) {
      ++i;
    } else {
      std::vector<int> leaves;
      child.CollectLeaves(leaves);
      removed.insert(leaves.begin(), leaves.end());
      node.RemoveChild(i);  // the next category moves into place i
    }
  }
}

// The leaves that RemoveReplicateCategories would remove below node, appended to leaves.
void CollectReplicateLeaves(const OmDimensionNode& node, std::vector<int>& leaves) {
  for (const auto& child : node.Children()) {
    if (child->IsGroup() || child->NChildren() > 0) {
      CollectReplicateLeaves(*child, leaves);
    } else if (!IsOriginalSample(child->Label())) {
      child->CollectLeaves(leaves);
    }
  }
}

// The sample values of table's split dimension d, read before any pattern writes results. The
// sample cells then leave the table at once rather than after pooling: the results widen the
// table's key fields and are stored out of key order, and with every sample cell still there
// that rewrites and indexes (B + 1) times the cells that stay. The cells that go are those that
// KeepOriginalSampleCategories drops afterwards anyway, and only while the original sample keeps
// coordinate 0, where the collectors read it from the table.
std::unique_ptr<ReplicateValues> GatherSamples(OmPivotTable& table, int d) {
  std::vector<int> leaves;
  CollectReplicateLeaves(table.Dimension(d).Root(), leaves);
  if (std::find(leaves.begin(), leaves.end(), 0) != leaves.end()) leaves.clear();
  // Read and dropped in one pass.
  return std::make_unique<ReplicateValues>(table, d, leaves);
}

void StripDimension(OmPivotTable& table, OmDimensionNode& node) {
  OmBootPooler::StripSplitFootnotes(table, node.Label());
  for (const auto& child : static_cast<const OmDimensionNode&>(node).Children()) {
    StripDimension(table, *child);
  }
}

}  // namespace

struct OmBootPooler::Data {
  const OmCellText* _procedureName = nullptr;
  ListTree<OmOutputPart*>* _list = nullptr;
  std::vector<const OmBootPattern*> _patterns;
  const SvrBootstrapSpecs* _specs = nullptr;
};

OmBootPooler::OmBootPooler(const OmCellText* procedureName, ListTree<OmOutputPart*>& list,
                           const SvrBootstrapSpecs* specs)
    : _my(std::make_unique<Data>()) {
  Data& my = *_my;
  my._procedureName = procedureName;
  my._list = &list;
  my._specs = specs;
  if (specs == nullptr) return;
  for (const OmBootPattern* pattern : BootPoolingPatterns()) {
    if (procedureName != nullptr && pattern->MatchesProcedure(*procedureName)) {
      my._patterns.push_back(pattern);
    }
  }
  if (list.Empty()) return;
  PruneReplicateNodes(list, list.Begin());
  if (list.Empty()) return;
  FlattenSplitHeadings(list, list.Begin());
}

OmBootPooler::~OmBootPooler() = default;

const std::vector<const OmBootPattern*>& OmBootPooler::Patterns() const { return _my->_patterns; }

void OmBootPooler::PruneReplicateNodes(ListTree<OmOutputPart*>& list, Node node) {
  if (node.IsEnd()) return;
  OmOutputPart* part = node.Value();
  if (SplitNumber(part) > 0) {
    list.Erase(node);
    return;
  }
  if (const auto* table = dynamic_cast<const OmPivotTable*>(part)) {
    if (IsReplicateOnlyTable(*table)) {
      list.Erase(node);
      return;
    }
  }
  // Pruning a child touches nothing outside its subtree, so the later siblings stay valid.
  for (const Node& child : node.Children()) PruneReplicateNodes(list, child);
}

void OmBootPooler::FlattenSplitHeadings(ListTree<OmOutputPart*>& list, Node node) {
  if (node.IsEnd()) return;
  const std::vector<Node> children = node.Children();
  OmOutputPart* heading = node.Value();
  // The procedure node stays: the end of the procedure names it and hands it over.
  const bool fixed = heading == nullptr || dynamic_cast<const OmProcedure*>(heading) != nullptr;
  if (!fixed && children.size() == 1 && !children.front().HasChildren() &&
      SplitNumber(children.front().Value()) == 0) {
    if (auto* table = dynamic_cast<OmPivotTable*>(children.front().Value())) {
      if (const OmCellText* label = heading->Label()) {
        table->setLabel(label->Clone());
        table->SetTableTitle(*label);
      }
    }
    list.EraseOne(node);
    return;
  }
  for (const Node& child : children) FlattenSplitHeadings(list, child);
}

void OmBootPooler::KeepOriginalSampleCategories(OmDimension& dimension) {
  std::unordered_set<int> removed;
  RemoveReplicateCategories(dimension.Root(), removed);
  OmPivotTable* table = dimension.Table();
  if (table == nullptr || removed.empty()) return;
  // The cells of the removed categories go in one pass over the cell store, which is compacted
  // once: nearly every cell of a bootstrapped table belongs to a sample.
  int d = -1;
  for (int i = 0; i < table->NDimensions() && d < 0; ++i) {
    if (&table->Dimension(i) == &dimension) d = i;
  }
  if (d < 0) return;
  table->DropCells(d, std::vector<int>(removed.begin(), removed.end()));
}

void OmBootPooler::StripSplitFootnotes(OmPivotTable& table, OmCellText* cell) {
  if (cell == nullptr) return;
  const std::vector<std::int16_t> references = cell->Footnotes();
  const std::vector<OmFootnote>& footnotes = table.Footnotes();
  for (std::int16_t k : references) {
    if (k < 0 || std::size_t(k) >= footnotes.size()) continue;
    if (OmPoolingTools::BootstrapSplitNum(&footnotes[std::size_t(k)].Text()) > 0) {
      cell->RemoveFootnote(k);
      table.RemovedFootnotes(true);
    }
  }
}

void OmBootPooler::Visit(OmPivotTable& table) {
  Data& my = *_my;
  if (my._specs == nullptr) return;
  std::unique_ptr<ReplicateValues> samples;
  for (const OmBootPattern* pattern : my._patterns) {
    if (!pattern->MatchesTable(table)) continue;
    // Matching, the table has a split dimension; every pattern reads the one gathering.
    if (!samples) samples = GatherSamples(table, OmPoolingTools::FindBootstrapDim(table));
    pattern->PoolWith(table, *my._list, my._specs, samples.get());
  }
  const int d = OmPoolingTools::FindBootstrapDim(table);
  if (d < 0) return;
  OmDimension& split = table.Dimension(d);
  KeepOriginalSampleCategories(split);
  split.setDisplayFlags(true, true);

  StripSplitFootnotes(table, table.Label());
  StripSplitFootnotes(table, table.TableTitle());
  StripSplitFootnotes(table, table.CornerText());
  StripSplitFootnotes(table, table.Caption());
  for (int i = 0; i < table.NDimensions(); ++i) StripDimension(table, table.Dimension(i).Root());
}
