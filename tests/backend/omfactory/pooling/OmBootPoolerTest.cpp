// The bootstrap pooler on a procedure's output: the nodes of bootstrap samples go, a heading that
// held only the original sample's table gives way to it, and a visited table keeps only the
// original sample with split footnotes taken off its labels.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "PoolingTables.h"
#include "tests/backend/omfactory/SessionFixture.h"
#include "backend/omfactory/pooling/OmBootPooler.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmProcedure.h"

namespace {

using namespace pooltest;
using sessiontest::Outline;

// A "Report" table of "Var" (a, b) x split 0 .. last with a cell at (a, k) for every k in splits.
std::unique_ptr<OmPivotTable> SplitTable(const std::string& label, int last, const std::vector<int>& splits) {
  TableBuilder b("Report", label);
  b.Dim("Var", {"a", "b"});
  b.SplitDim(last);
  for (int k : splits) b.Number({0, k}, 1.0 + k);
  return b.Release();
}

// root > procedure "Means" > parts added by each test.
struct Output {
  Output() {
    procedure = list.AppendUnderRoot(std::make_unique<OmProcedure>(OmStringCell("Means"), "English", "UTF-8", "en_US"));
  }
  OmPivotTable* Table(std::unique_ptr<OmPivotTable> table) {
    OmPivotTable* raw = table.get();
    list.Append(procedure, std::move(table));
    return raw;
  }
  const OmCellText* Name() { return procedure.Value()->Label(); }
  OmOutputTree list;
  OmOutputTree::Node procedure;
};

TEST(OmBootPoolerTest, PatternsAreChosenOnlyWithSpecificationsAndAProcedureName) {
  Output out;
  out.list.Append(out.procedure, std::make_unique<OmHeading>(OmNumDataValue(kSplitVariable, "", 3.0, kNoDecimals)));
  OmPivotTable* table = out.Table(SplitTable("Report", 2, {0, 1, 2}));
  const std::vector<std::string> before = Outline(out.list);
  OmBootPooler unspecified(out.Name(), out.list, nullptr);
  EXPECT_TRUE(unspecified.Patterns().empty());
  EXPECT_EQ(Outline(out.list), before);  // nothing erased
  table->Accept(unspecified);
  EXPECT_EQ(table->Size(1), 3);  // nor reduced
  EXPECT_FALSE(table->Dimension(1).HideLabel());

  const SvrBootstrapSpecs specs = Specs(10);
  EXPECT_EQ(OmBootPooler(out.Name(), out.list, &specs).Patterns().size(), 1u);  // "Report"
  EXPECT_TRUE(OmBootPooler(nullptr, out.list, &specs).Patterns().empty());
}

TEST(OmBootPoolerTest, TablesWithNothingForTheOriginalSampleGoUnlessFootnoted) {
  Output out;
  out.Table(SplitTable("Replicates only", 3, {1, 2}));
  OmPivotTable* noted = out.Table(SplitTable("Noted", 3, {2}));
  noted->Footnote(OmFootnote(OmStringCell("a note")));
  // The original sample's cell is not the first one.
  out.Table(SplitTable("Original", 3, {}))->Cell({1, 0}, OmNumber(4.0));
  TableBuilder unsplit("Report", "Unsplit");
  unsplit.Dim("Var", {"a"});
  out.Table(unsplit.Release());
  out.Table(SplitTable("No categories", -1, {}));
  const SvrBootstrapSpecs specs = Specs(3);
  OmBootPooler pooler(out.Name(), out.list, &specs);
  EXPECT_EQ(Outline(out.list), (std::vector<std::string>{"0:-", "1:Procedure:Means", "2:Table:Noted",
                                                         "2:Table:Original", "2:Table:Unsplit"}));
}

TEST(OmBootPoolerTest, SplitFootnotesLeaveLabelsButNotDataCells) {
  Output out;
  OmPivotTable* table = out.Table(SplitTable("Report", 2, {0, 1, 2}));
  table->CornerText(OmStringCell("corner"));
  table->Caption(OmStringCell("caption"));
  const int sample = table->Footnote(OmFootnote(OmStringCell("$bootstrap_split = 2")));
  const int original = table->Footnote(OmFootnote(OmStringCell("$bootstrap_split = 0")));
  std::vector<OmCellText*> labels = {table->Label(), table->TableTitle(), table->CornerText(), table->Caption(),
                                     table->Dimension(0).Label(), table->Dimension(0).Root().Child(1)->Label()};
  for (OmCellText* cell : labels) {
    cell->Footnote(std::int16_t(sample));
    cell->Footnote(std::int16_t(original));
  }
  table->Cell({0, 0})->Footnote(std::int16_t(sample));
  const SvrBootstrapSpecs specs = Specs(2);
  OmBootPooler pooler(out.Name(), out.list, &specs);
  EXPECT_FALSE(table->RemovedFootnotes());
  table->Accept(pooler);
  for (OmCellText* cell : labels) {
    EXPECT_EQ(cell->Footnotes(), std::vector<std::int16_t>{std::int16_t(original)}) << cell->Text();
  }
  EXPECT_EQ(table->Cell({0, 0})->Footnotes(), std::vector<std::int16_t>{std::int16_t(sample)});
  EXPECT_TRUE(table->RemovedFootnotes());
}

}  // namespace
