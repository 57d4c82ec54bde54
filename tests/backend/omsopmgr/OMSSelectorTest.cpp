#include "backend/omsopmgr/OMSSelector.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/strings/CodePage.h"

namespace {

OMSSelector Commands(std::initializer_list<const char*> patterns) {
  OMSSelector s;
  for (const char* p : patterns) s.AddCommands(p);
  return s;
}

OMSSelector Subtypes(std::initializer_list<const char*> patterns) {
  OMSSelector s;
  for (const char* p : patterns) s.AddSubtypes(p);
  return s;
}

OMSSelector Names(std::initializer_list<const char*> patterns) {
  OMSSelector s;
  for (const char* p : patterns) s.AddNames(p);
  return s;
}

}  // namespace

TEST(OMSSelector, StoresPatternsUpperCased) {
  OMSSelector s;
  s.AddCommands("Frequencies");
  s.AddSubtypes("Case Processing Summary");
  s.AddNames("größe");
  EXPECT_EQ(s.GetCommands(), std::vector<std::string>{"FREQUENCIES"});
  EXPECT_EQ(s.GetSubtypes(), std::vector<std::string>{"CASE PROCESSING SUMMARY"});
  EXPECT_EQ(s.GetNames(), std::vector<std::string>{"GRÖSSE"});
}

TEST(OMSSelector, EmptyUntilAnythingIsNamedLastCountsAsAnInstanceAndNumbersAreFound) {
  OMSSelector s;
  EXPECT_TRUE(s.EmptySubcommand());
  EXPECT_FALSE(s.HasInstances());
  s.AddLastInstance();
  EXPECT_TRUE(s.HasInstances());
  EXPECT_TRUE(s.GetHasLastInstance());
  EXPECT_EQ(s.GetInstancesCount(), 0);
  EXPECT_FALSE(s.EmptySubcommand());
  EXPECT_FALSE(Commands({"X"}).EmptySubcommand());
  EXPECT_FALSE(s.GetHasInstance(1));
  s.AddInstances(1);
  s.AddInstances(3);
  EXPECT_TRUE(s.GetHasInstance(3));
  EXPECT_FALSE(s.GetHasInstance(2));
}

TEST(OMSSelector, InstanceBelowOneViolatesThePrecondition) {
  OMSSelector s;
  try {
    s.AddInstances(0);
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "backend/omsopmgr/OMSSelector: inst > 0");
    EXPECT_EQ(e.Value1(), 0);
  }
  EXPECT_THROW(s.AddInstances(-5), OMSException);
  EXPECT_EQ(s.GetInstancesCount(), 0);
}

TEST(OMSSelector, CommandsAndSubtypesIgnoreBlanksDashesAndCaseButNamesKeepBlanks) {
  EXPECT_TRUE(Commands({"T-Test"}).GetHasCommand("ttest"));
  EXPECT_TRUE(Commands({"TTEST"}).GetHasCommand("t-test"));
  EXPECT_TRUE(Commands({"Logistic Regression"}).GetHasCommand("LOGISTICREGRESSION"));
  EXPECT_TRUE(Subtypes({"CaseProcessingSummary"}).GetHasSubtype("Case Processing Summary"));
  EXPECT_TRUE(Subtypes({"case-processing summary"}).GetHasSubtype("CASEPROCESSINGSUMMARY"));
  EXPECT_FALSE(Subtypes({"Descriptive Statistics"}).GetHasSubtype("Descriptive"));
  // Names keep their blanks.
  EXPECT_TRUE(Names({"Mean Age"}).GetHasName("mean age"));
  EXPECT_FALSE(Names({"Mean Age"}).GetHasName("MeanAge"));
  EXPECT_FALSE(Names({"MeanAge"}).GetHasName("Mean Age"));
}

