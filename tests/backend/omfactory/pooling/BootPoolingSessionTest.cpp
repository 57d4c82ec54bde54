// A bootstrapped Descriptives run sent as a message stream to a factory session: the procedure's
// output shows the original sample only, its statistics with bootstrap results computed from the
// replicate cells, and the per-sample tables reduced to the original sample's.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "BootTables.h"
#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using namespace boottest;

constexpr std::uint8_t kTcid = 4;
constexpr int kSamples = 40;
constexpr std::int32_t kTwo = (5 << 16) | (8 << 8) | 2;
constexpr std::int32_t kWhole = (5 << 16) | (8 << 8);

// The mean of variable v in split k (0: the original sample).
double Mean(int v, int k) { return k == 0 ? 50.0 + v : 50.0 + v + std::sin(1.7 * k + v); }

class Procedure {
public:
  explicit Procedure(OmStreamWriter& out) : _out(out) {}
  std::int32_t Text(const std::string& text, std::int32_t literal = 0) {
    _out.String(++_id, text, literal);
    return _id;
  }
  std::int32_t Number(double value, std::int32_t format) {
    _out.Number(++_id, value, format);
    return _id;
  }
  std::int32_t Split() {
    _out.Variable(++_id, 2, kSplitVariable, "");
    return _id;
  }
  std::int32_t SplitValue(int k) {
    _out.DataValue(++_id, 2, kWhole, kSplitVariable, "", double(k));
    return _id;
  }
  void Cell(const char* statistic, double value, std::int32_t format) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTcid, v, Text(statistic));
  }

  // Descriptive Statistics: the split dimension in the layers, variables down, statistics across.
  void Descriptives() {
    const std::int32_t title = Text("Descriptive Statistics");
    _out.BeginTable(kTcid, title, Text("Descriptive Statistics", 1));
    _out.PlaceDimension(kTcid, Split(), 1, 2);
    _out.PlaceDimension(kTcid, Text("Variables"), 1, 0);
    _out.PlaceDimension(kTcid, Text("Statistics"), 1, 1);
    _out.CellDimension(kTcid, Text("Statistics"));
    for (int k = 0; k <= kSamples; ++k) {
      _out.Category(kTcid, SplitValue(k), Split());
      for (int v = 0; v < 2; ++v) {
        _out.Category(kTcid, Text(v == 0 ? "age" : "income"), Text("Variables"));
        Cell("N", 200, kWhole);
        Cell("Mean", Mean(v, k), kTwo);
      }
    }
    _out.EndTable(kTcid);
  }
  // A heading with one small table per split, each titled with its split.
  void PerSplitTables() {
    _out.BeginNode(Text("Valid Cases"));
    for (int k = 0; k <= kSamples; ++k) {
      _out.BeginTable(kTcid, SplitValue(k), Text("Case Summary", 1));
      _out.PlaceDimension(kTcid, Text("Statistics"), 1, 1);
      _out.CellDimension(kTcid, Text("Statistics"));
      Cell("Valid N", 200 - k % 3, kWhole);
      _out.EndTable(kTcid);
    }
    _out.EndNode();
  }

private:
  OmStreamWriter& _out;
  std::int32_t _id = 0;
};

class KeepAll : public OmFactory::Observer {
public:
  bool WantsOutput() override { return true; }
};

class BootPoolingSession : public ::testing::Test {
protected:
  void SetUp() override {
    OmStreamWriter out;
    out.ByteOrderProbe();
    out.BeginProcedure(21, "procedure=Descriptives\ntranslated=Descriptives\nbootstrapped=1\n");
    Procedure p(out);
    p.Descriptives();
    p.PerSplitTables();
    out.EndProcedure(Specs(kSamples));
    factory = std::make_unique<OmFactory>(&tree, std::string(), "UTF-8", requests);
    factory->Register(&keep);
    for (const OmStreamRecord& record : out.Records()) {
      factory->Message(record.code, unsigned(record.payload.size()), record.payload.data());
    }
  }
  std::vector<OmPivotTable*> Tables() {
    std::vector<OmPivotTable*> tables;
    for (OmOutputPart* part : tree) {
      if (auto* table = dynamic_cast<OmPivotTable*>(part)) tables.push_back(table);
    }
    return tables;
  }
  static int DimLabelled(const OmPivotTable& table, const std::string& text) {
    for (int d = 0; d < table.NDimensions(); ++d) {
      if (table.Dimension(d).Label()->Text() == text) return d;
    }
    return -1;
  }

