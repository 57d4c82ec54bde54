#include "backend/omfactory/pooling/MIPoolingPatterns.h"

#include <memory>
#include <string>

#include "backend/omfactory/pooling/OmMICellPoolingPattern.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern0.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern2.h"
#include "backend/omfactory/pooling/OmMIColumnPoolingPattern.h"
#include "backend/omfactory/pooling/OmMICorrMatrixPoolingPattern.h"
#include "backend/omfactory/pooling/OmMIPattern.h"

namespace {

// Builds the list: one call per row, making the row's pattern and appending it.
class Registry {
public:
  Registry() { AddRows(); }

  std::vector<const OmMIPattern*> list;

private:
  template <class Pattern, class Labels>
  void Add(const char* procedure, const char* table, const Labels& labels) {
    auto pattern = std::make_unique<Pattern>(procedure, table);
    pattern->SetLabels(labels);
    Append(std::move(pattern));
  }
  void Append(std::unique_ptr<OmMIPattern> pattern) {
    list.push_back(pattern.get());
    _owned.push_back(std::move(pattern));
  }

  void Cell(const char* procedure, const char* table, const OmMICellPoolingPattern::Labels& labels) {
    Add<OmMICellPoolingPattern>(procedure, table, labels);
  }
  void Cell0(const char* procedure, const char* table) {
    Append(std::make_unique<OmMICellPoolingPattern0>(procedure, table));
  }
  void Cell2(const char* procedure, const char* table, const OmMICellPoolingPattern2::Labels& labels) {
    Add<OmMICellPoolingPattern2>(procedure, table, labels);
  }
  void Column(const char* procedure, const char* table, const OmMIColumnPoolingPattern::Labels& labels) {
    Add<OmMIColumnPoolingPattern>(procedure, table, labels);
  }
  void Correlation(const char* procedure, const char* table,
                   const OmMICorrMatrixPoolingPattern::Labels& labels) {
    Add<OmMICorrMatrixPoolingPattern>(procedure, table, labels);
  }

  void AddRows();

