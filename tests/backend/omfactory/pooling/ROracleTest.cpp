// Pooled and bootstrap results against R: streams of t tests, a regression with correlation
// columns, correlations and bootstrapped means go through a factory session, and the same numbers
// go to mice::pool.scalar and boot::boot.ci (r_oracle.R beside this file). Skipped when Rscript,
// mice or boot is missing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "PoolingTables.h"
#include "tests/backend/omfactory/SessionFixture.h"

namespace {

using namespace pooltest;
using ::testing::Contains;
using Where = std::map<std::string, std::string>;  // dimension label -> category label

constexpr std::uint8_t kTcid = 5;
constexpr std::int32_t kFour = (5 << 16) | (10 << 8) | 4;
constexpr std::int32_t kWhole = (5 << 16) | (8 << 8);

// One procedure's stream holding one table, whose first dimension is the variable `split` (the
// imputations, down, or the bootstrap samples, in the layers), then `rows` down and the
// statistics across. Each cell goes in a fresh slot: messages take the cells they name.
class Writer {
public:
  Writer(const std::string& procedure, const std::string& table, const std::string& split,
         const std::vector<std::string>& rows, bool diagnostics = false)
      : _split(split) {
    const bool bootstrap = split == kSplitVariable;
    if (diagnostics) _out.OutputSetting("MIOUTPUT", "observed imputed pooled diagnostics");
    _out.BeginProcedure(1, sessiontest::Settings(procedure, bootstrap ? "bootstrapped=1\n" : ""));
    _out.BeginTable(kTcid, Text(table), Text(table, 1));
    _out.PlaceDimension(kTcid, Split(), 1, bootstrap ? 2 : 0, 0, 0);
    int position = bootstrap ? 1 : 2;
    for (const std::string& row : rows) _out.PlaceDimension(kTcid, Text(row), position++, 0, 0, 0);
    _out.PlaceDimension(kTcid, Text("Statistics"), 1, 1, 0, 0);
    _out.CellDimension(kTcid, Text("Statistics"));
  }
  // Each of these writes a cell and returns its slot.
  std::int32_t Text(const std::string& text, std::int32_t lit = 0) { _out.String(++_id, text, lit); return _id; }
  std::int32_t Number(double value, std::int32_t format = kFour) { _out.Number(++_id, value, format); return _id; }
  std::int32_t Variable(const std::string& name) { _out.Variable(++_id, 2, name, ""); return _id; }
  void SplitCategory(int value) {
    _out.DataValue(++_id, 2, kWhole, _split, "", double(value));
    const std::int32_t category = _id;
    _out.Category(kTcid, category, Split());
  }
  void Category(const std::string& dimension, std::int32_t id) { _out.Category(kTcid, id, Text(dimension)); }
  void Cell(const std::string& statistic, double value, std::int32_t format = kFour) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTcid, v, Text(statistic));
  }
  // An interval group labelled pattern(95) holding the two bounds.
  void Interval(const std::string& pattern, const char* lowerLabel, const char* upperLabel) {
    const std::int32_t level = Number(95, (5 << 16) | (8 << 8));
    _out.BeginComposite(++_id, Text(pattern));
    const std::int32_t group = _id;
    _out.CompositeArgument(level);
    _out.BeginGroup(kTcid, group, Text("Statistics"));
    Cell(lowerLabel, -1.0);
    Cell(upperLabel, 1.0);
    _out.EndGroup(kTcid, Text("Statistics"));
  }
  void Annotate(const std::string& text) { _out.Annotate(kTcid, Text(text)); }
  OmStreamWriter& End(const SvrBootstrapSpecs* specs = nullptr) {
    _out.EndTable(kTcid);
    if (specs) _out.EndProcedure(*specs);
    else _out.EndProcedure();
    return _out;
  }

private:
  std::int32_t Split() {
    _out.Variable(++_id, 2, _split, _split == "Imputation_" ? "Imputation Number" : "");
    return _id;
  }

  OmStreamWriter _out;
  std::int32_t _id = 0;
  std::string _split;
};

