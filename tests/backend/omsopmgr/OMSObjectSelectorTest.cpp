#include "backend/omsopmgr/OMSObjectSelector.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

constexpr short kChart = 1;
constexpr short kText = 2;
constexpr short kTable = 16;
constexpr short kHeading = 32;

OMSSelector WithCommands(std::initializer_list<const char*> commands) {
  OMSSelector s;
  for (const char* c : commands) s.AddCommands(c);
  return s;
}

OMSSelector WithSubtypes(std::initializer_list<const char*> subtypes) {
  OMSSelector s;
  for (const char* c : subtypes) s.AddSubtypes(c);
  return s;
}

OMSSelector WithInstances(std::initializer_list<int> numbers, bool last = false) {
  OMSSelector s;
  for (int n : numbers) s.AddInstances(n);
  if (last) s.AddLastInstance();
  return s;
}

OMSObjectSelector Request(unsigned types) {
  OMSObjectSelector r;
  r.SelectType(types);
  return r;
}

}  // namespace

TEST(OMSObjectSelector, NewRequestSelectsNothingUntilTypesAreSelected) {
  OMSObjectSelector r;
  EXPECT_FALSE(r.IsObjectSelected(kTable, "Frequencies", "Statistics", "Statistics"));
  EXPECT_FALSE(r.IsObjectSelected(kChart, "Frequencies", "", "Bar"));
  r.SelectType(OMSObjectSelector::kTables | OMSObjectSelector::kCharts);
  EXPECT_TRUE(r.IsObjectSelected(kTable, "Frequencies", "Statistics", "Statistics"));
  EXPECT_TRUE(r.IsObjectSelected(kChart, "Frequencies", "", "Bar"));
  EXPECT_FALSE(r.IsObjectSelected(kText, "Frequencies", "", "Text"));
  r.UnSelectType(OMSObjectSelector::kCharts);
  EXPECT_FALSE(r.IsObjectSelected(kChart, "Frequencies", "", "Bar"));
  EXPECT_EQ(r.GetSelection(), 16u);
}

TEST(OMSObjectSelector, InfoSelectionRemembersTheSelectionWhenAsked) {
  OMSObjectSelector r = Request(8);
  EXPECT_EQ(r.GetInfoSelection(), 0u);
  r.SetInfoSelection();
  r.SelectType(16);
  EXPECT_EQ(r.GetInfoSelection(), 8u);
}

TEST(OMSObjectSelector, NotesChoiceDecidesForNotesTablesAlone) {
  OMSObjectSelector hide = Request(16);
  hide.ShowNotesTables(false);
  EXPECT_FALSE(hide.IsObjectSelected(kTable, "Frequencies", "Notes", "Notes"));
  EXPECT_TRUE(hide.IsObjectSelected(kTable, "Frequencies", "Statistics", "Notes"));

  OMSObjectSelector show = Request(OMSObjectSelector::kCharts);
  show.AddIfOption(WithCommands({"Crosstabs"}));
  show.ShowNotesTables(true);
  EXPECT_TRUE(show.IsObjectSelected(kTable, "Frequencies", "Notes", "Notes"));
  // The subtype must be exactly "Notes", and the object a table.
  EXPECT_FALSE(show.IsObjectSelected(kTable, "Frequencies", "NOTES", "Notes"));
  EXPECT_FALSE(show.IsObjectSelected(kHeading, "Frequencies", "Notes", "Notes"));
}

TEST(OMSObjectSelector, NotesTablesFollowTheTypesWhenNoChoiceWasMade) {
  const OMSObjectSelector r = Request(32);
  EXPECT_TRUE(r.ShowNotesTables());
  EXPECT_FALSE(r.IsObjectSelected(kTable, "Frequencies", "Notes", "Notes"));
}

TEST(OMSObjectSelector, IfSubtypesCountForTablesOnly) {
  OMSObjectSelector r = Request(16 | 32);
  OMSSelector in = WithCommands({"Frequencies"});
  in.AddSubtypes("Statistics");
  r.AddIfOption(in);
  EXPECT_TRUE(r.IsObjectSelected(kTable, "FREQUENCIES", "statistics", "x"));
  EXPECT_FALSE(r.IsObjectSelected(kTable, "FREQUENCIES", "Frequencies", "x"));
  EXPECT_TRUE(r.IsObjectSelected(kHeading, "Frequencies", "", "Frequencies"));
  EXPECT_FALSE(r.IsObjectSelected(kHeading, "Crosstabs", "", "Crosstabs"));
}

TEST(OMSObjectSelector, ExceptIfSubtypesExcludeObjectsOfEveryKind) {
  OMSObjectSelector r = Request(16 | 32);
  OMSSelector out = WithCommands({"Frequencies"});
  out.AddSubtypes("Statistics");
  r.AddExceptIfOption(out);
  EXPECT_FALSE(r.IsObjectSelected(kTable, "Frequencies", "Statistics", "x"));
  EXPECT_TRUE(r.IsObjectSelected(kTable, "Frequencies", "Other", "x"));
  EXPECT_TRUE(r.IsObjectSelected(kTable, "Crosstabs", "Statistics", "x"));
  // A heading has the subtype "", which the EXCEPTIF subtypes do not match.
  EXPECT_TRUE(r.IsObjectSelected(kHeading, "Frequencies", "", "x"));
  EXPECT_FALSE(r.IsObjectSelected(kHeading, "Frequencies", "Statistics", "x"));
}

