#include "backend/omfactory/pooling/OmPoolingTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "MITableBuilder.h"
#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

using mitest::TableBuilder;
using T = OmPoolingTools;

namespace {

std::vector<std::string> Split(const std::string& text) {
  std::vector<std::string> pieces;
  T::SplitString(text, pieces);
  return pieces;
}

}  // namespace

// --- Finding dimensions

TEST(PoolingToolsDimensions, ImputationDimensionIsTheVariableOfThatNameWhateverItsCase) {
  TableBuilder t("Any");
  EXPECT_EQ(T::FindImputationDim(*t), -1);
  EXPECT_EQ(T::FindDim(*t, OmStringCell("Statistics")), -1);
  t.Dim("Imputation_", {"1"});  // a string label named like the variable does not count
  EXPECT_EQ(T::FindImputationDim(*t), -1);
  const int d = t.Imputations(2, true, "IMPUTATION_");
  EXPECT_EQ(T::FindImputationDim(*t), d);
}

TEST(PoolingToolsDimensions, FirstMatchingDimensionWinsAndCellTypeMustAgree) {
  TableBuilder t("Any");
  t->AddDimension(OmVariable("Statistics", ""));
  const int second = t.Dim("Statistics", {});
  t.Dim("Statistics", {});
  EXPECT_EQ(T::FindDim(*t, OmStringCell("Statistics", true)), second);
  EXPECT_EQ(T::FindDim(*t, OmStringCell("statistics")), -1);
}

TEST(PoolingToolsDimensions, BootstrapSplitDimensionIsTheVariableOfThatName) {
  TableBuilder t("Any");
  EXPECT_EQ(T::FindBootstrapDim(*t), -1);
  t.Dim("$bootstrap_split", {});
  EXPECT_EQ(T::FindBootstrapDim(*t), -1);
  const int d = t->AddDimension(OmVariable("$bootstrap_split", ""));
  EXPECT_EQ(T::FindBootstrapDim(*t), d);
}

// --- Finding categories

TEST(PoolingToolsCategories, OriginalDataIsTheValueZeroOfTheDimensionsVariable) {
  TableBuilder t("Any");
  const int d = t->AddDimension(OmVariable("imputation_", ""));
  OmDimension& dim = t->Dimension(d);
  for (double v : {2.0, 1.0, 0.0}) {
    dim.Child(&dim.Root(), -1, OmNumDataValue("imputation_", "", v, mitest::kNoDecimals), false);
  }
  EXPECT_EQ(T::FindOriginalDataImputation(*t, d), 2);
  const int without = t.Imputations(3, false);
  EXPECT_EQ(T::FindOriginalDataImputation(*t, without), -1);
  EXPECT_EQ(T::FindOriginalDataImputation(*t, 7), -1);  // no such dimension
}

TEST(PoolingToolsCategories, LabelPathFindsCategoryInsideNamedGroupThroughUnnamedGroups) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"Valid"});  // a top-level "Valid" that the path must skip
  OmDimension& dim = t->Dimension(d);
  OmDimension::Node outer = dim.Child(&dim.Root(), -1, OmStringCell("Counts"), true);
  OmDimension::Node n = dim.Child(outer, -1, OmStringCell("N"), true);
  dim.Child(n, -1, OmStringCell("Missing"), false);
  const int valid = dim.Child(n, -1, OmStringCell("Valid"), false)->LeafIndex();

  EXPECT_EQ(T::FindMatchingCategory(std::string("N#Valid"), &dim.Root()), valid);
  EXPECT_EQ(T::FindMatchingCategory(std::string("Valid"), &dim.Root()), 0);
  EXPECT_EQ(T::FindMatchingCategory(std::string("N"), &dim.Root()), -1);  // a group is no answer
  EXPECT_EQ(T::FindMatchingCategory(std::string("Missing#N"), &dim.Root()), -1);
  EXPECT_EQ(T::FindMatchingCategory(std::string(""), &dim.Root()), -1);
}