// One case: the line r_oracle.R reads, and per value R prints, what the session wrote there
// (null: a value this table does not show).
struct Case {
  std::string name;
  std::string rLine;
  std::vector<std::optional<double>> ours;
  bool exactBounds = false;  // values 2 and 3 are percentile bounds: boot.ci's rule, to the last bits
  double rounding = 0.0;     // the values are shown rounded to this
};

std::string Join(const std::vector<double>& values) {
  std::ostringstream text;
  text.precision(17);
  for (double v : values) text << ' ' << v;
  return text.str();
}

// The numbers of an "mi" line: Rubin's rules on estimates q and variances u.
std::string Mi(double dfcom, const std::vector<double>& q, const std::vector<double>& u) {
  const std::string df = std::isfinite(dfcom) ? std::to_string(dfcom) : "Inf";
  return ' ' + df + ' ' + std::to_string(q.size()) + Join(q) + Join(u);
}

// The labels of the statistics that show R's first ten "mi" values (null: not shown).
std::vector<const char*> MiStatistics(const char* estimate, const char* se, const char* t, const char* df,
                                      const char* sig, const char* lower, const char* upper) {
  return {estimate, se, t, df, sig, lower, upper, "Relative Increase Variance", "Fraction Missing Info.",
          "Relative Efficiency"};
}

std::vector<double> Squares(const std::vector<double>& values) {
  std::vector<double> squares;
  for (double v : values) squares.push_back(v * v);
  return squares;
}

class ROracle : public sessiontest::SessionTest {
protected:
  // Ends the writer's procedure and feeds it to a fresh session; the table of the output with
  // that template name.
  const OmPivotTable& Run(Writer& w, const std::string& name, const SvrBootstrapSpecs* specs = nullptr) {
    Reopen();
    Feed();  // the byte order probe
    sessiontest::Deliver(*factory, w.End(specs));
    EXPECT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
    for (OmPivotTable* table : sessiontest::PartsOf<OmPivotTable>(*tree)) {
      if (table->TemplateName().Text() == name) return *table;
    }
    throw std::runtime_error("no table " + name + " in the output");
  }
  // The address of the categories labelled as given (dimension label -> category label); other
  // dimensions at their first category. Empty when a label is not found.
  static OmPivotTable::Coordinates Address(const OmPivotTable& table, const Where& labels) {
    OmPivotTable::Coordinates at(std::size_t(table.NDimensions()), 0);
    for (int d = 0; d < table.NDimensions(); ++d) {
      const auto wanted = labels.find(table.Dimension(d).Label()->Text());
      if (wanted == labels.end()) continue;
      at[std::size_t(d)] = CategoryLabelled(table, d, wanted->second);
      if (at[std::size_t(d)] < 0) return {};
    }
    return at;
  }
  // The number there; NaN when absent, which no comparison passes.
  static std::optional<double> At(const OmPivotTable& table, const Where& labels) {
    const OmPivotTable::Coordinates at = Address(table, labels);
    const auto* number = at.empty() ? nullptr : dynamic_cast<const OmNumber*>(table.Cell(at));
    return number ? number->Value() : std::nan("");
  }
  // Adds a case of R's `kind` whose values are ours at the cells `where` names with, in the
  // dimension `statistics`, each statistic in turn.
  Case& Add(const std::string& kind, const std::string& name, const std::string& numbers, const OmPivotTable& table,
            Where where, const std::vector<const char*>& statistics, const std::string& dimension = "Statistics") {
    Case& c = cases.emplace_back(Case{name, kind + ' ' + name + numbers, {}});
    for (const char* statistic : statistics) {
      if (statistic) where[dimension] = statistic;
      c.ours.push_back(statistic ? At(table, where) : std::nullopt);
    }
    return c;
  }