TEST(OMSSelector, FinalStarMatchesEveryKeyThatBeginsWithThePattern) {
  const OMSSelector s = Subtypes({"Desc*"});
  EXPECT_TRUE(s.GetHasSubtype("Descriptive Statistics"));
  EXPECT_TRUE(s.GetHasSubtype("desc"));
  EXPECT_FALSE(s.GetHasSubtype("Des"));
  EXPECT_FALSE(s.GetHasSubtype("Frequencies"));
  EXPECT_TRUE(Commands({"*"}).GetHasCommand("anything at all"));
  EXPECT_TRUE(Commands({"*"}).GetHasCommand(""));
  EXPECT_TRUE(Names({"Ä*"}).GetHasName("äpfel"));
}

TEST(OMSSelector, StarElsewhereIsAnOrdinaryCharacter) {
  const OMSSelector s = Names({"A*B"});
  EXPECT_FALSE(s.GetHasName("AXB"));
  EXPECT_FALSE(s.GetHasName("AB"));
  EXPECT_TRUE(s.GetHasName("a*b"));
  // Only the last star decides: "A*B*" is the prefix "A*B".
  EXPECT_TRUE(Names({"A*B*"}).GetHasName("a*bc"));
  EXPECT_FALSE(Names({"A*B*"}).GetHasName("axbc"));
}

TEST(OMSSelector, AnyPatternOfTheListMatchesAndAnEmptyListMatchesNothing) {
  const OMSSelector s = Commands({"Frequencies", "Desc*"});
  EXPECT_TRUE(s.GetHasCommand("frequencies"));
  EXPECT_TRUE(s.GetHasCommand("Descriptives"));
  EXPECT_FALSE(s.GetHasCommand("Crosstabs"));
  EXPECT_FALSE(OMSSelector().GetHasCommand("Crosstabs"));
  EXPECT_FALSE(OMSSelector().GetHasName(""));
}

TEST(OMSSelector, MatchesObjectCountsSubtypesForPivotTablesOnly) {
  OMSSelector s = Commands({"Frequencies"});
  s.AddSubtypes("Statistics");
  EXPECT_TRUE(s.MatchesObject(16, "Frequencies", "Statistics", "x"));
  EXPECT_FALSE(s.MatchesObject(16, "Frequencies", "Notes", "x"));
  EXPECT_TRUE(s.MatchesObject(32, "Frequencies", "", "x"));
  EXPECT_FALSE(s.MatchesObject(32, "Crosstabs", "", "x"));
  s.AddNames("Title");
  EXPECT_FALSE(s.MatchesObject(32, "Frequencies", "", "x"));
  EXPECT_TRUE(s.MatchesObject(32, "Frequencies", "", "title"));
}

TEST(OMSSelector, MatchesInShiftJisWithoutSplittingCharacters) {
  CodePage::SetCurrent("Shift_JIS");
  const std::string table = FromUtf8("表", "Shift_JIS");  // its second byte is a backslash
  OMSSelector s;
  s.AddNames(table + "*");
  s.AddCommands(FromUtf8("ｆｒｅｑ", "Shift_JIS"));
  EXPECT_TRUE(s.GetHasName(table + "1"));
  EXPECT_FALSE(s.GetHasName(FromUtf8("日本", "Shift_JIS")));
  EXPECT_TRUE(s.GetHasCommand(FromUtf8("ＦＲＥＱ", "Shift_JIS")));
  CodePage::SetCurrent("UTF-8");
}

TEST(OMSSelector, CopiesAreIndependent) {
  OMSSelector a = Commands({"A"});
  OMSSelector b(a);
  b.AddCommands("B");
  a = b;
  b.AddCommands("C");
  EXPECT_EQ(a.GetCommandsCount(), 2);
  EXPECT_EQ(b.GetCommandsCount(), 3);
}

TEST(OMSSelector, DoSwapBytesReversesInPlace) {
  std::uint32_t word = 0x01020304;
  OMSSelector::DoSwapBytes(&word, 4);
  EXPECT_EQ(word, 0x04030201u);
  unsigned char three[3] = {1, 2, 3};
  OMSSelector::DoSwapBytes(three, 3);
  EXPECT_EQ(three[0], 3);
  EXPECT_EQ(three[2], 1);
  OMSSelector::DoSwapBytes(three, 0);
  EXPECT_EQ(three[0], 3);
}