  std::vector<std::unique_ptr<OmMIPattern>> _owned;
};

// Every table that pooling knows, in the order the pooler tries them: kind, procedure, table
// template, labels. Several rows may pool one table (rows 1 to 4 pool the estimates and then each
// correlation column of the same coefficients table); the two "Descriptives" rows split one table
// by whether it has a "Stat Type" dimension.
void Registry::AddRows() {
  // clang-format off
  Column(      "Regression",                "Coefficients",                                    {.statistics = "Statistics", .key = "Variables", .estimate = "B", .standardError = "Std. Error", .test = "t", .significance = "Significance", .interval = "^1 Confidence Interval for B"});
  Column(      "Regression",                "Coefficients",                                    {.statistics = "Statistics", .key = "Variables", .correlation = "Zero-order"});
  Column(      "Regression",                "Coefficients",                                    {.statistics = "Statistics", .key = "Variables", .correlation = "Partial"});
  Column(      "Regression",                "Coefficients",                                    {.statistics = "Statistics", .key = "Variables", .correlation = "Part"});
  Cell(        "Regression",                "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"Mean", "N"}});
  Cell(        "Frequencies",               "Statistics",                                      {.statistics = "Statistics", .pair = {"Mean", "Std. Error of Mean"}, .averaged = {"N#Valid", "N#Missing"}});
  Cell(        "Frequencies",               "Frequencies",                                     {.statistics = "Statistics", .averaged = {"Frequency"}});
  Cell(        "Crosstabs",                 "Crosstabulation",                                 {.statistics = "Statistics", .averaged = {"Count"}});
  Cell(        "Means",                     "Report",                                          {.statistics = "Statistics", .pair = {"Mean", "Std. Error of Mean"}, .averaged = {"N"}});
  Cell(        "Oneway",                    "Contrast Tests",                                  {.statistics = "Statistics", .full = {.estimate = "Value of Contrast", .standardError = "Std. Error", .test = "t", .df = "df", .significance = "Significance (2-tailed)"}});
  Cell(        "Oneway",                    "Descriptives",                                    {.statistics = "Statistics", .pair = {"Mean", "Std. Error"}, .averaged = {"N"}});
  Cell(        "UNIANOVA",                  "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"N", "Mean"}});
  Column(      "UNIANOVA",                  "Parameter Estimates",                             {.statistics = "Statistics", .key = "Parameter", .estimate = "B", .standardError = "Std. Error", .test = "t", .significance = "Significance", .interval = "^1% Confidence Interval", .redundancy = "Redundant parameter ..."});
  Column(      "UNIANOVA",                  "Parameter Estimates with Robust Standard Errors", {.statistics = "Statistics", .key = "Parameter", .estimate = "B", .standardError = "Robust Std. Error", .test = "t", .significance = "Significance", .interval = "^1% Confidence Interval", .redundancy = "Redundant parameter ..."});
  Cell(        "UNIANOVA",                  "Between Subjects Factors",                        {.statistics = "Properties", .averaged = {"N"}});
  Cell(        "UNIANOVA",                  "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"N", "Mean"}});
  Cell(        "UNIANOVA",                  "Contrast Results",                                {.statistics = "Statistics", .pair = {"Difference (Estimate - Hypothesized)", "Std. Error"}, .averaged = {"Contrast Estimate", "Hypothesized Value"}});
  Cell(        "UNIANOVA",                  "Estimated Marginal Means",                        {.statistics = "Statistics", .full = {.estimate = "Mean", .standardError = "Std. Error", .interval = "^1% Confidence Interval"}});
  Cell(        "UNIANOVA",                  "EMMEANS Pairwise Comparisons",                    {.statistics = "Statistics", .pair = {"Mean Difference (I-J)", "Std. Error"}});
  Cell(        "GLM",                       "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"N", "Mean"}});
  Column(      "GLM",                       "Parameter Estimates",                             {.statistics = "Statistics", .key = "Parameter", .estimate = "B", .standardError = "Std. Error", .test = "t", .significance = "Significance", .interval = "^1% Confidence Interval", .redundancy = "Redundant parameter ..."});
  Column(      "GLM",                       "Parameter Estimates with Robust Standard Errors", {.statistics = "Statistics", .key = "Parameter", .estimate = "B", .standardError = "Robust Std. Error", .test = "t", .significance = "Significance", .interval = "^1% Confidence Interval", .redundancy = "Redundant parameter ..."});
  Cell(        "GLM",                       "Between Subjects Factors",                        {.statistics = "Properties", .averaged = {"N"}});
  Cell(        "GLM",                       "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"N", "Mean"}});
  Cell(        "GLM",                       "Contrast Results",                                {.statistics = "Statistics", .pair = {"Difference (Estimate - Hypothesized)", "Std. Error"}, .averaged = {"Contrast Estimate", "Hypothesized Value"}});
  Cell(        "GLM",                       "Estimated Marginal Means",                        {.statistics = "Statistics", .full = {.estimate = "Mean", .standardError = "Std. Error", .interval = "^1% Confidence Interval"}});
  Cell(        "GLM",                       "EMMEANS Pairwise Comparisons",                    {.statistics = "Statistics", .pair = {"Mean Difference (I-J)", "Std. Error"}});
  Cell(        "Descriptives",              "Descriptive Statistics",                          {.statistics = "Statistics", .excluded = "Stat Type", .pair = {"Mean", "Std. Error"}, .averaged = {"N"}});
  Cell2(       "Descriptives",              "Descriptive Statistics",                          {.dimensionA = "Statistics", .dimensionB = "Stat Type", .estimate = {"Mean", "Statistic"}, .standardError = {"Mean", "Std. Error"}, .averaged = {{"N", "Statistic"}}});
  Cell(        "T-Test",                    "One Sample Statistics",                           {.statistics = "Statistics", .pair = {"Mean", "Std. Error Mean"}, .averaged = {"N"}});
  Cell(        "T-Test",                    "One Sample Test",                                 {.statistics = "Statistics", .full = {.estimate = "Mean Difference", .test = "t", .df = "df", .significance = "Sig(2-tailed)...", .interval = "^1\\% Confidence Interval of the Difference"}});
  Cell(        "T-Test",                    "Group Statistics",                                {.statistics = "Statistics", .pair = {"Mean", "Std. Error Mean"}, .averaged = {"N"}});
  Cell(        "T-Test",                    "Independent Samples Test",                        {.statistics = "Statistics", .full = {.estimate = "Mean Difference", .standardError = "Std. Error Diff...", .test = "t", .df = "df", .significance = "Sig(2-tailed)...", .interval = "^1\\% Confidence Interval of the Difference"}});
  Cell(        "T-Test",                    "Paired Samples Statistics",                       {.statistics = "Statistics", .pair = {"Mean", "Std. Error Mean"}, .averaged = {"N"}});
  Correlation( "T-Test",                    "Paired Samples Correlations",                     {.statistics = "Statistics", .correlation = "Correlation", .n = "N"});
  Cell(        "T-Test",                    "Paired Samples Test",                             {.statistics = "Statistics", .full = {.estimate = "Mean", .standardError = "Std. Error Mean", .test = "t", .df = "df", .significance = "Sig(2-tailed)...", .interval = "^1\\% Confidence Interval of the Difference"}});
  Cell(        "Correlations",              "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"Mean", "N"}});
  Correlation( "Non Par Corr",              "Correlations",                                    {.statistics = "Statistics", .correlation = "Correlation Coefficient", .n = "N", .note05OneTailed = "Corr. is significant at .05 level 1-tail...", .note01OneTailed = "Corr. is significant at .01 level 1-tail...", .note05TwoTailed = "Corr. is significant at .05 level 2-tail...", .note01TwoTailed = "Corr. is significant at .01 level 2-tail...", .significanceOneTailed = "Significance (1-tailed)", .significanceTwoTailed = "Significance (2-tailed)"});
  Cell(        "Partial Corr",              "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"Mean", "N"}});
  Correlation( "Partial Corr",              "Correlations",                                    {.statistics = "Statistics", .correlation = "Correlation", .n = "N"});
  Cell(        "NPar Tests",                "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"Mean", "N"}});
  Cell(        "NPar Tests",                "Chi Square Frequencies",                          {.statistics = "Statistics", .averaged = {"Observed N"}});
  Cell(        "NPar Tests",                "Binomial Test",                                   {.statistics = "Statistics", .averaged = {"N", "Observed Proportion", "Test Proportion"}});
  Cell(        "NPar Tests",                "Mann Whitney Ranks",                              {.statistics = "Statistics", .averaged = {"N", "Mean Rank"}});
  Cell(        "NPar Tests",                "Mann Whitney Test Statistics",                    {.statistics = "Statistics", .averaged = {"N", "Observed Proportion", "Test Proportion"}});
  Cell(        "NPar Tests",                "Two Sample Kolmogorov Smirnov Frequencies",       {.statistics = "Statistics", .averaged = {"N"}});
  Cell(        "NPar Tests",                "Moses Frequencies",                               {.statistics = "Statistics", .averaged = {"N"}});
  Cell(        "NPar Tests",                "Wald Wolfowitz Frequencies",                      {.statistics = "Statistics", .averaged = {"N"}});
  Cell(        "NPar Tests",                "Kruskal Wallis Ranks",                            {.statistics = "Statistics", .averaged = {"N", "Mean Rank"}});
  Cell(        "NPar Tests",                "Median Frequencies",                              {.statistics = "Statistics", .averaged = {"> Median", "<= Median"}});
  Cell(        "NPar Tests",                "Wilcoxon Ranks",                                  {.statistics = "Statistics", .averaged = {"N", "Mean Rank"}});
  Cell(        "NPar Tests",                "Sign Frequencies",                                {.statistics = "Statistics", .averaged = {"N"}});
  Cell(        "NPar Tests",                "Friedman Ranks",                                  {.statistics = "Statistics", .averaged = {"Mean Rank"}});
  Cell(        "NPar Tests",                "Kendall Ranks",                                   {.statistics = "Statistics", .averaged = {"Mean Rank"}});
  Cell(        "Generalized Linear Models", "CategoricalVariableInformation",                  {.statistics = "Statistics", .averaged = {"N", "Percent"}});
  Cell(        "Generalized Linear Models", "ContinuousVariableInformation",                   {.statistics = "Statistics", .averaged = {"N", "Mean"}});
  Column(      "Generalized Linear Models", "ParameterEstimates",                              {.statistics = "Statistics", .key = "Parameter", .estimate = "B", .standardError = "Std. Error", .significance = "Hypothesis Test#Sig.", .interval = "^1 Wald Confidence Interval", .redundancy = "Parameter is redundant"});
  Cell(        "Generalized Linear Models", "Estimates",                                       {.statistics = "Statistics", .full = {.estimate = "Mean", .standardError = "Std. Error", .interval = "^1 Wald Confidence Interval"}});
  Cell(        "Generalized Linear Models", "PairwiseComparisons",                             {.statistics = "Statistics", .pair = {"Mean Difference (I-J)", "Std. Error"}});
  Correlation( "Regression",                "Correlations",                                    {.statistics = "Statistics", .correlation = "Pearson Correlation", .n = "N", .significanceOneTailed = "Significance (1-tailed)", .significanceTwoTailed = "Significance (2-tailed)"});
  Correlation( "Regression",                "Coefficient Correlations",                        {.statistics = "Statistics", .correlation = "Correlations"});
  Cell(        "Regression",                "Residuals Statistics",                            {.statistics = "Statistics", .averaged = {"Mean", "N"}});
  Column(      "Nominal Regression",        "Parameter Estimates",                             {.statistics = "Statistics", .key = "Parameter", .estimate = "B Estimate", .standardError = "Standard Error", .wald = "Wald", .df = "degrees of freedom", .significance = "significance", .expB = "Exp(B)", .expBInterval = "^1% Confidence Interval for Exp(B)", .redundancy = "Redundant parameter is zero ..."});
  Correlation( "Correlations",              "Correlations",                                    {.statistics = "Statistics", .correlation = "Pearson Correlation", .n = "N", .listwiseN = "[:^1=^2,:]1\\:Listwise N=^2", .note05OneTailed = "Correlation at 0.05(1-tailed):...", .note01OneTailed = "Correlation at 0.01(1-tailed):...", .note05TwoTailed = "Correlation at 0.05(2-tailed):...", .note01TwoTailed = "Correlation at 0.01(2-tailed):...", .significanceOneTailed = "Significance(1-tailed)", .significanceTwoTailed = "Significance(2-tailed)"});
  Column(      "Logistic Regression",       "Variables in the Equation",                       {.statistics = "Statistics", .key = "Variable", .estimate = "B", .standardError = "S.E.", .significance = "Sig.", .expB = "Exp(B)", .expBInterval = "^1 C.I.for EXP(B)"});
  Cell(        "Discriminant",              "Group Statistics",                                {.statistics = "Statistics", .averaged = {"Mean", "Valid N (listwise)#Unweighted", "Valid N (listwise)#Weighted"}});
  Correlation( "Discriminant",              "Pooled Within Groups Matrices",                   {.statistics = "Statistics", .correlation = "Correlation"});
  Cell0(       "Discriminant",              "CDF Coefficients");
  Cell0(       "Discriminant",              "Functions at Group Centroids");
  Cell0(       "Discriminant",              "Classification Function Coefficients");
  Column(      "PLUM",                      "Parameter Estimates",                             {.statistics = "Statistics", .key = "Parameters", .estimate = "B Estimate", .standardError = "Standard Error", .significance = "PAR significance", .interval = "^1% Confidence Interval"});
  Cell(        "Mixed",                     "Descriptive Statistics",                          {.statistics = "Statistics", .averaged = {"Mean", "Count"}});
  Column(      "Mixed",                     "Parameter Estimates",                             {.statistics = "Statistics", .key = "Parameter", .estimate = "B0", .standardError = "Standard Error", .test = "t Statistic", .significance = "Significance", .interval = "^1 Confidence Interval", .redundancy = "Redundant parameter ..."});
  Column(      "Mixed",                     "Covariance Parameter Estimates",                  {.statistics = "Statistics", .key = "Parameter", .estimate = "Covpar Estimate", .standardError = "Covpar Standard Error", .significance = "Covpar Wald Significance", .interval = "^1 Confidence Interval", .redundancy = "Redundant parameter ..."});
  Cell(        "Mixed",                     "Estimated Marginal Means",                        {.statistics = "Statistics", .full = {.estimate = "Mean", .standardError = "Standard Error", .interval = "^1 Confidence Interval"}});
  Column(      "Cox Regression",            "Variables in the Equation",                       {.statistics = "Statistics", .key = "Variname", .estimate = "B", .standardError = "SE", .significance = "Sig.", .expB = "Exp(B)", .expBInterval = "^1 CI for Exp(B)"});
  Cell(        "Cox Regression",            "Covariate Means",                                 {.statistics = "Statistic", .averaged = {"Mean"}});
  Cell2(       "Kaplan-Meier",              "Means and Medians for Survival Time",             {.dimensionA = "Mean/Median", .dimensionB = "Statistics", .estimate = {"Mean", "Estimate"}, .standardError = {"Mean", "Std. Error"}});
  // clang-format on
}

}  // namespace

const std::vector<const OmMIPattern*>& MIPoolingPatterns() {
  static const Registry registry;
  return registry.list;
}
