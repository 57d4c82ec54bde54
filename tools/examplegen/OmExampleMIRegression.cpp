// The multiple-imputation example: a linear regression run on the original data and five imputed
// data sets. Each table carries the imputation dimension; the session adds the pooled results.
#include <cstdint>
#include <string>
#include <vector>

#include "tools/examplegen/OmExampleStreams.h"
#include "tools/examplegen/OmExampleWriter.h"

namespace {

constexpr std::uint8_t kTable = 2;
constexpr int kImputations = 5;

constexpr auto F = OmExampleF;
// The interval's level, shown as "95%".
constexpr std::int32_t kPercent = (7 << 16) | (4 << 8);

// One row of data per data set: 0 the original data, 1 .. 5 the imputations.
struct DataSet {
  double n;
  double mean[3];  // income, age, educ
  double sd[3];
  double r[3];     // income-age, income-educ, age-educ
  double b[3];     // (Constant), age, educ
  double se[3];
};

const DataSet kData[kImputations + 1] = {
    {1019, {58.37, 44.62, 13.91}, {52.49, 14.18, 2.87}, {0.214, 0.386, -0.102}, {-21.40, 0.612, 4.05}, {6.92, 0.101, 0.497}},
    {1200, {57.91, 44.55, 13.88}, {51.86, 14.21, 2.90}, {0.221, 0.379, -0.098}, {-20.15, 0.634, 3.91}, {6.31, 0.094, 0.461}},
    {1200, {58.64, 44.58, 13.93}, {52.93, 14.16, 2.88}, {0.207, 0.392, -0.105}, {-22.81, 0.598, 4.17}, {6.40, 0.095, 0.466}},
    {1200, {57.48, 44.60, 13.86}, {51.22, 14.19, 2.91}, {0.229, 0.371, -0.101}, {-18.97, 0.657, 3.82}, {6.27, 0.093, 0.458}},
    {1200, {58.95, 44.52, 13.90}, {53.40, 14.23, 2.89}, {0.212, 0.398, -0.097}, {-23.66, 0.605, 4.26}, {6.45, 0.096, 0.470}},
    {1200, {58.12, 44.57, 13.89}, {52.07, 14.18, 2.90}, {0.218, 0.384, -0.103}, {-21.02, 0.621, 4.02}, {6.35, 0.094, 0.463}},
};


// Writes the procedure's messages; each message takes the cells it names from the slots written
// just before it, so a label is written again every time it is used.
class Writer : public OmImputedDataWriter {
public:
  using OmImputedDataWriter::OmImputedDataWriter;

  // A table named by its template: the imputation dimension outermost, then the rows, the
  // statistics across.
  void Table(const std::string& name, const std::vector<std::string>& rows) {
    const std::int32_t title = Text(name);
    _out.BeginTable(kTable, title, Text(name, 1));
    _out.PlaceDimension(kTable, Imputation(), 1, 0, 0, 0);
    std::int32_t position = 2;
    for (const std::string& row : rows) _out.PlaceDimension(kTable, Text(row), position++, 0, 1, 0);
    _out.PlaceDimension(kTable, Text("Statistics"), 1, 1, 1, 0);
    _out.CellDimension(kTable, Text("Statistics"));
  }
  void DataSetCategory(int i) {
    const std::int32_t category = DataSetValue(i);
    _out.Category(kTable, category, Imputation());
  }
  void Category(std::int32_t category, const std::string& dimension) {
    _out.Category(kTable, category, Text(dimension));
  }
  void Cell(double value, std::int32_t format, const std::string& statistic) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTable, v, Text(statistic));
  }
  void IntervalGroup(double lower, double upper) {
    const std::int32_t level = Number(95, kPercent);
    const std::int32_t pattern = Text("^1 Confidence Interval for B");
    _out.BeginComposite(Next(), pattern);
    const std::int32_t group = _id;
    _out.CompositeArgument(level);
    _out.BeginGroup(kTable, group, Text("Statistics"));
    Cell(lower, F(3), "Lower Bound");
    Cell(upper, F(3), "Upper Bound");
    _out.EndGroup(kTable, Text("Statistics"));
  }
};

}  // namespace

OmStreamWriter OmExampleStreams::MIRegression(std::string_view language, std::string_view code) {
  OmStreamWriter out;
  out.ByteOrderProbe();
  out.OutputSetting("OVARS", "Labels");
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("ONUMBERS", "Labels");
  out.OutputSetting("TNUMBERS", "Labels");
  out.OutputSetting("OLANG", language);
  out.OutputSetting("MIOUTPUT", "[observed imputed pooled diagnostics]");
  out.LogLine(0, "REGRESSION /STATISTICS=COEFF CI(95) /DESCRIPTIVES=MEAN STDDEV CORR SIG N");
  out.LogLine(0, "  /DEPENDENT=income /METHOD=ENTER age educ.");
  out.FlushLog();
  out.BeginProcedure(5, "procedure=Regression\ntranslated=Regression\nlanguage=" + std::string(code) +
                            "\ncodepage=UTF-8\nlocale=en_US\n");
  Writer w(out);

  w.Table("Descriptive Statistics", {"Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    w.DataSetCategory(i);
    for (int v = 0; v < 3; ++v) {
      w.Category(w.Variable(v), "Variables");
      w.Cell(kData[i].mean[v], F(2), "Mean");
      w.Cell(kData[i].sd[v], F(2), "Std. Deviation");
      w.Cell(kData[i].n, F(0), "N");
    }
  }
  out.EndTable(kTable);

  // Correlations: the pairs (row, column) of the three variables, each with its coefficient,
  // one-tailed significance and N.
  const int pairIndex[3][3] = {{-1, 0, 1}, {0, -1, 2}, {1, 2, -1}};
  w.Table("Correlations", {"Variables", "Correlated Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    w.DataSetCategory(i);
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 3; ++column) {
        w.Category(w.Variable(row), "Variables");
        w.Category(w.Variable(column), "Correlated Variables");
        const int pair = pairIndex[row][column];
        w.Cell(pair < 0 ? 1.0 : kData[i].r[pair], F(3), "Pearson Correlation");
        if (pair >= 0) w.Cell(0.0, F(3), "Significance (1-tailed)");
        w.Cell(kData[i].n, F(0), "N");
      }
    }
  }
  out.EndTable(kTable);

  w.Table("Coefficients", {"Variables"});
  for (int i = 0; i <= kImputations; ++i) {
    w.DataSetCategory(i);
    for (int term = 0; term < 3; ++term) {
      w.Category(term == 0 ? w.Text("(Constant)") : w.Variable(term), "Variables");
      const double b = kData[i].b[term];
      const double se = kData[i].se[term];
      w.Cell(b, F(3), "B");
      w.Cell(se, F(3), "Std. Error");
      w.Cell(b / se, F(3), "t");
      w.Cell(0.0, F(3), "Significance");
      w.IntervalGroup(b - 1.962 * se, b + 1.962 * se);
    }
  }
  out.EndTable(kTable);
  out.EndProcedure();
  return out;
}
