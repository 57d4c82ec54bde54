#include "backend/omfactory/pooling/OmMICorrMatrixPoolingPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "PoolingTables.h"
#include "platform/outputmodel/OmFootnote.h"

using namespace pooltest;

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
struct Matrix : TableBuilder {
  enum { R, Sig, N };

  Matrix(int m, bool oneTailed, bool withN = true) : TableBuilder("Correlations", "Correlations") {
    Dim("Variables", {"x", "y"});
    Dim("Variables2", {"x", "y"});
    std::vector<std::string> statistics{"Pearson Correlation", oneTailed ? "Sig. (1-tailed)" : "Sig. (2-tailed)"};
    if (withN) statistics.push_back("N");
    Dim("Statistics", statistics);
    Imputations(m);
  }
  // The x-y coefficients of imputations 1, 2, ..., with their Ns when the table has N.
  void Coefficients(const std::vector<double>& rs, const std::vector<double>& ns) {
    for (int i = 1; i <= int(rs.size()); ++i) {
      Number({0, 1, R, i}, rs[std::size_t(i - 1)], 0x3050028);
      if ((*this)->Size(2) > N) Number({0, 1, N, i}, ns[std::size_t(i - 1)], kNoDecimals);
    }
  }
  // Marks the x-y coefficient of imputation i with a significance note, as a procedure does.
  void Note(int i, const std::string& text, const std::string& marker) {
    const OmStringCell mark(marker);
    const int index = (*this)->Footnote(OmFootnote(OmStringCell(text, true), &mark), false);
    (*this)->Cell({0, 1, R, i})->Footnote(std::int16_t(index));
  }
  void Pool() {
    Pattern pattern("Correlations", "Correlations");
    pattern.SetLabels(kLabels);
    ASSERT_TRUE(pattern.MatchesTable(**this));
    ASSERT_TRUE(pattern.Pool(**this, nullptr));
  }
  // The pooled x-y (or, with row 0, x-x) statistic.
  OmPivotTable::Coordinates Pooled(int statistic, int row = 1) { return {0, row, statistic, (*this)->Size(3) - 1}; }
};

// The pooled two-tailed significance of correlations with their Ns, on the Fisher z scale.
double FisherSignificance(const std::vector<double>& rs, const std::vector<double>& ns) {
  std::vector<std::vector<double>> z, se;
  for (std::size_t i = 0; i < rs.size(); ++i) {
    z.push_back({std::atanh(rs[i])});
    se.push_back({1.0 / std::sqrt(ns[i] - 3.0)});
  }
  return Pooled(z, se).significance[0];
}

}  // namespace

TEST(MICorrMatrix, DiagonalIsOneWithoutSignificanceAndAPerfectCorrelationInSomeIsMissing) {
  Matrix m(2, false);
  for (int i = 1; i <= 2; ++i) m.Number({0, 0, Matrix::R, i}, 1.0);
  m.Coefficients({1.0, 0.8}, {30, 30});
  m.Pool();
  EXPECT_EQ(NumberAt(*m, m.Pooled(Matrix::R, 0)).Value(), 1.0);
  EXPECT_EQ(m->Cell(m.Pooled(Matrix::Sig, 0)), nullptr);
  EXPECT_TRUE(NumberAt(*m, m.Pooled(Matrix::R)).IsSysMiss());
}

TEST(MICorrMatrix, TwoTailedTablesGetTheTwoTailedNoteOfThePooledSignificance) {
  // The second significance underflows to exactly 0.
  for (const auto& [rs, n] : {std::pair{std::vector{0.62, 0.58}, 50.0}, {{0.999, 0.9990001}, 1e5}}) {
    Matrix m(2, false);
    m.Coefficients(rs, {n, n});
    m.Note(2, kLabels.note01TwoTailed, "**");
    ASSERT_LE(FisherSignificance(rs, {n, n}), n > 50 ? 0.0 : 0.01);
    m.Pool();
    EXPECT_EQ(NotesAt(*m, m.Pooled(Matrix::R)), std::vector<std::string>{kLabels.note01TwoTailed});
  }
}

TEST(MICorrMatrix, OneTailedTablesHalveThePAndNoteBetweenTwoAndTenPercent) {
  Matrix m(2, true);
  m.Coefficients({0.30, 0.24}, {50, 50});
  m.Note(1, kLabels.note05OneTailed, "*");
  const double p = FisherSignificance({0.30, 0.24}, {50, 50});
  ASSERT_GT(p, 0.02);
  ASSERT_LE(p, 0.1);
  m.Pool();
  EXPECT_NEAR(NumberAt(*m, m.Pooled(Matrix::Sig)).Value(), p * 0.5, 1e-12);
  EXPECT_EQ(NotesAt(*m, m.Pooled(Matrix::R)), std::vector<std::string>{kLabels.note05OneTailed});
}

TEST(MICorrMatrix, SignificanceWithoutAnyNSaysItNeedsN) {
  Matrix m(2, false, false);
  m.Coefficients({0.5, 0.3}, {});
  m.Pool();
  EXPECT_TRUE(NumberAt(*m, m.Pooled(Matrix::Sig)).IsSysMiss());
  EXPECT_EQ(NotesAt(*m, m.Pooled(Matrix::Sig)), std::vector<std::string>{Pattern::kNeedsN});
}

TEST(MICorrMatrix, MissingCorrelationInAnImputationLeavesTheErrorOnThePooledCell) {
  Matrix m(2, false);
  m.Coefficients({0.5, kSysMiss}, {30, 30});
  m.Pool();
  EXPECT_EQ(NotesAt(*m, m.Pooled(Matrix::R)).size(), 1u);
  EXPECT_EQ(m->Cell(m.Pooled(Matrix::N)), nullptr);
}
