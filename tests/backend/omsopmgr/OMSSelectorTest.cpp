#include "backend/omsopmgr/OMSSelector.h"

#include <gtest/gtest.h>

#include "platform/strings/CodePage.h"

namespace {

// A subcommand whose list `add` (commands, subtypes or names) holds the patterns.
OMSSelector With(void (OMSSelector::*add)(const std::string&), std::initializer_list<const char*> patterns) {
  OMSSelector s;
  for (const char* p : patterns) (s.*add)(p);
  return s;
}

}  // namespace

TEST(OMSSelector, FinalStarMatchesEveryKeyThatBeginsWithThePattern) {
  const OMSSelector s = With(&OMSSelector::AddSubtypes, {"Desc*"});
  EXPECT_TRUE(s.GetHasSubtype("Descriptive Statistics"));
  EXPECT_TRUE(s.GetHasSubtype("desc"));
  EXPECT_FALSE(s.GetHasSubtype("Des"));
  EXPECT_FALSE(s.GetHasSubtype("Frequencies"));
  EXPECT_TRUE(With(&OMSSelector::AddCommands, {"*"}).GetHasCommand("anything at all"));
  EXPECT_TRUE(With(&OMSSelector::AddCommands, {"*"}).GetHasCommand(""));
  EXPECT_TRUE(With(&OMSSelector::AddNames, {"Ä*"}).GetHasName("äpfel"));
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