TEST(OMSObjectSelector, ExceptIfWithOnlyInstancesExcludesEveryObject) {
  OMSObjectSelector r = Request(16);
  r.AddExceptIfOption(WithInstances({2}));
  EXPECT_FALSE(r.IsObjectSelected(kTable, "Frequencies", "Statistics", "x"));
}

TEST(OMSObjectSelector, InstanceNumbersOfIfAndExceptIf) {
  OMSObjectSelector r = Request(16);
  EXPECT_TRUE(r.IsInstanceSelected(7));  // no numbers: every instance
  r.AddIfOption(WithInstances({1, 3}));
  EXPECT_TRUE(r.IsInstanceSelected(3));
  EXPECT_FALSE(r.IsInstanceSelected(2));
  r.AddExceptIfOption(WithInstances({3}));
  EXPECT_FALSE(r.IsInstanceSelected(3));
  EXPECT_TRUE(r.IsInstanceSelected(1));
}

TEST(OMSObjectSelector, LastAloneSelectsNoNumber) {
  OMSObjectSelector r = Request(16);
  r.AddIfOption(WithInstances({}, true));
  EXPECT_TRUE(r.IsLastInstanceSelected());
  EXPECT_FALSE(r.IsLastInstanceExcluded());
  for (int n = 1; n <= 5; ++n) EXPECT_FALSE(r.IsInstanceSelected(n)) << n;
  r.AddIfOption(WithInstances({1}, true));
  EXPECT_TRUE(r.IsInstanceSelected(1));
  r.AddExceptIfOption(WithInstances({}, true));
  EXPECT_TRUE(r.IsLastInstanceExcluded());
  EXPECT_TRUE(r.IsInstanceSelected(1));  // LAST in EXCEPTIF removes no number
}

TEST(OMSObjectSelector, EmptySubcommandsLeaveThePreviousOnes) {
  OMSObjectSelector r = Request(16);
  r.AddIfOption(WithSubtypes({"Statistics"}));
  r.AddIfOption(OMSSelector());
  r.AddExceptIfOption(WithCommands({"Crosstabs"}));
  r.AddExceptIfOption(OMSSelector());
  EXPECT_EQ(r.GetIfOption().GetSubtypes(), std::vector<std::string>{"STATISTICS"});
  EXPECT_EQ(r.GetExceptIfOption().GetCommands(), std::vector<std::string>{"CROSSTABS"});
  r.AddIfOption(WithSubtypes({"Notes"}));
  EXPECT_EQ(r.GetIfOption().GetSubtypes(), std::vector<std::string>{"NOTES"});
}

TEST(OMSObjectSelector, EmptyTagViolatesThePrecondition) {
  OMSObjectSelector r;
  try {
    r.SetOMSTag("");
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "backend/omsopmgr/OMSObjectSelector: tag.length() > 0");
  }
}

// Setting an option also records that it was given, so that a later request can tell a default
// from an explicit value; the image format is a signed byte.
TEST(OMSObjectSelector, SettersMarkTheirOptionSpecified) {
  OMSObjectSelector r;
  EXPECT_FALSE(r.GetViewerSpecified());
  EXPECT_FALSE(r.ImageRootNameSpecified());
  r.SetDestinationIsViewer(false);
  r.SetExportImages(false);
  r.SetImageFormat(-2);
  r.SetChartSize(75.5, "75.5");
  r.SetPivotingAllowed(false);
  r.SetImageRootName("img");
  r.SetNumberedColumnName("Row", false);
  EXPECT_TRUE(r.GetViewerSpecified());
  EXPECT_TRUE(r.ExportImagesSpecified());
  EXPECT_EQ(r.GetImageFormat(), -2);
  EXPECT_TRUE(r.ImageFormatSpecified());
  EXPECT_TRUE(r.ChartSizeSpecified());
  EXPECT_TRUE(r.PivotingAllowedSpecified());
  EXPECT_TRUE(r.ImageRootNameSpecified());
  EXPECT_FALSE(r.IsNumberedColumnNameDefault());
}

TEST(OMSObjectSelector, CopiesAreDeepAndIndependent) {
  OMSObjectSelector a = Request(16);
  a.AddIfOption(WithCommands({"Frequencies"}));
  OMSObjectSelector b(a);
  b.AddIfOption(WithCommands({"Crosstabs"}));
  b.SelectType(1);
  EXPECT_TRUE(a.IsObjectSelected(kTable, "Frequencies", "", ""));
  EXPECT_FALSE(b.IsObjectSelected(kTable, "Frequencies", "", ""));
  a = b;
  EXPECT_EQ(a.GetSelection(), 17u);
  EXPECT_TRUE(a.IsObjectSelected(kTable, "Crosstabs", "", ""));
}
