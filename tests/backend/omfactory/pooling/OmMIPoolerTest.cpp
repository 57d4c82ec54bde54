#include "backend/omfactory/pooling/OmMIPooler.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "MITableBuilder.h"
#include "backend/omfactory/pooling/MIPoolingPatterns.h"
#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmTextBlock.h"

using mitest::NotesOf;
using mitest::NumberAt;
using mitest::ScopedMiOutput;
using mitest::TableBuilder;

namespace {

enum Kind { kCell, kCell0, kCell2, kColumn, kCorrelation };

struct Row {
  Kind kind;
  const char* procedure;
  const char* table;
};

// Every table that imputation pooling knows, in the order the pooler tries them.
const Row kRows[] = {
    {kColumn,      "Regression",               "Coefficients"},
    {kColumn,      "Regression",               "Coefficients"},
    {kColumn,      "Regression",               "Coefficients"},
    {kColumn,      "Regression",               "Coefficients"},
    {kCell,        "Regression",               "Descriptive Statistics"},
    {kCell,        "Frequencies",              "Statistics"},
    {kCell,        "Frequencies",              "Frequencies"},
    {kCell,        "Crosstabs",                "Crosstabulation"},
    {kCell,        "Means",                    "Report"},
    {kCell,        "Oneway",                   "Contrast Tests"},
    {kCell,        "Oneway",                   "Descriptives"},
    {kCell,        "UNIANOVA",                 "Descriptive Statistics"},
    {kColumn,      "UNIANOVA",                 "Parameter Estimates"},
    {kColumn,      "UNIANOVA",                 "Parameter Estimates with Robust Standard Errors"},
    {kCell,        "UNIANOVA",                 "Between Subjects Factors"},
    {kCell,        "UNIANOVA",                 "Descriptive Statistics"},
    {kCell,        "UNIANOVA",                 "Contrast Results"},
    {kCell,        "UNIANOVA",                 "Estimated Marginal Means"},
    {kCell,        "UNIANOVA",                 "EMMEANS Pairwise Comparisons"},
    {kCell,        "GLM",                      "Descriptive Statistics"},
    {kColumn,      "GLM",                      "Parameter Estimates"},
    {kColumn,      "GLM",                      "Parameter Estimates with Robust Standard Errors"},
    {kCell,        "GLM",                      "Between Subjects Factors"},
    {kCell,        "GLM",                      "Descriptive Statistics"},
    {kCell,        "GLM",                      "Contrast Results"},
    {kCell,        "GLM",                      "Estimated Marginal Means"},
    {kCell,        "GLM",                      "EMMEANS Pairwise Comparisons"},
    {kCell,        "Descriptives",             "Descriptive Statistics"},
    {kCell2,       "Descriptives",             "Descriptive Statistics"},
    {kCell,        "T-Test",                   "One Sample Statistics"},
    {kCell,        "T-Test",                   "One Sample Test"},
    {kCell,        "T-Test",                   "Group Statistics"},
    {kCell,        "T-Test",                   "Independent Samples Test"},
    {kCell,        "T-Test",                   "Paired Samples Statistics"},
    {kCorrelation, "T-Test",                   "Paired Samples Correlations"},
    {kCell,        "T-Test",                   "Paired Samples Test"},
    {kCell,        "Correlations",             "Descriptive Statistics"},
    {kCorrelation, "Non Par Corr",             "Correlations"},
    {kCell,        "Partial Corr",             "Descriptive Statistics"},
    {kCorrelation, "Partial Corr",             "Correlations"},
    {kCell,        "NPar Tests",               "Descriptive Statistics"},
    {kCell,        "NPar Tests",               "Chi Square Frequencies"},
    {kCell,        "NPar Tests",               "Binomial Test"},
    {kCell,        "NPar Tests",               "Mann Whitney Ranks"},
    {kCell,        "NPar Tests",               "Mann Whitney Test Statistics"},
    {kCell,        "NPar Tests",               "Two Sample Kolmogorov Smirnov Frequencies"},
    {kCell,        "NPar Tests",               "Moses Frequencies"},
    {kCell,        "NPar Tests",               "Wald Wolfowitz Frequencies"},
    {kCell,        "NPar Tests",               "Kruskal Wallis Ranks"},
    {kCell,        "NPar Tests",               "Median Frequencies"},
    {kCell,        "NPar Tests",               "Wilcoxon Ranks"},
    {kCell,        "NPar Tests",               "Sign Frequencies"},
    {kCell,        "NPar Tests",               "Friedman Ranks"},
    {kCell,        "NPar Tests",               "Kendall Ranks"},
    {kCell,        "Generalized Linear Models","CategoricalVariableInformation"},
    {kCell,        "Generalized Linear Models","ContinuousVariableInformation"},
    {kColumn,      "Generalized Linear Models","ParameterEstimates"},
    {kCell,        "Generalized Linear Models","Estimates"},
    {kCell,        "Generalized Linear Models","PairwiseComparisons"},
    {kCorrelation, "Regression",               "Correlations"},
    {kCorrelation, "Regression",               "Coefficient Correlations"},
    {kCell,        "Regression",               "Residuals Statistics"},
    {kColumn,      "Nominal Regression",       "Parameter Estimates"},
    {kCorrelation, "Correlations",             "Correlations"},
    {kColumn,      "Logistic Regression",      "Variables in the Equation"},
    {kCell,        "Discriminant",             "Group Statistics"},
    {kCorrelation, "Discriminant",             "Pooled Within Groups Matrices"},
    {kCell0,       "Discriminant",             "CDF Coefficients"},
    {kCell0,       "Discriminant",             "Functions at Group Centroids"},
    {kCell0,       "Discriminant",             "Classification Function Coefficients"},
    {kColumn,      "PLUM",                     "Parameter Estimates"},
    {kCell,        "Mixed",                    "Descriptive Statistics"},
    {kColumn,      "Mixed",                    "Parameter Estimates"},
    {kColumn,      "Mixed",                    "Covariance Parameter Estimates"},
    {kCell,        "Mixed",                    "Estimated Marginal Means"},
    {kColumn,      "Cox Regression",           "Variables in the Equation"},
    {kCell,        "Cox Regression",           "Covariate Means"},
    {kCell2,       "Kaplan-Meier",             "Means and Medians for Survival Time"},
};

// A "Means" report of one group with a mean and an N over imputations 0 .. m.
struct Report {
  TableBuilder t{"Report", "Report"};
  int imp;
  explicit Report(int m) {
    t.Dim("Group", {"a"});
    t.Dim("Statistics", {"Mean", "Std. Error of Mean", "N"});
    imp = t.Imputations(m);
    for (int i = 0; i <= m; ++i) {
      t.Number({0, 0, i}, 2.0 + i);
      t.Number({0, 1, i}, 0.5);
      t.Number({0, 2, i}, 10.0, mitest::kNoDecimals);
    }
  }
  // The labels of the imputation categories, in order.
  std::vector<std::string> Imputations() {
    std::vector<std::string> labels;
    for (const auto& child : t->Dimension(imp).Root().Children()) labels.push_back(child->Label()->Text());
    return labels;
  }
};

const OmStringCell kMeans("Means", true);

}  // namespace

