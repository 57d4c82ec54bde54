// A regression run on multiply imputed data, sent as a message stream to a factory session: the
// tables that reach the output tree carry the pooled results that the pooling computation gives
// on the same inputs, and MIOUTPUT decides which imputation categories stay.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "MITableBuilder.h"
#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/stream/OmStreamWriter.h"

using mitest::NotesAt;
using mitest::ScopedMiOutput;

namespace {

constexpr std::uint8_t kTcid = 3;
constexpr int kImputations = 3;
// Protocol number formats: type F (5) in bits 16-23, width 8, decimals in bits 0-7.
constexpr std::int32_t kThreeDecimals = (5 << 16) | (8 << 8) | 3;
constexpr std::int32_t kWhole = (5 << 16) | (8 << 8);

// Per imputation 1 .. m: the coefficients of (Constant) and x, their standard errors, the mean
// of y and its N, and the correlation of y with x and its N.
const double kB[kImputations][2] = {{2.10, 0.52}, {2.35, 0.47}, {1.95, 0.58}};
const double kSE[kImputations][2] = {{0.31, 0.060}, {0.29, 0.055}, {0.33, 0.064}};
const double kMean[kImputations] = {10.2, 10.6, 10.1};
const double kN[kImputations] = {120, 120, 121};
const double kR[kImputations] = {0.41, 0.37, 0.45};

// Writes one procedure's messages; every message takes the cells it names from fresh slots.
class Procedure {
public:
  explicit Procedure(OmStreamWriter& out) : _out(out) {}

  std::int32_t Text(const std::string& text) {
    _out.String(++_id, text, 0);
    return _id;
  }
  std::int32_t Number(double value, std::int32_t format = kThreeDecimals) {
    _out.Number(++_id, value, format);
    return _id;
  }
  std::int32_t Imputation() {
    _out.Variable(++_id, 2, "Imputation_", "Imputation Number");
    return _id;
  }
  std::int32_t ImputationValue(int i) {
    _out.DataValue(++_id, 2, kWhole, "Imputation_", i == 0 ? "Original data" : "", double(i));
    return _id;
  }
  std::int32_t Variable(const std::string& name) {
    _out.Variable(++_id, 2, name, "");
    return _id;
  }

  // A table whose template is its name: the imputation dimension and then each of rows down,
  // the statistics (the cell dimension) across.
  void Table(const std::string& name, const std::vector<std::string>& rows) {
    const std::int32_t title = Text(name);
    _out.String(++_id, name, 1);
    _out.BeginTable(kTcid, title, _id);
    _out.PlaceDimension(kTcid, Imputation(), 1, 0, 0, 0);
    int position = 2;
    for (const std::string& row : rows) _out.PlaceDimension(kTcid, Text(row), position++, 0, 0, 0);
    _out.PlaceDimension(kTcid, Text("Statistics"), 1, 1, 0, 0);
    _out.CellDimension(kTcid, Text("Statistics"));
  }
  void Category(int imputation) { _out.Category(kTcid, ImputationValue(imputation), Imputation()); }
  void Category(const std::string& dimension, std::int32_t category) {
    _out.Category(kTcid, category, Text(dimension));
  }
  void Cell(const std::string& statistic, double value, std::int32_t format = kThreeDecimals) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTcid, v, Text(statistic));
  }
  void Interval(double lower, double upper) {
    const std::int32_t level = Number(95, (5 << 16) | (8 << 8) | 1);
    const std::int32_t pattern = Text("^1 Confidence Interval for B");
    _out.BeginComposite(++_id, pattern);
    const std::int32_t group = _id;
    _out.CompositeArgument(level);
    _out.BeginGroup(kTcid, group, Text("Statistics"));
    Cell("Lower Bound", lower);
    Cell("Upper Bound", upper);
    _out.EndGroup(kTcid, Text("Statistics"));
  }

private:
  OmStreamWriter& _out;
  std::int32_t _id = 0;
};

