#include "backend/omfactory/pooling/OmMIColumnPoolingPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "PoolingTables.h"
#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"

using namespace pooltest;

namespace {

constexpr const char* kRedundant = "Redundant parameter ...";

const OmMIColumnPoolingPattern::Labels kCoefficients{
    .statistics = "Statistics", .key = "Variables", .estimate = "B", .standardError = "Std. Error",
    .test = "t", .significance = "Significance", .interval = "^1 Confidence Interval for B",
    .expB = "Exp(B)", .redundancy = kRedundant};

// A coefficients table: terms x statistics x imputations 0 .. m. Statistics: B, Std. Error, t,
// Significance, Exp(B), then the interval group's Lower Bound and Upper Bound.
struct Coefficients {
  TableBuilder t{"Coefficients", "Coefficients"};
  int imp;
  enum { B, SE, T, Sig, ExpB };

  Coefficients(const std::vector<std::string>& names, int m) {
    t.Dim("Variables", names);
    OmDimension& dim = t->Dimension(t.Dim("Statistics", {"B", "Std. Error", "t", "Significance", "Exp(B)"}));
    OmComposite label("^1 Confidence Interval for B", false);
    label.Add(OmNumber(95.0));
    OmDimension::Node group = dim.Child(&dim.Root(), -1, label, true);
    dim.Child(group, -1, OmStringCell("Lower Bound"), false);
    dim.Child(group, -1, OmStringCell("Upper Bound"), false);
    imp = t.Imputations(m);
  }
  void Term(int term, int i, double b, double se) {
    t.Number({term, B, i}, b);
    t.Number({term, SE, i}, se, 0x3050028);
    t.Number({term, T, i}, b / se);
    t.Number({term, Sig, i}, 0.5, 0x3050028);
    t.Number({term, ExpB, i}, std::exp(b));
  }
  bool Pool(const OmMIColumnPoolingPattern::Labels& labels = kCoefficients) {
    OmMIColumnPoolingPattern pattern("Regression", "Coefficients");
    pattern.SetLabels(labels);
    return pattern.Pool(*t, nullptr);
  }
  int Pooled() { return t->Size(imp) - 1; }
};

}  // namespace

TEST(MIColumnPooling, ModelsWhoseTermsVaryAreNotPooledAndTheTitleSaysSo) {
  Coefficients c({"(Constant)", "x"}, 3);
  for (int i = 1; i <= 3; ++i) c.Term(0, i, 1.0 + i, 0.2);
  c.Term(1, 1, 0.5, 0.1);
  c.t.Number({1, c.B, 2}, kSysMiss);  // the second model dropped x
  c.Term(1, 3, 0.6, 0.1);
  EXPECT_FALSE(c.Pool());
  EXPECT_EQ(NotesOf(*c.t, c.t->TableTitle()), std::vector<std::string>{"Models not pooled - terms vary..."});
  EXPECT_EQ(c.t->Size(c.imp), 4);  // no "Pooled" category
}

TEST(MIColumnPooling, RedundantParameterKeepsItsNoteAndHasNoExpB) {
  Coefficients c({"(Constant)", "x"}, 2);
  const int note = c.t->Footnote(OmFootnote(OmStringCell(kRedundant, true)), false);
  for (int i = 1; i <= 2; ++i) {
    c.Term(0, i, 1.0 * i, 0.2);
    c.t.Number({1, c.B, i}, 0.0);
    c.t.Number({1, c.SE, i}, 0.0);
    c.t->Cell({1, c.B, i})->Footnote(std::int16_t(note));
  }
  EXPECT_TRUE(c.Pool());
  const int p = c.Pooled();
  EXPECT_EQ(NotesAt(*c.t, {1, c.B, p}), std::vector<std::string>{kRedundant});
  EXPECT_TRUE(NotesAt(*c.t, {0, c.B, p}).empty());
  EXPECT_TRUE(NumberAt(*c.t, {1, c.ExpB, p}).IsSysMiss());
  EXPECT_DOUBLE_EQ(NumberAt(*c.t, {0, c.ExpB, p}).Value(), std::exp(1.5));
  // No "No variance" note on the redundant term's missing significance.
  EXPECT_TRUE(NotesAt(*c.t, {1, c.Sig, p}).empty());
}

// --- Correlation columns, pooled on the Fisher z scale

TEST(MIColumnCorrelation, CorrelationOfOneEntersAsAnInfiniteZAndFailsWithItsErrorText) {
  Coefficients c({"x", "z"}, 2);
  const OmMIColumnPoolingPattern::Labels zeroOrder{.statistics = "Statistics", .key = "Variables", .correlation = "t"};
  c.t.Number({0, c.T, 1}, 1.0);
  c.t.Number({0, c.T, 2}, 0.9);
  c.t.Number({1, c.T, 1}, 0.3);
  c.t.Number({1, c.T, 2}, 0.2);
  c.Pool(zeroOrder);
  const std::string text = GetPoolingErrorString(MPError::kNonFiniteInput);
  ASSERT_FALSE(text.empty());
  for (int term = 0; term < 2; ++term) {
    EXPECT_TRUE(NumberAt(*c.t, {term, c.T, c.Pooled()}).IsSysMiss());
    EXPECT_EQ(NotesAt(*c.t, {term, c.T, c.Pooled()}), std::vector<std::string>{text});
  }
}
