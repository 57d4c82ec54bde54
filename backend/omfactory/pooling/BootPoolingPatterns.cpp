#include "backend/omfactory/pooling/BootPoolingPatterns.h"

#include <memory>
#include <string>

#include "backend/omfactory/pooling/OmBootPattern.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern1.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern2.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern3.h"

namespace {

// The settings a row may change from their defaults.
struct Settings {
  std::vector<std::string> required = {};
  unsigned axis = OmBootPattern::kColumns;
  bool isolate = true;
  bool significanceOnly = false;
};

// An estimate label with its second label (standard error, test statistic or zero fill marker);
// a Pattern2 row lists its statistic labels this way, without second labels.
struct Statistic {
  Statistic(const char* estimateLabel, const char* secondLabel = "")
      : estimate(estimateLabel), second(secondLabel) {}
  std::string estimate;
  std::string second;
};

// One registry row. Kind 1 puts results into groups of the statistics dimension (labelled by
// `label`), kind 2 into a "Bootstrap" group of the bootstrap dimension (`label`), kind 3 into
// tables of their own.
struct Row {
  int kind;
  const char* procedure;
  const char* templateName;
  const char* statisticsDimension;
  const char* label;
  Settings settings;
  std::vector<Statistic> statistics;
};

constexpr const char* kFor = "Bootstrap for ^1";
constexpr const char* kBoot = "Bootstrap";
constexpr const char* kNone = "";
constexpr const char* kZeroFill = OmBootPoolingPattern1::kZeroFill;
constexpr const char* kT = OmBootPoolingPattern3::kTestStatistic;
constexpr unsigned kRows = OmBootPattern::kRows;

// Every bootstrapped procedure table that gets bootstrap results, in the order they are tried.
const Row kRowsInOrder[] = {
    //       kind procedure                   table template                                statistics dimension   group label or        settings                                                                   statistics (estimate, second label)
    //                                                                                                             bootstrap dimension
    /*  1 */ {1, "Frequencies",               "Frequencies",                                "Statistics",           kFor,                   {},                                                                        {{"Percent", kZeroFill}}},
    /*  2 */ {2, "Frequencies",               "Statistics",                                 "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"Variance"}, {"Median"}, {"Skewness"}, {"Kurtosis"}, {"N"}, {"Percentiles"}}},
    /*  3 */ {2, "Descriptives",              "Descriptive Statistics",                     "Statistics",           "Stat Type",            {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"Variance"}, {"Median"}, {"Skewness"}, {"Kurtosis"}, {"N"}}},
    /*  4 */ {2, "Explore",                   "Descriptives",                               "Statistics",           "Stat Type",            {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"Interquartile Range"}, {"5% Trimmed Mean"}, {"Variance"}, {"Median"}, {"Skewness"}, {"Kurtosis"}, {"N"}}},
    /*  5 */ {2, "Explore",                   "M Estimators",                               "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Huber's M-Estimator"}, {"Tukey's Biweight"}, {"Hampel's M-Estimator"}, {"Andrews' Wave"}}},
    /*  6 */ {1, "Explore",                   "Percentiles",                                "Bootstrap Statistics", kBoot,                  {},                                                                        {{"Percentile"}}},
    /*  7 */ {2, "Correlations",              "Descriptive Statistics",                     "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /*  8 */ {2, "Means",                     "Report",                                     "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Median"}, {"Grouped Median"}, {"Std. Deviation"}, {"Variance"}, {"Skewness"}, {"Kurtosis"}, {"Harmonic Mean"}, {"Geometric Mean"}, {"N"}}},
    /*  9 */ {1, "Correlations",              "Correlations",                               "Statistics",           kBoot,                  {.isolate = false},                                                        {{"Pearson Correlation"}}},
    /* 10 */ {3, "Crosstabs",                 "Directional Measures",                       "Values",               kNone,                  {},                                                                        {{"Value"}}},
    /* 11 */ {3, "Crosstabs",                 "Symmetric Measures",                         "Values",               kNone,                  {},                                                                        {{"Value"}}},
    /* 12 */ {3, "Crosstabs",                 "Risk Estimate",                              "Values",               kNone,                  {},                                                                        {{"Value"}}},
    /* 13 */ {1, "Crosstabs",                 "Mantel-Haenszel Common Odds Ratio Estimate", "Statistics",           kFor,                   {},                                                                        {{"ln(Estimate)", "Std. Error of ln(Estimate)"}}},
    /* 14 */ {2, "T-Test",                    "One Sample Statistics",                      "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}}},
    /* 15 */ {3, "T-Test",                    "One Sample Test",                            "Statistics",           kNone,                  {},                                                                        {{"Mean Difference", kT}}},
    /* 16 */ {2, "T-Test",                    "Group Statistics",                           "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}}},
    /* 17 */ {3, "T-Test",                    "Independent Samples Test",                   "Statistics",           kNone,                  {},                                                                        {{"Mean Difference", kT}}},
    /* 18 */ {2, "T-Test",                    "Paired Samples Statistics",                  "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}}},
    /* 19 */ {1, "T-Test",                    "Paired Samples Correlations",                "Statistics",           kFor,                   {},                                                                        {{"Correlation"}}},
    /* 20 */ {3, "T-Test",                    "Paired Samples Test",                        "Statistics",           kNone,                  {},                                                                        {{"Mean", "Std. Error Mean"}}},
    /* 21 */ {1, "Non Par Corr",              "Correlations",                               "Statistics",           kBoot,                  {.isolate = false},                                                        {{"Correlation Coefficient"}}},
    /* 22 */ {2, "Partial Corr",              "Descriptive Statistics",                     "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /* 23 */ {1, "Partial Corr",              "Correlations",                               "Statistics",           kBoot,                  {.isolate = false},                                                        {{"Correlation"}}},
    /* 24 */ {2, "Oneway",                    "Descriptives",                               "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /* 25 */ {3, "Oneway",                    "Multiple Comparisons",                       "Statistics",           kNone,                  {},                                                                        {{"Mean Difference (I-J)"}}},
    /* 26 */ {1, "Oneway",                    "Contrast Tests",                             "Statistics",           kBoot,                  {.significanceOnly = true},                                                {{"Value of Contrast", "Std. Error"}}},
    /* 27 */ {2, "UNIANOVA",                  "Descriptive Statistics",                     "Statistics",           "Bootstrap Statistics", {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /* 28 */ {3, "UNIANOVA",                  "Parameter Estimates",                        "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"B", "Std. Error"}}},
    /* 29 */ {1, "UNIANOVA",                  "Contrast Results",                           "Statistics",           kBoot,                  {},                                                                        {{"Difference (Estimate - Hypothesized)", "Std. Error"}}},
    /* 30 */ {1, "UNIANOVA",                  "Estimated Marginal Means",                   "Statistics",           kFor,                   {},                                                                        {{"Mean"}}},
    /* 31 */ {3, "UNIANOVA",                  "EMMEANS Pairwise Comparisons",               "Statistics",           kNone,                  {},                                                                        {{"Mean Difference (I-J)", "Std. Error"}}},
    /* 32 */ {3, "UNIANOVA",                  "POSTHOC Multiple Comparisons",               "Statistics",           kNone,                  {},                                                                        {{"Mean Difference (I-J)"}}},
    /* 33 */ {2, "Regression",                "Descriptive Statistics",                     "Statistics",           "Bootstrap",            {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /* 34 */ {1, "Regression",                "Correlations",                               "Statistics",           kFor,                   {},                                                                        {{"Pearson Correlation"}}},
    /* 35 */ {3, "Regression",                "Coefficients",                               "Statistics",           kNone,                  {.required = {"Variables"}},                                               {{"B", "Std. Error"}}},
    /* 36 */ {3, "Regression",                "Model Summary",                              "Statistics",           kNone,                  {},                                                                        {{"Durbin-Watson"}}},
    /* 37 */ {1, "Regression",                "Coefficient Correlations",                   "Statistics",           kFor,                   {.required = {"Variables1", "Variables2"}},                                {{"Correlations"}}},
    /* 38 */ {2, "Regression",                "Residuals Statistics",                       "Statistics",           "Bootstrap",            {},                                                                        {{"Mean"}, {"Std. Deviation"}, {"N"}}},
    /* 39 */ {2, "Nominal Regression",        "Measures of Monotone Association",           "Statistics",           "Bootstrap",            {},                                                                        {{"Somer D"}, {"Gamma"}, {"Tau-a"}, {"Concordance Index C"}}},
    /* 40 */ {3, "Nominal Regression",        "Parameter Estimates",                        "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"B Estimate", "Standard Error"}}},
    /* 41 */ {1, "Nominal Regression",        "Asymptotic Covariance Matrix",               "Statistics",           kBoot,                  {.axis = kRows, .isolate = false},                                         {{"Covariance"}}},
    /* 42 */ {1, "Nominal Regression",        "Asymptotic Correlation Matrix",              "Statistics",           kBoot,                  {.required = {"Variable1", "Variable2"}, .axis = kRows, .isolate = false}, {{"Correlation"}}},
    /* 43 */ {3, "GLM",                       "Parameter Estimates",                        "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"B", "Std. Error"}}},
    /* 44 */ {3, "PLUM",                      "Parameter Estimates",                        "Statistics",           kNone,                  {.required = {"Parameters"}},                                              {{"B Estimate", "Std. Error"}}},
    /* 45 */ {3, "Logistic Regression",       "Variables in the Equation",                  "Statistics",           kNone,                  {.required = {"Variable"}},                                                {{"B", "S.E."}}},
    /* 46 */ {3, "Generalized Linear Models", "ParameterEstimates",                         "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"B", "Std. Error"}}},
    /* 47 */ {3, "Cox Regression",            "Variables in the Equation",                  "Statistics",           kNone,                  {.required = {"Variname"}},                                                {{"B", "SE"}}},
    /* 48 */ {1, "Discriminant",              "Standardized CDF Coefficients",              "Statistics",           kBoot,                  {},                                                                        {{"Coefficient"}}},
    /* 49 */ {1, "Discriminant",              "CDF Coefficients",                           "Statistics",           kBoot,                  {},                                                                        {{"Coefficient"}}},
    /* 50 */ {1, "Discriminant",              "Classification Function Coefficients",       "Statistics",           kBoot,                  {},                                                                        {{"Coefficient"}}},
    /* 51 */ {3, "Mixed",                     "Parameter Estimates",                        "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"B0", "Standard Error"}}},
    /* 52 */ {3, "Mixed",                     "Covariance Parameter Estimates",             "Statistics",           kNone,                  {.required = {"Parameter"}},                                               {{"Covpar Estimate", "Covpar Standard Error"}}},
};

std::unique_ptr<OmBootPattern> Make(const Row& row) {
  std::unique_ptr<OmBootPattern> made;
  switch (row.kind) {
    case 1: {
      auto p = std::make_unique<OmBootPoolingPattern1>(row.procedure, row.templateName);
      p->SetStatisticsDimension(row.statisticsDimension);
      p->SetGroupLabel(row.label);
      for (const Statistic& s : row.statistics) p->AddStatistic(s.estimate, s.second);
      p->SetSignificanceOnly(row.settings.significanceOnly);
      made = std::move(p);
      break;
    }
    case 2: {
      auto p = std::make_unique<OmBootPoolingPattern2>(row.procedure, row.templateName);
      p->SetStatisticsDimension(row.statisticsDimension);
      p->SetBootstrapDimension(row.label);
      for (const Statistic& s : row.statistics) p->AddStatistic(s.estimate);
      made = std::move(p);
      break;
    }
    default: {
      auto p = std::make_unique<OmBootPoolingPattern3>(row.procedure, row.templateName);
      p->SetStatisticsDimension(row.statisticsDimension);
      for (const Statistic& s : row.statistics) p->AddStatistic(s.estimate, s.second);
      made = std::move(p);
      break;
    }
  }
  for (const std::string& dimension : row.settings.required) made->AddRequiredDimension(dimension);
  made->SetStatisticsAxis(row.settings.axis);
  made->SetIsolate(row.settings.isolate);
  return made;
}

// The patterns and the list of them that callers see. The patterns are freed only at exit.
struct Registry {
  Registry() {
    for (const Row& row : kRowsInOrder) {
      owned.push_back(Make(row));
      list.push_back(owned.back().get());
    }
  }
  std::vector<std::unique_ptr<OmBootPattern>> owned;
  std::vector<const OmBootPattern*> list;
};

}  // namespace

const std::vector<const OmBootPattern*>& BootPoolingPatterns() {
  static const Registry registry;
  return registry.list;
}
