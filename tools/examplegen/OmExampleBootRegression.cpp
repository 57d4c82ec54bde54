// The bootstrapped regression example: income on age with 100 bootstrap samples and 20 jackknife
// samples (so the intervals are BCa). Each table carries the bootstrap split dimension in its
// layers, one category per sample: the descriptives get a "Bootstrap" group beside their
// statistics, the correlations a "Bootstrap for" group, the coefficients and the model summary
// tables of their own after the source.
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "tools/examplegen/OmExampleStreams.h"
#include "tools/examplegen/OmExampleWriter.h"

namespace {

constexpr std::uint8_t kTable = 5;
constexpr int kSamples = 100;
constexpr int kJackknife = 20;
constexpr const char* kSplit = "$bootstrap_split";

constexpr auto F = OmExampleF;

// A statistic of the original sample and the spread of its bootstrap replicates.
struct Statistic {
  const char* label;
  double value;
  double spread;
  int decimals;
};

class Writer : public OmExampleWriter {
public:
  using OmExampleWriter::OmExampleWriter;

  std::int32_t Split() {
    _out.Variable(Next(), 2, kSplit, "");
    return _id;
  }
  // The split dimension in the layers, `rows` down, the statistics across.
  void Table(const char* name, std::initializer_list<const char*> rows) {
    const std::int32_t title = Text(name);
    _out.BeginTable(kTable, title, Text(name, 1));
    _out.PlaceDimension(kTable, Split(), 1, 2, 1, 0);
    std::int32_t position = 1;
    for (const char* row : rows) _out.PlaceDimension(kTable, Text(row), position++, 0, 0, 0);
    _out.PlaceDimension(kTable, Text("Statistics"), 1, 1, 1, 0);
    _out.CellDimension(kTable, Text("Statistics"));
  }
  void SplitCategory(int k) {
    _out.DataValue(Next(), 2, F(0), kSplit, "", double(k));
    const std::int32_t category = _id;
    _out.Category(kTable, category, Split());
  }
  void Variable(const char* name, const char* label, const char* dimension) {
    _out.Variable(Next(), 2, name, label);
    const std::int32_t category = _id;
    _out.Category(kTable, category, Text(dimension));
  }
  // literal 1: a text that is not translated (a model number).
  void Category(const char* text, const char* dimension, std::int32_t literal = 0) {
    const std::int32_t category = Text(text, literal);
    _out.Category(kTable, category, Text(dimension));
  }
  // The statistic in split k: the original value in split 0, a bootstrap replicate scattered by
  // its spread in 1 .. kSamples, a jackknife value close to the original after them.
  void Cell(const Statistic& s, int k) {
    const double scale = k == 0 ? 0.0 : k <= kSamples ? 1.0 : 0.1;
    const std::int32_t v = Number(s.value + scale * s.spread * _draws.Normal(), F(s.decimals));
    _out.Cell(kTable, v, Text(s.label));
  }

private:
  OmExampleDraws _draws;
};

void Income(Writer& w, const char* dimension) {
  w.Variable("income", "Household income (thousands)", dimension);
}
void Age(Writer& w, const char* dimension) { w.Variable("age", "Age in years", dimension); }

}  // namespace

OmStreamWriter OmExampleStreams::BootstrapRegression() {
  OmStreamWriter out;
  out.ByteOrderProbe();
  out.OutputSetting("OVARS", "Labels");
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("OLANG", "English");
  out.LogLine(0, "BOOTSTRAP /SAMPLING METHOD=SIMPLE /CRITERIA CILEVEL=95 CITYPE=BCA NSAMPLES=100.");
  out.LogLine(0, "REGRESSION /DESCRIPTIVES MEAN STDDEV CORR N /DEPENDENT income /METHOD=ENTER age");
  out.LogLine(0, "  /RESIDUALS DURBIN.");
  out.FlushLog();
  out.BeginProcedure(8, "procedure=Regression\ntranslated=Regression\nlanguage=en\n"
                        "codepage=UTF-8\nlocale=en_US\nbootstrapped=1\n");
  Writer w(out);
  const int splits = kSamples + kJackknife;

  w.Table("Descriptive Statistics", {"Variables"});
  const Statistic income[] = {{"Mean", 58.37, 2.61, 2}, {"Std. Deviation", 52.49, 3.05, 2}, {"N", 400, 0, 0}};
  const Statistic age[] = {{"Mean", 44.62, 0.71, 2}, {"Std. Deviation", 14.18, 0.50, 2}, {"N", 400, 0, 0}};
  for (int k = 0; k <= splits; ++k) {
    w.SplitCategory(k);
    Income(w, "Variables");
    for (const Statistic& s : income) w.Cell(s, k);
    Age(w, "Variables");
    for (const Statistic& s : age) w.Cell(s, k);
  }
  out.EndTable(kTable);

  w.Table("Correlations", {"Variables", "Correlated Variables"});
  const Statistic r{"Pearson Correlation", 0.214, 0.047, 3};
  const Statistic one{"Pearson Correlation", 1.0, 0.0, 3};
  const Statistic n{"N", 400, 0, 0};
  for (int k = 0; k <= splits; ++k) {
    w.SplitCategory(k);
    for (int row = 0; row < 2; ++row) {
      for (int column = 0; column < 2; ++column) {
        if (row == 0) Income(w, "Variables"); else Age(w, "Variables");
        if (column == 0) Income(w, "Correlated Variables"); else Age(w, "Correlated Variables");
        w.Cell(row == column ? one : r, k);
        w.Cell(n, k);
      }
    }
  }
  out.EndTable(kTable);

  w.Table("Coefficients", {"Variables"});
  const Statistic constant[] = {{"B", 23.17, 4.95, 3}, {"Std. Error", 8.12, 0.61, 3}, {"t", 2.853, 0.40, 3}};
  const Statistic slope[] = {{"B", 0.789, 0.112, 3}, {"Std. Error", 0.181, 0.014, 3}, {"t", 4.359, 0.52, 3}};
  for (int k = 0; k <= splits; ++k) {
    w.SplitCategory(k);
    w.Category("(Constant)", "Variables");
    for (const Statistic& s : constant) w.Cell(s, k);
    Age(w, "Variables");
    for (const Statistic& s : slope) w.Cell(s, k);
  }
  out.EndTable(kTable);

  w.Table("Model Summary", {"Model"});
  const Statistic summary[] = {{"R", 0.214, 0.047, 3}, {"R Square", 0.046, 0.020, 3}, {"Durbin-Watson", 1.962, 0.071, 3}};
  for (int k = 0; k <= splits; ++k) {
    w.SplitCategory(k);
    w.Category("1", "Model", 1);
    for (const Statistic& s : summary) w.Cell(s, k);
  }
  out.EndTable(kTable);

  SvrBootstrapSpecs specs;
  specs.SetNSamples(kSamples);
  specs.SetCILevelPct(95.0);
  specs.SetSamplingMethod(0);
  specs.SetJackknifeList(std::vector<SvrBootstrapSpecs::JackknifeEntry>(kJackknife, {1.0, 0}));
  specs.SetJackknifeBoundaries({kJackknife});
  out.EndProcedure(specs);
  return out;
}