  // A t test table of m imputations with estimates q and variances u, each imputation's df
  // cell stating dfcom (none when dfcom is infinite); se null: the table shows no standard error.
  void TTest(const std::string& name, const char* table, const char* estimate, const char* se,
             double dfcom, const std::vector<double>& q, const std::vector<double>& u) {
    Writer w("T-Test", table, "Imputation_", {"Variables"}, true);
    for (std::size_t i = 0; i <= q.size(); ++i) {
      w.SplitCategory(int(i));
      w.Category("Variables", w.Variable("score"));
      const double estimateValue = i == 0 ? 1.0 : q[i - 1], error = i == 0 ? 0.5 : std::sqrt(u[i - 1]);
      w.Cell(estimate, estimateValue);
      if (se) w.Cell(se, error);
      w.Cell("t", estimateValue / error);
      if (std::isfinite(dfcom)) w.Cell("df", dfcom, kWhole);
      w.Cell("Sig(2-tailed)...", 0.5);
      w.Interval("^1\\% Confidence Interval of the Difference", "Lower", "Upper");
    }
    const OmPivotTable& pooled = Run(w, table);
    Add("mi", name, Mi(dfcom, q, u), pooled, {{"Imputation Number", "Pooled"}},
        MiStatistics(estimate, se, "t", "df", "Sig(2-tailed)...", "Lower", "Upper"));
    // The interval's label reads as a reader expects it, the pattern's escape gone.
    EXPECT_THAT(pooltest::Labels(pooled.Dimension(2)), Contains("95% Confidence Interval of the Difference")) << name;
  }

  std::vector<Case> cases;
  ScopedMiOutput diagnostics{true, true, true, true};
};

// Deterministic draws that are the same on every platform: the engine's sequence is fixed by
// the standard, and the transformations are written out here.
class Draws {
public:
  explicit Draws(unsigned seed) : _engine(seed) {}
  double Uniform() { return (double(_engine()) + 0.5) / 4294967296.0; }
  double Exponential() { return -std::log(Uniform()); }
  std::size_t Index(std::size_t n) { return std::size_t(_engine() % n); }

private:
  std::mt19937 _engine;
};

