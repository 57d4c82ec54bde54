#include "backend/omfactory/pooling/OmMICorrMatrixPoolingPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "MITableBuilder.h"
#include "platform/outputmodel/OmFootnote.h"

using mitest::NotesAt;
using mitest::NumberAt;
using mitest::TableBuilder;

namespace {

using Pattern = OmMICorrMatrixPoolingPattern;

const Pattern::Labels kLabels{.statistics = "Statistics",
                              .correlation = "Pearson Correlation",
                              .n = "N",
                              .note05OneTailed = "Significant at 0.05 (1-tailed).",
                              .note01OneTailed = "Significant at 0.01 (1-tailed).",
                              .note05TwoTailed = "Significant at 0.05 (2-tailed).",
                              .note01TwoTailed = "Significant at 0.01 (2-tailed).",
                              .significanceOneTailed = "Sig. (1-tailed)",
                              .significanceTwoTailed = "Sig. (2-tailed)"};

// A correlation matrix: rows x columns x statistics x imputations 0 .. m. The statistics are the
// correlation, one significance (one- or two-tailed) and, when asked for, N.
struct Matrix {
  TableBuilder t{"Correlations", "Correlations"};
  int rows, columns, stats, imp;
  enum { R, Sig, N };

  Matrix(int m, bool oneTailed, bool withN = true) {
    rows = t.Dim("Variables", {"x", "y"});
    columns = t.Dim("Variables2", {"x", "y"});
    std::vector<std::string> statistics{"Pearson Correlation", oneTailed ? "Sig. (1-tailed)" : "Sig. (2-tailed)"};
    if (withN) statistics.push_back("N");
    stats = t.Dim("Statistics", statistics);
    imp = t.Imputations(m);
  }
  // The x-y coefficient of imputation i, with its N when the table has N.
  void Coefficient(int i, double r, double n) {
    t.Number({0, 1, R, i}, r, 0x3050028);
    if (t->Size(stats) > N) t.Number({0, 1, N, i}, n, kNoDecimalsFormat);
  }
  // The x-y coefficients of imputations 1, 2, ...
  void Coefficients(const std::vector<double>& rs, const std::vector<double>& ns) {
    for (std::size_t i = 0; i < rs.size(); ++i) Coefficient(int(i) + 1, rs[i], ns[i]);
  }
  // Marks the x-y coefficient of imputation i with a significance note, as a procedure does.
  void Note(int i, const std::string& text, const std::string& marker) {
    const OmStringCell mark(marker);
    const int index = t->Footnote(OmFootnote(OmStringCell(text, true), &mark), false);
    t->Cell({0, 1, R, i})->Footnote(std::int16_t(index));
  }
  void Pool() {
    Pattern pattern("Correlations", "Correlations");
    pattern.SetLabels(kLabels);
    ASSERT_TRUE(pattern.MatchesTable(*t));
    ASSERT_TRUE(pattern.Pool(*t, nullptr));
  }
  int Pooled() { return t->Size(imp) - 1; }
  static constexpr std::uint32_t kNoDecimalsFormat = 0x50028;
};

// The pooled two-tailed significance of correlations with their Ns, on the Fisher z scale.
mitest::Reference FisherReference(const std::vector<double>& rs, const std::vector<double>& ns) {
  std::vector<std::vector<double>> z, se;
  for (std::size_t i = 0; i < rs.size(); ++i) {
    z.push_back({std::atanh(rs[i])});
    se.push_back({1.0 / std::sqrt(ns[i] - 3.0)});
  }
  return mitest::Pooled(z, se);
}

}  // namespace

TEST(MICorrMatrix, DiagonalIsOneWithoutSignificanceAndAPerfectCorrelationInSomeIsMissing) {
  Matrix m(2, false);
  for (int i = 1; i <= 2; ++i) m.t.Number({0, 0, Matrix::R, i}, 1.0);
  m.Coefficient(1, 1.0, 30);
  m.Coefficient(2, 0.8, 30);
  m.Pool();
  EXPECT_EQ(NumberAt(*m.t, {0, 0, Matrix::R, m.Pooled()}).Value(), 1.0);
  EXPECT_EQ(m.t->Cell({0, 0, Matrix::Sig, m.Pooled()}), nullptr);
  EXPECT_TRUE(NumberAt(*m.t, {0, 1, Matrix::R, m.Pooled()}).IsSysMiss());
}

TEST(MICorrMatrix, TwoTailedTablesGetTheTwoTailedNoteOfThePooledSignificance) {
  Matrix m(2, false);
  const std::vector<double> rs{0.62, 0.58}, ns{50, 50};
  m.Coefficients(rs, ns);
  m.Note(2, kLabels.note01TwoTailed, "**");
  ASSERT_LE(FisherReference(rs, ns).significance[0], 0.01);
  m.Pool();
  EXPECT_EQ(NotesAt(*m.t, {0, 1, Matrix::R, m.Pooled()}), std::vector<std::string>{kLabels.note01TwoTailed});
}

TEST(MICorrMatrix, OneTailedTablesHalveThePAndNoteBetweenTwoAndTenPercent) {
  Matrix m(2, true);
  const std::vector<double> rs{0.30, 0.24}, ns{50, 50};
  m.Coefficients(rs, ns);
  m.Note(1, kLabels.note05OneTailed, "*");
  const double p = FisherReference(rs, ns).significance[0];
  ASSERT_GT(p, 0.02);
  ASSERT_LE(p, 0.1);
  m.Pool();
  EXPECT_NEAR(NumberAt(*m.t, {0, 1, Matrix::Sig, m.Pooled()}).Value(), p * 0.5, 1e-12);
  EXPECT_EQ(NotesAt(*m.t, {0, 1, Matrix::R, m.Pooled()}), std::vector<std::string>{kLabels.note05OneTailed});
}

TEST(MICorrMatrix, SignificanceWithoutAnyNSaysItNeedsN) {
  Matrix m(2, false, false);
  m.Coefficient(1, 0.5, 0);
  m.Coefficient(2, 0.3, 0);
  m.Pool();
  EXPECT_TRUE(NumberAt(*m.t, {0, 1, Matrix::Sig, m.Pooled()}).IsSysMiss());
  EXPECT_EQ(NotesAt(*m.t, {0, 1, Matrix::Sig, m.Pooled()}), std::vector<std::string>{Pattern::kNeedsN});
}

TEST(MICorrMatrix, MissingCorrelationInAnImputationLeavesTheErrorOnThePooledCell) {
  Matrix m(2, false);
  m.Coefficient(1, 0.5, 30);
  m.Coefficient(2, OmPoolingTools::kSysMiss, 30);
  m.Pool();
  EXPECT_EQ(NotesAt(*m.t, {0, 1, Matrix::R, m.Pooled()}).size(), 1u);
  EXPECT_EQ(m.t->Cell({0, 1, Matrix::N, m.Pooled()}), nullptr);
}