TEST(PoolingToolsCategories, LabelPathComparesCompositeLabelsByTheirPattern) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {});
  OmDimension& dim = t->Dimension(d);
  OmComposite label("^1% Confidence Interval", false);
  label.Add(OmNumber(95));
  label.Substitute();
  OmDimension::Node group = dim.Child(&dim.Root(), -1, label, true);
  dim.Child(group, -1, OmStringCell("Lower Bound"), false);
  const int upper = dim.Child(group, -1, OmStringCell("Upper Bound"), false)->LeafIndex();
  EXPECT_EQ(T::FindMatchingCategory(std::string("^1% Confidence Interval#Upper Bound"), &dim.Root()),
            upper);
  EXPECT_EQ(T::FindMatchingCategory(std::string("95% Confidence Interval#Upper Bound"), &dim.Root()),
            -1);
}

TEST(PoolingToolsCategories, LabelCellSearchLooksIntoGroupsButNotAtTheirLabels) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"Mean"});
  const std::vector<int> inGroup = t.Group(d, "N", {"Valid", "N"});
  const OmDimension& dim = t->Dimension(d);
  EXPECT_EQ(T::FindMatchingCategory(OmStringCell("N"), &dim.Root()), inGroup[1]);
  EXPECT_EQ(T::FindMatchingCategory(OmStringCell("Median"), &dim.Root()), -1);
  EXPECT_EQ(T::FindMatchingCategory(OmVariable("Mean", ""), &dim.Root()), -1);
}

TEST(PoolingToolsCategories, FindSearchesSiblingsDepthFirstUpToTheEnd) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"A"});
  t.Group(d, "G", {"B", "C"});
  t.Category(d, "D");
  const OmDimensionNode& root = t->Dimension(d).Root();
  const OmDimensionNode* a = root.Child(0);
  const OmDimensionNode* g = root.Child(1);
  const OmDimensionNode* last = root.Child(2);
  const OmStringCell c("C"), dLabel("D"), gLabel("G");
  EXPECT_EQ(T::Find(a, nullptr, &c), g->Child(1));
  EXPECT_EQ(T::Find(a, nullptr, &gLabel), g);
  EXPECT_EQ(T::Find(a, g, &c), g);  // C lies inside the end node: not in the range
  EXPECT_EQ(T::Find(a, nullptr, &dLabel), last);
  EXPECT_EQ(T::Find(g, nullptr, nullptr), nullptr);
}

TEST(PoolingToolsCategories, ConfidenceIntervalLevelComesFromTheCompositeArgument) {
  for (const auto& [argument, level] : {std::pair{95.0, 0.95}, std::pair{0.9, 0.9}}) {
    TableBuilder t("Any");
    const int d = t.Dim("Statistics", {"B"});
    OmDimension& dim = t->Dimension(d);
    OmComposite label("^1% Confidence Interval", false);
    label.Add(OmNumber(argument));
    OmDimension::Node group = dim.Child(&dim.Root(), -1, label, true);
    const int lower = dim.Child(group, -1, OmStringCell("Lower Bound"), false)->LeafIndex();
    const int upper = dim.Child(group, -1, OmStringCell("Upper Bound"), false)->LeafIndex();
    int a = 0, b = 0;
    double found = 0;
    ASSERT_TRUE(T::FindCI(dim, "^1% Confidence Interval", a, b, found));
    EXPECT_EQ(a, upper);
    EXPECT_EQ(b, lower);
    EXPECT_DOUBLE_EQ(found, level);
  }
}

TEST(PoolingToolsCategories, ConfidenceIntervalGroupNeedsExactlyTwoBounds) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {});
  t.Group(d, "Interval", {"Lower", "Middle", "Upper"});
  int a = 5, b = 5;
  double level = 0;
  EXPECT_FALSE(T::FindCI(t->Dimension(d), "Interval", a, b, level));
  EXPECT_FALSE(T::FindCI(t->Dimension(d), "Missing", a, b, level));
  EXPECT_EQ(a, -1);
  EXPECT_EQ(b, -1);
  EXPECT_DOUBLE_EQ(level, 0.95);
}