TEST_F(ROracle, PooledAndBootstrapResultsEqualRs) {
  // t tests with the complete-data df in every imputation: Barnard-Rubin df.
  TTest("independent_m5_df73", "Independent Samples Test", "Mean Difference", "Std. Error Diff...",
        73, {2.1, 1.6, 2.9, 1.2, 2.4}, {1.21, 1.44, 1.10, 1.32, 1.27});
  TTest("independent_m2_df40", "Independent Samples Test", "Mean Difference", "Std. Error Diff...",
        40, {0.8, 1.3}, {0.25, 0.30});
  std::vector<double> q20, u20;
  Draws draws(20);
  for (int i = 0; i < 20; ++i) {
    q20.push_back(3.0 + draws.Uniform());
    u20.push_back(0.2 + 0.1 * draws.Uniform());
  }
  TTest("independent_m20_df120", "Independent Samples Test", "Mean Difference",
        "Std. Error Diff...", 120, q20, u20);
  TTest("paired_m5_df29", "Paired Samples Test", "Mean", "Std. Error Mean", 29,
        {0.61, 0.42, 0.75, 0.58, 0.49}, {0.040, 0.052, 0.047, 0.044, 0.050});
  // A one-sample test shows no standard error: estimate / t gives it.
  TTest("one_sample_m5_df24", "One Sample Test", "Mean Difference", nullptr, 24,
        {0.92, 1.10, 0.75, 1.31, 0.88}, {0.090, 0.110, 0.085, 0.120, 0.100});
  // All imputations agree: df = dfobs and the t reference, not the normal.
  TTest("no_between_variance_df73", "Independent Samples Test", "Mean Difference",
        "Std. Error Diff...", 73, {1.9, 1.9, 1.9, 1.9, 1.9}, {1.0, 1.0, 1.0, 1.0, 1.0});

  {
    // A regression's coefficients with correlation columns: each term keeps the diagnostics of
    // its B / Std. Error pooling; no df column, so the classical df.
    const std::vector<std::vector<double>> b = {{2.10, 2.35, 1.95, 2.40}, {0.52, 0.47, 0.58, 0.44}};
    const std::vector<std::vector<double>> se = {{0.31, 0.29, 0.33, 0.30}, {0.060, 0.055, 0.064, 0.058}};
    Writer w("Regression", "Coefficients", "Imputation_", {"Variables"}, true);
    for (int i = 0; i <= 4; ++i) {
      w.SplitCategory(i);
      for (int term = 0; term < 2; ++term) {
        w.Category("Variables", term == 0 ? w.Text("(Constant)") : w.Variable("age"));
        const double estimate = i == 0 ? 1.0 : b[term][i - 1], error = i == 0 ? 0.5 : se[term][i - 1];
        w.Cell("B", estimate);
        w.Cell("Std. Error", error);
        w.Cell("t", estimate / error);
        w.Cell("Significance", 0.01);
        w.Interval("^1 Confidence Interval for B", "Lower Bound", "Upper Bound");
        for (const char* column : {"Zero-order", "Partial", "Part"}) {
          w.Cell(column, term == 0 ? OmNumber::kSysMiss : 0.3 + 0.02 * i);
        }
      }
    }
    const OmPivotTable& pooled = Run(w, "Coefficients");
    for (int term = 0; term < 2; ++term) {
      Add("mi", "coefficients_" + std::to_string(term), Mi(INFINITY, b[term], Squares(se[term])), pooled,
          {{"Imputation Number", "Pooled"}, {"Variables", term == 0 ? "(Constant)" : "age"}},
          MiStatistics("B", "Std. Error", "t", nullptr, "Significance", "Lower Bound", "Upper Bound"));
    }
  }

  {
    // A parameter redundant in every imputation (B 0, no standard error) is left out of the
    // model: the other terms pool as without it.
    const std::vector<std::vector<double>> b = {{4.10, 4.35, 3.95}, {-0.82, -0.71, -0.90}};
    const std::vector<std::vector<double>> se = {{0.41, 0.39, 0.44}, {0.160, 0.150, 0.171}};
    Writer w("GLM", "Parameter Estimates", "Imputation_", {"Parameter"}, true);
    const char* terms[] = {"Intercept", "[group=1]", "[group=2]"};
    for (int i = 0; i <= 3; ++i) {
      w.SplitCategory(i);
      for (int term = 0; term < 3; ++term) {
        w.Category("Parameter", w.Text(terms[term]));
        if (term == 2) {
          w.Cell("B", 0.0);
          w.Annotate("Redundant parameter ...");
          continue;
        }
        const double estimate = i == 0 ? 1.0 : b[term][i - 1], error = i == 0 ? 0.5 : se[term][i - 1];
        w.Cell("B", estimate);
        w.Cell("Std. Error", error);
        w.Cell("t", estimate / error);
        w.Cell("Significance", 0.01);
        w.Interval("^1% Confidence Interval", "Lower Bound", "Upper Bound");
      }
    }
    const OmPivotTable& pooled = Run(w, "Parameter Estimates");
    for (int term = 0; term < 2; ++term) {
      Add("mi", "redundant_model_" + std::to_string(term), Mi(INFINITY, b[term], Squares(se[term])), pooled,
          {{"Imputation Number", "Pooled"}, {"Parameter", terms[term]}},
          MiStatistics("B", "Std. Error", "t", nullptr, "Significance", "Lower Bound", "Upper Bound"));
    }
    auto redundant = [](const char* statistic) -> Where {
      return {{"Imputation Number", "Pooled"}, {"Parameter", "[group=2]"}, {"Statistics", statistic}};
    };
    EXPECT_EQ(*At(pooled, redundant("B")), OmNumber::kSysMiss);
    EXPECT_EQ(NotesAt(pooled, Address(pooled, redundant("B"))), std::vector<std::string>{"Redundant parameter ..."});
    EXPECT_TRUE(std::isnan(*At(pooled, redundant("Std. Error"))));
    EXPECT_TRUE(std::isnan(*At(pooled, redundant("Significance"))));
  }

  for (const bool nominal : {false, true}) {
    // Exp(B) and its interval (logistic regression); the Wald statistic with its F note and the
    // "own df, pooled df" cell (nominal regression).
    const std::vector<double> b = {0.62, 0.48, 0.71, 0.55}, se = {0.21, 0.20, 0.23, 0.22};
    const char* estimate = nominal ? "B Estimate" : "B";
    const char* error = nominal ? "Standard Error" : "S.E.";
    const char* table = nominal ? "Parameter Estimates" : "Variables in the Equation";
    const char* key = nominal ? "Parameter" : "Variable";
    Writer w(nominal ? "Nominal Regression" : "Logistic Regression", table, "Imputation_", {key});
    for (int i = 0; i <= 4; ++i) {
      w.SplitCategory(i);
      w.Category(key, w.Variable("smoker"));
      const double value = i == 0 ? 0.5 : b[std::size_t(i - 1)], s = i == 0 ? 0.2 : se[std::size_t(i - 1)];
      w.Cell(estimate, value);
      w.Cell(error, s);
      if (nominal) {
        w.Cell("Wald", (value / s) * (value / s));
        w.Cell("degrees of freedom", 1, kWhole);
        w.Cell("significance", 0.01);
      } else {
        w.Cell("Sig.", 0.01);
      }
      w.Cell("Exp(B)", std::exp(value));
      w.Interval(nominal ? "^1% Confidence Interval for Exp(B)" : "^1 C.I.for EXP(B)", "Lower", "Upper");
    }
    const OmPivotTable& pooled = Run(w, table);
    const std::string name = nominal ? "nominal_wald" : "logistic_exp_b";
    const Where where = {{"Imputation Number", "Pooled"}, {key, "smoker"}};
    Add("mi", name, Mi(INFINITY, b, Squares(se)), pooled, where,
        {estimate, error, nullptr, nullptr, nominal ? "significance" : "Sig.", nullptr, nullptr, nullptr, nullptr,
         nullptr, "Exp(B)", "Lower", "Upper", nominal ? "Wald" : nullptr});
    if (!nominal) continue;
    // "own df, pooled df": the imputations' df and the pooled test's, two decimals of R's df.
    Where at = where;
    at["Statistics"] = "degrees of freedom";
    const OmCellText* cell = pooled.Cell(Address(pooled, at));
    ASSERT_NE(cell, nullptr);
    const std::string text = cell->Text();
    ASSERT_EQ(text.rfind("1, ", 0), 0u) << text;
    cases.push_back({name + "_df", "mi " + name + "_df" + Mi(INFINITY, b, Squares(se)),
                     {std::nullopt, std::nullopt, std::nullopt, std::strtod(text.c_str() + 3, nullptr)}, false, 0.005});
    at["Statistics"] = "Wald";
    EXPECT_EQ(NotesAt(pooled, Address(pooled, at)),
              std::vector<std::string>{"Significance computed using F distribution, not Chi-square."});
  }

  for (const char* tails : {"1", "2"}) {
    // Correlations pooled on Fisher's z with variance 1/(N - 3).
    const std::vector<double> r = {0.41, 0.37, 0.45}, n = {120, 118, 121};
    const std::string significance = std::string("Significance(") + tails + "-tailed)";
    Writer w("Correlations", "Correlations", "Imputation_", {"Variables", "With"});
    for (int i = 0; i <= 3; ++i) {
      w.SplitCategory(i);
      for (const char* row : {"y", "x"}) {
        for (const char* column : {"y", "x"}) {
          const bool diagonal = std::string(row) == column;
          w.Category("Variables", w.Variable(row));
          w.Category("With", w.Variable(column));
          w.Cell("Pearson Correlation", diagonal ? 1.0 : i == 0 ? 0.5 : r[std::size_t(i - 1)]);
          if (!diagonal) w.Cell(significance, 0.001);
          w.Cell("N", i == 0 ? 100 : n[std::size_t(i - 1)], kWhole);
        }
      }
    }
    const OmPivotTable& pooled = Run(w, "Correlations");
    // R prints the pooled r, then the two-tailed and the one-tailed p.
    Add("corr", std::string("correlation_") + tails + "_tailed", " 3" + Join(r) + Join(n), pooled,
        {{"Imputation Number", "Pooled"}, {"Variables", "y"}, {"With", "x"}},
        {"Pearson Correlation", tails[0] == '2' ? significance.c_str() : nullptr,
         tails[0] == '1' ? significance.c_str() : nullptr});
  }

  // Bootstrapped means of skewed data: percentile intervals at B = 999 and 500, BCa from 40
  // jackknife samples, and replicates that all agree.
  struct Boot { const char* name; int samples; int jackknife; bool allEqual; };
  for (const Boot& c : {Boot{"percentile_b999", 999, 0, false}, Boot{"percentile_b500", 500, 0, false},
                        Boot{"bca_b999_n40", 999, 40, false}, Boot{"all_equal_b200", 200, 0, true}}) {
    Draws data(unsigned(c.samples + c.jackknife));
    std::vector<double> x(40);
    for (double& v : x) v = c.allEqual ? 2.5 : data.Exponential();
    auto mean = [](const std::vector<double>& v) { return std::accumulate(v.begin(), v.end(), 0.0) / v.size(); };
    const double t0 = mean(x);
    std::vector<double> t, jack;
    for (int k = 0; k < c.samples; ++k) {
      std::vector<double> resample;
      for (std::size_t i = 0; i < x.size(); ++i) resample.push_back(x[data.Index(x.size())]);
      t.push_back(mean(resample));
    }
    for (int j = 0; j < c.jackknife; ++j) {
      std::vector<double> rest = x;
      rest.erase(rest.begin() + j);
      jack.push_back(mean(rest));
    }
    Writer w("Descriptives", "Descriptive Statistics", kSplitVariable, {"Variables"});
    for (int k = 0; k <= c.samples + c.jackknife; ++k) {
      w.SplitCategory(k);
      w.Category("Variables", w.Text("income"));
      w.Cell("N", 40, kWhole);
      w.Cell("Mean", k == 0 ? t0 : k <= c.samples ? t[std::size_t(k - 1)] : jack[std::size_t(k - 1 - c.samples)]);
    }
    SvrBootstrapSpecs specs = Specs(unsigned(c.samples));
    if (c.jackknife > 0) {
      specs.SetJackknifeList(std::vector<SvrBootstrapSpecs::JackknifeEntry>(std::size_t(c.jackknife), {1.0, 0}));
      specs.SetJackknifeBoundaries({std::uint32_t(c.jackknife)});
    }
    Add("boot", c.name, Join({t0, double(c.samples)}) + Join(t) + Join({double(c.jackknife)}) + Join(jack),
        Run(w, "Descriptive Statistics", &specs), {{"Statistics", "Mean"}},
        {"Bias", "Std. Error", "Lower", "Upper"}, "Stat Type")
        .exactBounds = c.jackknife == 0;
  }

  // One R run for every case.
  if (std::system("command -v Rscript > /dev/null 2>&1") != 0) GTEST_SKIP() << "Rscript is not installed";
  const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("omf_r_oracle_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  {
    std::ofstream input(dir / "cases.txt");
    for (const Case& c : cases) input << c.rLine << '\n';
  }
  const std::string command = "Rscript '" OMF_R_ORACLE_SCRIPT "' '" + (dir / "cases.txt").string() +
                              "' > '" + (dir / "r.txt").string() + "' 2>&1";
  const int status = std::system(command.c_str());
  std::ifstream rOutput(dir / "r.txt");
  std::map<std::string, std::vector<double>> r;
  std::string rText, line;
  while (std::getline(rOutput, line)) {
    rText += line + '\n';
    std::istringstream fields(line);
    std::string name;
    fields >> name;
    for (std::string v; fields >> v;) r[name].push_back(std::strtod(v.c_str(), nullptr));
  }
  std::filesystem::remove_all(dir);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 3) GTEST_SKIP() << rText;
  ASSERT_EQ(status, 0) << rText;

  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::vector<double>& expected = r[c.name];
    // Values past the end of ours are not shown by that table.
    ASSERT_GE(expected.size(), c.ours.size()) << rText;
    ASSERT_FALSE(c.ours.empty());
    for (std::size_t i = 0; i < c.ours.size(); ++i) {
      if (!c.ours[i]) continue;
      SCOPED_TRACE("value " + std::to_string(i));
      if (c.exactBounds && i >= 2) {
        EXPECT_DOUBLE_EQ(*c.ours[i], expected[i]);
      } else {
        EXPECT_NEAR(*c.ours[i], expected[i], c.rounding > 0 ? c.rounding : 1e-9 * std::max(1.0, std::fabs(expected[i])));
      }
    }
  }
}

}  // namespace
