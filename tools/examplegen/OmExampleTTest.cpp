// The t test example: an independent-samples t test of income by gender on the original data and
// five imputations. The group statistics pool their means with standard errors and average the
// counts; the test pools the mean difference with the complete-data df each imputation states.
#include <cmath>
#include <cstdint>
#include <string>

#include "tools/examplegen/OmExampleStreams.h"
#include "tools/examplegen/OmExampleWriter.h"

namespace {

constexpr std::uint8_t kTable = 4;
constexpr int kImputations = 5;

constexpr auto F = OmExampleF;

// One row per data set: 0 the original data (listwise: fewer cases), 1 .. 5 the imputations.
struct DataSet {
  double n[2];     // male, female
  double mean[2];
  double sd[2];
};

const DataSet kData[kImputations + 1] = {
    {{498, 521}, {61.84, 55.05}, {54.12, 50.66}},
    {{588, 612}, {61.12, 54.83}, {53.70, 49.92}},
    {{588, 612}, {62.05, 55.41}, {54.81, 50.87}},
    {{588, 612}, {60.71, 54.37}, {53.02, 49.55}},
    {{588, 612}, {62.46, 55.62}, {55.20, 51.34}},
    {{588, 612}, {61.38, 54.98}, {53.96, 50.21}},
};

const char* const kGroups[2] = {"Male", "Female"};

class Writer : public OmExampleWriter {
public:
  using OmExampleWriter::OmExampleWriter;

  std::int32_t Imputation() {
    _out.Variable(Next(), 2, "Imputation_", "Imputation Number");
    return _id;
  }
  // Imputation outermost, then `rows` down, the statistics across.
  void Table(const char* name, std::initializer_list<const char*> rows) {
    const std::int32_t title = Text(name);
    _out.BeginTable(kTable, title, Text(name, 1));
    _out.PlaceDimension(kTable, Imputation(), 1, 0, 0, 0);
    std::int32_t position = 2;
    for (const char* row : rows) _out.PlaceDimension(kTable, Text(row), position++, 0, 1, 0);
    _out.PlaceDimension(kTable, Text("Statistics"), 1, 1, 1, 0);
    _out.CellDimension(kTable, Text("Statistics"));
  }
  void DataSetCategory(int i) {
    _out.DataValue(Next(), 2, F(0), "Imputation_", i == 0 ? "Original data" : "", double(i));
    const std::int32_t category = _id;
    _out.Category(kTable, category, Imputation());
  }
  void Income() {
    _out.Variable(Next(), 2, "income", "Household income (thousands)");
    const std::int32_t category = _id;
    _out.Category(kTable, category, Text("Variables"));
  }
  void Group(int g) {
    _out.DataValue(Next(), 2, F(0), "gender", kGroups[g], double(g + 1));
    const std::int32_t category = _id;
    _out.Category(kTable, category, Text("Gender"));
  }
  void Cell(double value, std::int32_t format, const char* statistic) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTable, v, Text(statistic));
  }
};

}  // namespace

OmStreamWriter OmExampleStreams::MITTest() {
  OmStreamWriter out;
  out.ByteOrderProbe();
  out.OutputSetting("OVARS", "Labels");
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("OLANG", "English");
  out.OutputSetting("MIOUTPUT", "[observed imputed pooled diagnostics]");
  out.LogLine(0, "T-TEST GROUPS=gender(1 2) /VARIABLES=income /CRITERIA=CI(.95).");
  out.FlushLog();
  out.BeginProcedure(7, "procedure=T-Test\ntranslated=T-Test\nlanguage=en\ncodepage=UTF-8\n"
                        "locale=en_US\n");
  Writer w(out);

  w.Table("Group Statistics", {"Variables", "Gender"});
  for (int i = 0; i <= kImputations; ++i) {
    w.DataSetCategory(i);
    for (int g = 0; g < 2; ++g) {
      w.Income();
      w.Group(g);
      const DataSet& d = kData[i];
      w.Cell(d.n[g], F(0), "N");
      w.Cell(d.mean[g], F(2), "Mean");
      w.Cell(d.sd[g], F(2), "Std. Deviation");
      w.Cell(d.sd[g] / std::sqrt(d.n[g]), F(3), "Std. Error Mean");
    }
  }
  out.EndTable(kTable);

  // Equal variances assumed: the pooled-variance t test, df n1 + n2 - 2.
  w.Table("Independent Samples Test", {"Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    w.DataSetCategory(i);
    w.Income();
    const DataSet& d = kData[i];
    const double df = d.n[0] + d.n[1] - 2.0;
    const double pooled = ((d.n[0] - 1) * d.sd[0] * d.sd[0] + (d.n[1] - 1) * d.sd[1] * d.sd[1]) / df;
    const double difference = d.mean[0] - d.mean[1];
    const double se = std::sqrt(pooled * (1.0 / d.n[0] + 1.0 / d.n[1]));
    w.Cell(difference, F(2), "Mean Difference");
    w.Cell(se, F(3), "Std. Error Diff...");
    w.Cell(difference / se, F(3), "t");
    w.Cell(df, F(0), "df");
    w.Cell(std::erfc(std::fabs(difference / se) / std::sqrt(2.0)), F(3), "Sig(2-tailed)...");
    const std::int32_t level = w.Number(95, F(0));
    const std::int32_t pattern = w.Text("^1\\% Confidence Interval of the Difference");
    const std::int32_t group = w.Composite(pattern, level);
    out.BeginGroup(kTable, group, w.Text("Statistics"));
    w.Cell(difference - 1.962 * se, F(2), "Lower");
    w.Cell(difference + 1.962 * se, F(2), "Upper");
    out.EndGroup(kTable, w.Text("Statistics"));
  }
  out.EndTable(kTable);
  out.EndProcedure();
  return out;
}