  OmOutputTree tree;
  std::vector<OMSObjectSelector> requests;
  KeepAll keep;
  std::unique_ptr<OmFactory> factory;
};

TEST_F(BootPoolingSession, OnlyTheOriginalSampleRemainsWithItsBootstrapResults) {
  const std::vector<OmPivotTable*> tables = Tables();
  ASSERT_EQ(tables.size(), 2u);
  OmPivotTable& stats = *tables[0];
  EXPECT_EQ(stats.TemplateName().Text(), "Descriptive Statistics");
  const int split = OmPoolingTools::FindBootstrapDim(stats);
  ASSERT_GE(split, 0);
  EXPECT_EQ(Labels(stats.Dimension(split)), std::vector<std::string>{"0"});
  EXPECT_TRUE(stats.Dimension(split).HideLabel());

  const int statType = DimLabelled(stats, "Stat Type");
  ASSERT_GE(statType, 0);
  EXPECT_EQ(Labels(stats.Dimension(statType)),
            (std::vector<std::string>{"Statistic", "Bootstrap", "Bias", "Std. Error",
                                      "95% Confidence Interval", "Lower", "Upper"}));
  EXPECT_EQ(FootnoteTexts(stats),
            std::vector<std::string>{"Unless otherwise noted, bootstrap results are based on 40 bootstrap samples"});

  // The bias of income's mean is the replicates' mean minus the original's.
  double sum = 0.0;
  for (int k = 1; k <= kSamples; ++k) sum += Mean(1, k);
  const int variables = DimLabelled(stats, "Variables");
  const int statistics = DimLabelled(stats, "Statistics");
  OmPivotTable::Coordinates at(std::size_t(stats.NDimensions()), 0);
  at[std::size_t(variables)] = CategoryLabelled(stats, variables, "income");
  at[std::size_t(statistics)] = CategoryLabelled(stats, statistics, "Mean");
  at[std::size_t(statType)] = CategoryLabelled(stats, statType, "Bias");
  EXPECT_NEAR(NumberAt(stats, at).Value(), sum / kSamples - 51.0, 1e-9);
  at[std::size_t(statistics)] = CategoryLabelled(stats, statistics, "N");
  EXPECT_EQ(NumberAt(stats, at).Value(), 0.0);
  // Nothing is left of the samples' cells.
  for (OmPivotTable::Iterator it = stats.FirstCell(); !it.AtEnd(); ++it) EXPECT_EQ(it.Coord()[std::size_t(split)], 0);
}

TEST_F(BootPoolingSession, ThePerSampleTablesGiveWayToTheOriginalSamplesUnderTheHeadingsName) {
  const std::vector<OmPivotTable*> tables = Tables();
  ASSERT_EQ(tables.size(), 2u);
  OmPivotTable& cases = *tables[1];
  EXPECT_EQ(cases.TemplateName().Text(), "Case Summary");
  EXPECT_EQ(cases.Label()->Text(), "Valid Cases");
  EXPECT_EQ(cases.TableTitle()->Text(), "Valid Cases");
  EXPECT_EQ(NumberAt(cases, {0}).Value(), 200.0);
  for (OmOutputPart* part : tree) {
    if (part != nullptr) {
      EXPECT_NE(std::string(part->KindName()), "Heading") << part->LabelText();
    }
  }
}

}  // namespace