TEST(PoolingToolsCategories, SplitStringKeepsEmptyPiecesBetweenButNotAfterSeparators) {
  EXPECT_EQ(Split("a#b"), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(Split("#a"), (std::vector<std::string>{"", "a"}));
  EXPECT_EQ(Split("a##b"), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(Split("a#"), (std::vector<std::string>{"a"}));
  EXPECT_EQ(Split("a##"), (std::vector<std::string>{"a", ""}));
  EXPECT_TRUE(Split("").empty());
  std::vector<std::string> appended{"x"};
  T::SplitString("y", appended);
  EXPECT_EQ(appended, (std::vector<std::string>{"x", "y"}));
}

// --- Adding categories

TEST(PoolingToolsAdding, PooledCategoryIsMadeOnceAndNumberedAfterTheOthers) {
  TableBuilder t("Any");
  const int d = t.Imputations(3);
  const int pooled = T::MakePooledCategory(*t, d);
  EXPECT_EQ(pooled, 4);
  EXPECT_EQ(T::MakePooledCategory(*t, d), pooled);
  EXPECT_EQ(t->Dimension(d).Root().NChildren(), 5u);
  EXPECT_EQ(t->Dimension(d).Root().Child(4)->Label()->Text(), "Pooled");
}

TEST(PoolingToolsAdding, AddCategoryReusesACategoryInsideAGroup) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"Mean"});
  const std::vector<int> inGroup = t.Group(d, "Diagnostics", {"Relative Efficiency"});
  EXPECT_EQ(T::AddCategory(*t, d, "Relative Efficiency"), inGroup[0]);
  const int added = T::AddCategory(t->Dimension(d), "Fraction Missing Info.");
  EXPECT_EQ(added, 2);
  EXPECT_EQ(T::AddCategory(*t, d, "Fraction Missing Info."), added);
  EXPECT_EQ(t->Dimension(d).Root().NChildren(), 3u);
}

// --- Footnotes

TEST(PoolingToolsFootnotes, FootnoteCellAddsOneFootnotePerTextAndRefersTheCellToIt) {
  TableBuilder t("Any");
  t.Dim("Statistics", {"Mean", "N"});
  t.Number({0}, 1.0);
  t.Number({1}, 2.0);
  const int first = T::FootnoteCell("No variance among imputations.", *t, *t->Cell({0}));
  const int again = T::FootnoteCell(OmStringCell("No variance among imputations."), *t, *t->Cell({1}));
  EXPECT_EQ(first, again);
  EXPECT_EQ(t->Footnotes().size(), 1u);
  EXPECT_EQ(mitest::NotesAt(*t, {1}), std::vector<std::string>{"No variance among imputations."});
  EXPECT_EQ(T::FindFootnote(*t, OmStringCell("No variance among imputations.")), first);
  EXPECT_EQ(T::FindFootnote(*t, OmStringCell("Another")), -1);
}

TEST(PoolingToolsFootnotes, ErrorFootnoteOnAnEmptyAddressCreatesASystemMissingCell) {
  TableBuilder t("Any");
  t.Dim("Statistics", {"Mean", "N"});
  t.Number({1}, 7.0);
  const int note = t->Footnote(OmFootnote(OmStringCell("failed")));
  T::ErrorFootnote(*t, {0}, note);
  T::ErrorFootnote(*t, {1}, note);
  const OmNumber& created = mitest::NumberAt(*t, {0});
  EXPECT_TRUE(created.IsSysMiss());
  EXPECT_EQ(created.Format(), 0x50005u);
  EXPECT_EQ(mitest::NotesAt(*t, {0}), std::vector<std::string>{"failed"});
  EXPECT_EQ(mitest::NumberAt(*t, {1}).Value(), 7.0);
  EXPECT_EQ(mitest::NotesAt(*t, {1}), std::vector<std::string>{"failed"});
}

TEST(PoolingToolsFootnotes, ComputationErrorFootnoteCarriesThePoolingErrorText) {
  TableBuilder t("Any");
  t.Dim("Statistics", {"Mean"});
  T::CompErrorFootnote(*t, {0}, MPError::kTooFewImputations);
  EXPECT_EQ(mitest::NotesAt(*t, {0}),
            std::vector<std::string>{GetPoolingErrorString(MPError::kTooFewImputations)});
}

