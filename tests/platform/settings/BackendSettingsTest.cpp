#include "platform/settings/BackendSettings.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

// Every setting, in the order procedure|translated|language|code page|locale|unicode|
// bootstrapped|fast tables|max cells, so that one comparison shows what a text changed.
std::string Summary(const BackendSettings& s) {
  return s.getProcedureName() + "|" + s.getTranslatedName() + "|" + s.getOutputLanguage() + "|" +
         s.getCodePage() + "|" + s.getLocale() + "|" + std::to_string(s.getUnicode()) + "|" +
         std::to_string(s.getBootstrapped()) + "|" + std::to_string(s.getFastTables()) + "|" +
         std::to_string(s.getMaxCells());
}

const char* const kDefaults = "||en|UTF-8|en_US|1|0|0|0";

TEST(BackendSettingsTest, TextsSetTheirKeysAndLeaveTheOthersAtTheDefaults) {
  const struct {
    const char* what;
    const char* text;
    std::string expected;
  } cases[] = {
      {"empty", "", kDefaults},
      {"every key, whatever its case",
       "PROCEDURE=Descriptives\nTranslated=Deskriptive Statistik\nlanguage=zh-tw\n"
       "CodePage=windows-1252\nLOCALE=de_DE\nUnicode=0\nbootSTRAPPED=1\nFastTables=1\n"
       "maxCells=4000000000\n",
       "Descriptives|Deskriptive Statistik|zh-tw|windows-1252|de_DE|0|1|1|4000000000"},
      {"carriage returns, comments, blank lines and unknown keys skipped",
       "# procedure=Commented\r\n\r\n\nprocedure=Crosstabs\r\ncolour=blue\r\n"
       "no equals sign here\r\nmaxcells=12\r",
       "Crosstabs||en|UTF-8|en_US|1|0|0|12"},
      {"the value is everything after the first equals sign", "translated= a=b = c \nprocedure=\n",
       "| a=b = c |en|UTF-8|en_US|1|0|0|0"},
      {"a later line for the same key wins",
       "language=de\nLANGUAGE=fr\nbootstrapped=1\nBootstrapped=0\n", "||fr|UTF-8|en_US|1|0|0|0"},
      {"keys are matched whole without trimming",
       "procedure =Spaced\n procedure=Indented\nprocedures=Plural\n", kDefaults},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    BackendSettings settings;
    settings.setSettings(c.text);
    EXPECT_EQ(Summary(settings), c.expected);
  }
}

TEST(BackendSettingsTest, EachCallStartsFromTheDefaults) {
  BackendSettings settings;
  settings.setSettings("procedure=First\nfasttables=1\nunicode=0\nmaxcells=5\nlocale=de_DE\n");
  settings.setSettings("language=de\n");
  EXPECT_EQ(Summary(settings), "||de|UTF-8|en_US|1|0|0|0");
}

TEST(BackendSettingsTest, MalformedNumbersNameTheKeyAndLine) {
  const struct {
    const char* text;
    const char* key;
    double line;
  } cases[] = {
      {"maxcells=12a", "maxcells", 1},         {"procedure=x\nmaxcells=", "maxcells", 2},
      {"maxcells=-1", "maxcells", 1},          {"maxcells= 5", "maxcells", 1},
      {"MaxCells=99999999999", "maxcells", 1}, {"\n\nunicode=yes", "unicode", 3},
      {"bootstrapped=2", "bootstrapped", 1},   {"fasttables=", "fasttables", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    BackendSettings settings;
    try {
      settings.setSettings(c.text);
      ADD_FAILURE() << "accepted";
    } catch (const OMSException& e) {
      EXPECT_EQ(e.Message(),
                std::string("BackendSettings::setSettings -- malformed value for key ") + c.key);
      EXPECT_EQ(e.Value1(), c.line);
    }
  }
}

TEST(BackendSettingsTest, FailedParseKeepsTheEarlierSettings) {
  BackendSettings settings;
  settings.setSettings("procedure=Kept\nmaxcells=7\n");
  EXPECT_THROW(settings.setSettings("procedure=Lost\nmaxcells=many\n"), OMSException);
  EXPECT_EQ(Summary(settings), "Kept||en|UTF-8|en_US|1|0|0|7");
}

TEST(BackendSettingsTest, CopiesAreIndependent) {
  BackendSettings original;
  original.setSettings("procedure=One\n");
  BackendSettings copy = original;
  original.setSettings("procedure=Two\n");
  EXPECT_EQ(copy.getProcedureName(), "One");
  copy = original;
  EXPECT_EQ(copy.getProcedureName(), "Two");
}

} // namespace