void WriteRegression(OmStreamWriter& out, const std::string& miOutput) {
  out.ByteOrderProbe();
  out.OutputSetting("MIOUTPUT", miOutput);
  out.BeginProcedure(7, "procedure=Regression\ntranslated=Regression\n");
  Procedure p(out);

  p.Table("Descriptive Statistics", {"Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    p.Category(i);
    p.Category("Variables", p.Variable("y"));
    p.Cell("Mean", i == 0 ? 9.0 : kMean[i - 1]);
    p.Cell("N", i == 0 ? 100 : kN[i - 1], kWhole);
  }
  out.EndTable(kTcid);

  p.Table("Correlations", {"Variables", "With"});
  for (int i = 0; i <= kImputations; ++i) {
    p.Category(i);
    for (const char* row : {"y", "x"}) {
      for (const char* column : {"y", "x"}) {
        p.Category("Variables", p.Variable(row));
        const double r = std::string(row) == column ? 1.0 : i == 0 ? 0.5 : kR[i - 1];
        p.Category("With", p.Variable(column));
        p.Cell("Pearson Correlation", r);
        p.Cell("N", i == 0 ? 100 : kN[i - 1], kWhole);
      }
    }
  }
  out.EndTable(kTcid);

  p.Table("Coefficients", {"Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    p.Category(i);
    for (int term = 0; term < 2; ++term) {
      p.Category("Variables", term == 0 ? p.Text("(Constant)") : p.Variable("x"));
      const double b = i == 0 ? 1.0 : kB[i - 1][term];
      const double se = i == 0 ? 0.5 : kSE[i - 1][term];
      p.Cell("B", b);
      p.Cell("Std. Error", se);
      p.Cell("t", b / se);
      p.Cell("Significance", 0.001);
      p.Interval(b - 2 * se, b + 2 * se);
    }
  }
  out.EndTable(kTcid);
  out.EndProcedure();
}

// Takes every procedure into the output tree.
class KeepAll : public OmFactory::Observer {
public:
  bool WantsOutput() override { return true; }
};

class MIPoolingSession : public ::testing::Test {
protected:
  // Runs the regression through a fresh session with that MIOUTPUT value.
  void Run(const std::string& miOutput) {
    OmStreamWriter out;
    WriteRegression(out, miOutput);
    factory = std::make_unique<OmFactory>(&tree, std::string(), "UTF-8", requests);
    factory->Register(&keep);
    for (OmStreamRecord record : out.Records()) {
      factory->Message(record.code, unsigned(record.payload.size()), record.payload.data());
    }
  }
  OmPivotTable& Table(const std::string& name) {
    for (OmOutputPart* part : tree) {
      auto* table = dynamic_cast<OmPivotTable*>(part);
      if (table && table->TemplateName().Text() == name) return *table;
    }
    std::string parts;
    for (OmOutputPart* part : tree) parts += std::string(" ") + part->KindName() + ":" + part->LabelText();
    throw std::runtime_error("no table " + name + " among" + parts);
  }
  // The category of dimension d whose label reads text, or -1.
  static int Category(const OmPivotTable& table, int d, const std::string& text) {
    for (OmDimension::ConstNode leaf : table.Dimension(d).Leaves()) {
      if (leaf->Label()->Text() == text) return leaf->LeafIndex();
    }
    return -1;
  }
  static int Dim(const OmPivotTable& table, const std::string& text) {
    for (int d = 0; d < table.NDimensions(); ++d) {
      if (table.Dimension(d).Label()->Text() == text) return d;
    }
    return -1;
  }
  // The number at the categories named by text, one per dimension in dimension order.
  static const OmNumber* At(const OmPivotTable& table, const std::vector<std::string>& labels) {
    OmPivotTable::Coordinates at;
    for (int d = 0; d < table.NDimensions(); ++d) {
      at.push_back(Category(table, d, labels.at(std::size_t(d))));
      if (at.back() < 0) return nullptr;
    }
    return dynamic_cast<const OmNumber*>(table.Cell(at));
  }
  // The labels of the imputation dimension's categories.
  static std::vector<std::string> Imputations(const OmPivotTable& table) {
    std::vector<std::string> labels;
    const int d = Dim(table, "Imputation Number");
    for (OmDimension::ConstNode leaf : table.Dimension(d).Leaves()) labels.push_back(leaf->Label()->Text());
    return labels;
  }

  ScopedMiOutput restore{true, true, true, true};
  KeepAll keep;
  OmOutputTree tree;
  std::vector<OMSObjectSelector> requests;
  std::unique_ptr<OmFactory> factory;
};

std::vector<std::vector<double>> Column(const double (*values)[2]) {
  std::vector<std::vector<double>> rows;
  for (int i = 0; i < kImputations; ++i) rows.push_back({values[i][0], values[i][1]});
  return rows;
}

}  // namespace

TEST_F(MIPoolingSession, CoefficientsAgreeWithThePoolingComputation) {
  Run("observed imputed pooled diagnostics");
  const OmPivotTable& table = Table("Coefficients");
  EXPECT_TRUE(table.IsImputed());
  EXPECT_EQ(Imputations(table), (std::vector<std::string>{"Original data", "1", "2", "3", "Pooled"}));
  const mitest::Reference ref = mitest::Pooled(Column(kB), Column(kSE));
  // Dimensions in the order placed: imputation, terms, statistics.
  const char* terms[] = {"(Constant)", "x"};
  for (std::size_t term = 0; term < 2; ++term) {
    SCOPED_TRACE(terms[term]);
    const OmNumber* b = At(table, {"Pooled", terms[term], "B"});
    const OmNumber* se = At(table, {"Pooled", terms[term], "Std. Error"});
    const OmNumber* sig = At(table, {"Pooled", terms[term], "Significance"});
    const OmNumber* lower = At(table, {"Pooled", terms[term], "Lower Bound"});
    ASSERT_TRUE(b && se && sig && lower);
    EXPECT_DOUBLE_EQ(b->Value(), ref.estimates[term]);
    EXPECT_DOUBLE_EQ(se->Value(), ref.standardErrors[term]);
    EXPECT_DOUBLE_EQ(sig->Value(), ref.significance[term]);
    EXPECT_LT(lower->Value(), b->Value());
    EXPECT_EQ(b->Format() >> 24, 3u);
  }
  // Diagnostics were asked for: the fraction of missing information has its own column.
  const OmNumber* fraction = At(table, {"Pooled", "x", "Fraction Missing Info."});
  ASSERT_NE(fraction, nullptr);
  EXPECT_DOUBLE_EQ(fraction->Value(), ref.fractionMissing[1]);
}

TEST_F(MIPoolingSession, DescriptivesAndCorrelationsArePooled) {
  Run("observed imputed pooled");
  const OmPivotTable& descriptives = Table("Descriptive Statistics");
  const OmNumber* mean = At(descriptives, {"Pooled", "y", "Mean"});
  const OmNumber* n = At(descriptives, {"Pooled", "y", "N"});
  ASSERT_TRUE(mean && n);
  EXPECT_DOUBLE_EQ(mean->Value(), (kMean[0] + kMean[1] + kMean[2]) / 3.0);
  EXPECT_NEAR(n->Value(), 361.0 / 3.0, 1e-12);
  EXPECT_EQ(n->Format() >> 24, 1u);  // whole counts with a fractional mean gain a decimal

  const OmPivotTable& correlations = Table("Correlations");
  const OmNumber* r = At(correlations, {"Pooled", "x", "y", "Pearson Correlation"});
  const OmNumber* diagonal = At(correlations, {"Pooled", "x", "x", "Pearson Correlation"});
  ASSERT_TRUE(r && diagonal);
  std::vector<std::vector<double>> z, se;
  for (int i = 0; i < kImputations; ++i) {
    z.push_back({std::atanh(kR[i])});
    se.push_back({1.0 / std::sqrt(kN[i] - 3.0)});
  }
  EXPECT_NEAR(r->Value(), std::tanh(mitest::Pooled(z, se).estimates[0]), 1e-12);
  EXPECT_EQ(diagonal->Value(), 1.0);
}

TEST_F(MIPoolingSession, MiOutputPooledOnlyKeepsThePooledCategory) {
  Run("pooled");
  for (const char* name : {"Descriptive Statistics", "Correlations", "Coefficients"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Imputations(Table(name)), std::vector<std::string>{"Pooled"});
  }
  // Without the word "diagnostics" no diagnostic column is filled.
  EXPECT_EQ(At(Table("Coefficients"), {"Pooled", "x", "Fraction Missing Info."}), nullptr);
}

TEST_F(MIPoolingSession, MiOutputWithoutAnyWordDropsTheImputedTables) {
  Run("none");
  for (OmOutputPart* part : tree) EXPECT_EQ(dynamic_cast<OmPivotTable*>(part), nullptr) << part->LabelText();
}