// --- The registry

// --- Choosing the patterns

TEST(MIPoolerPatterns, KeepsThePatternsOfItsProcedureInRegistryOrder) {
  const OmStringCell regression("Regression", true);
  OmMIPooler pooler(&regression, nullptr, true, true, true, true);
  std::vector<const OmMIPattern*> expected;
  for (const OmMIPattern* pattern : MIPoolingPatterns()) {
    if (pattern->ProcedureName().Text() == "Regression") expected.push_back(pattern);
  }
  ASSERT_EQ(pooler.NPatterns(), expected.size());
  EXPECT_EQ(pooler.NPatterns(), 8u);
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(pooler.Pattern(i), expected[i]);
  EXPECT_THROW(pooler.Pattern(expected.size()), OMSException);
}

// --- Pooling and pruning a table

TEST(MIPooler, NoFlagsDiscardImputedTablesButKeepOtherTablesAndParts) {
  Report imputed(2);
  OmMIPooler pooler(&kMeans, nullptr, false, false, false, false);
  pooler.Visit(*imputed.t);
  EXPECT_TRUE(pooler.Discard());

  TableBuilder plain("Report");
  plain.Dim("Statistics", {"Mean"});
  plain.Number({0}, 1.0);
  pooler.Visit(*plain);
  EXPECT_FALSE(pooler.Discard());
  EXPECT_FALSE(plain->IsImputed());
  EXPECT_EQ(plain->NCells(), 1u);

  Report again(1);
  pooler.Visit(*again.t);
  ASSERT_TRUE(pooler.Discard());
  OmTextBlock text(OmStringCell("Notes"), "UTF-8");
  pooler.Visit(text);
  EXPECT_FALSE(pooler.Discard());  // other output parts never go
}

TEST(MIPooler, PoolingPastTheCellLimitMarksTheTitleAndUnscratches) {
  ScopedMiOutput output(true, true, true, false);
  Report r(2);
  r.t->MaxCells(r.t->NCells() + 1);  // room for one pooled cell only
  OmMIPooler pooler(&kMeans, nullptr, true, true, true, false);
  pooler.Visit(*r.t);
  EXPECT_FALSE(r.t->IsScratched());
  EXPECT_EQ(r.t->TableTitle()->TextColor(), "#FF0000");
  const std::vector<std::string> notes = NotesOf(*r.t, r.t->TableTitle());
  ASSERT_EQ(notes.size(), 1u);
  EXPECT_NE(notes[0].find(std::to_string(r.t->MaxCells())), std::string::npos) << notes[0];
  EXPECT_EQ(r.t->NCells(), r.t->MaxCells());
}