// --- Bootstrap helpers

TEST(PoolingToolsBootstrap, SplitNumberIsTheOneDigitAfterTheMarkerOrTheWholeDataValue) {
  OmComposite inner("^1", false);
  inner.Add(OmStringCell("$bootstrap_split=4"));
  OmComposite outer("^1 ^2", false);
  outer.Add(OmStringCell("nothing"));
  outer.Add(inner);
  const OmStringCell three("$bootstrap_split=3"), spaced("x $bootstrap_split = 12");
  const OmStringCell letter("$bootstrap_split= a"), none("bootstrap 3");
  const OmNumDataValue whole("$bootstrap_split", "", 2.0, mitest::kNoDecimals);
  const OmNumDataValue fraction("$bootstrap_split", "", 2.5, mitest::kNoDecimals);
  const OmNumDataValue otherCase("$BOOTSTRAP_SPLIT", "", 2.0, mitest::kNoDecimals);
  const OmNumber number(2.0);
  const std::pair<const OmCellText*, int> cases[] = {
      {&three, 3},     {&spaced, 1},   {&letter, -1},   {&none, -1},      {nullptr, -1},
      {&outer, 4},     {&whole, 2},    {&fraction, -1}, {&otherCase, -1}, {&number, -1}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE("case " + std::to_string(i));
    EXPECT_EQ(T::BootstrapSplitNum(cases[i].first), cases[i].second);
  }
}

TEST(PoolingToolsBootstrap, DemoteDimensionMovesItToTheFrontInTheCallersStorage) {
  std::vector<short> order{3, 1, 4, 1};
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
  T::DemoteDimension(PuppetVector<short>(order, -1), 9);
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
}

TEST(PoolingToolsBootstrap, IsolateDimensionMovesOthersInOnePassThatSkipsMovedUpEntries) {
  std::vector<short> source{0, 1, 2, 3};
  std::vector<short> target{7};
  T::IsolateDimension(1, PuppetVector<short>(source, -1), PuppetVector<short>(target, -1));
  // 0 leaves from position 0; position 1 then holds 2, which leaves; 3 moved up into position 1
  // and the pass has gone on to position 2.
  EXPECT_EQ(source, (std::vector<short>{1, 3}));
  EXPECT_EQ(target, (std::vector<short>{2, 0, 7}));
}

// --- Statistics

TEST(PoolingToolsStatistics, MeanOfNothingIsSystemMissing) {
  EXPECT_EQ(T::Mean({}), T::kSysMiss);
  EXPECT_DOUBLE_EQ(T::Mean({1.0, 2.0, 6.0}), 3.0);
}

TEST(PoolingToolsStatistics, FisherZStopsAfterTheFirstValueOutsideTheOpenInterval) {
  std::vector<double> values{0.5, 1.0, 0.2};
  EXPECT_FALSE(T::FisherZ(values));
  EXPECT_NEAR(values[0], 0.5493061443340549, 1e-15);  // atanh(0.5)
  EXPECT_EQ(values[1], std::numeric_limits<double>::infinity());
  EXPECT_EQ(values[2], 0.2);

  std::vector<double> minusOne{-1.0};
  EXPECT_FALSE(T::FisherZ(minusOne));
  EXPECT_EQ(minusOne[0], -std::numeric_limits<double>::infinity());
  std::vector<double> none;
  EXPECT_TRUE(T::FisherZ(none));
}

TEST(PoolingToolsStatistics, InverseFisherZUndoesFisherZAndSaturatesForLargeZ) {
  std::vector<double> values{-0.9, 0.0, 0.3, 0.99};
  const std::vector<double> original = values;
  ASSERT_TRUE(T::FisherZ(values));
  T::InverseFisherZ(values);
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], original[i], 1e-12);
  std::vector<double> large{400.0, -400.0};
  T::InverseFisherZ(large);
  EXPECT_EQ(large, (std::vector<double>{1.0, -1.0}));
}
