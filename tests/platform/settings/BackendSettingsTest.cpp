#include "platform/settings/BackendSettings.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

TEST(BackendSettingsTest, EmptyTextGivesTheDefaults) {
  BackendSettings settings;
  settings.setSettings("");
  EXPECT_EQ(settings.getProcedureName(), "");
  EXPECT_EQ(settings.getTranslatedName(), "");
  EXPECT_EQ(settings.getOutputLanguage(), "en");
  EXPECT_EQ(settings.getCodePage(), "UTF-8");
  EXPECT_EQ(settings.getLocale(), "en_US");
  EXPECT_TRUE(settings.getUnicode());
  EXPECT_FALSE(settings.getBootstrapped());
  EXPECT_FALSE(settings.getFastTables());
  EXPECT_EQ(settings.getMaxCells(), 0u);
}

TEST(BackendSettingsTest, ReadsEveryKeyWhateverItsCase) {
  BackendSettings settings;
  settings.setSettings(
      "PROCEDURE=Descriptives\n"
      "Translated=Deskriptive Statistik\n"
      "language=zh-tw\n"
      "CodePage=windows-1252\n"
      "LOCALE=de_DE\n"
      "Unicode=0\n"
      "bootSTRAPPED=1\n"
      "FastTables=1\n"
      "maxCells=4000000000\n");
  EXPECT_EQ(settings.getProcedureName(), "Descriptives");
  EXPECT_EQ(settings.getTranslatedName(), "Deskriptive Statistik");
  EXPECT_EQ(settings.getOutputLanguage(), "zh-tw");
  EXPECT_EQ(settings.getCodePage(), "windows-1252");
  EXPECT_EQ(settings.getLocale(), "de_DE");
  EXPECT_FALSE(settings.getUnicode());
  EXPECT_TRUE(settings.getBootstrapped());
  EXPECT_TRUE(settings.getFastTables());
  EXPECT_EQ(settings.getMaxCells(), 4000000000u);
}

TEST(BackendSettingsTest, CarriageReturnsCommentsBlankLinesAndUnknownKeysAreSkipped) {
  BackendSettings settings;
  settings.setSettings(
      "# procedure=Commented\r\n"
      "\r\n"
      "\n"
      "procedure=Crosstabs\r\n"
      "colour=blue\r\n"
      "no equals sign here\r\n"
      "maxcells=12\r");
  EXPECT_EQ(settings.getProcedureName(), "Crosstabs");
  EXPECT_EQ(settings.getMaxCells(), 12u);
}

TEST(BackendSettingsTest, ValueIsEverythingAfterTheFirstEqualsSign) {
  BackendSettings settings;
  settings.setSettings("translated= a=b = c \nprocedure=\n");
  EXPECT_EQ(settings.getTranslatedName(), " a=b = c ");
  EXPECT_EQ(settings.getProcedureName(), "");
}

TEST(BackendSettingsTest, LaterLineForTheSameKeyWins) {
  BackendSettings settings;
  settings.setSettings("language=de\nLANGUAGE=fr\nbootstrapped=1\nBootstrapped=0\n");
  EXPECT_EQ(settings.getOutputLanguage(), "fr");
  EXPECT_FALSE(settings.getBootstrapped());
}

TEST(BackendSettingsTest, KeysAreMatchedWholeWithoutTrimming) {
  BackendSettings settings;
  settings.setSettings("procedure =Spaced\n procedure=Indented\nprocedures=Plural\n");
  EXPECT_EQ(settings.getProcedureName(), "");
}

TEST(BackendSettingsTest, EachCallStartsFromTheDefaults) {
  BackendSettings settings;
  settings.setSettings("procedure=First\nfasttables=1\n");
  settings.setSettings("language=de\n");
  EXPECT_EQ(settings.getProcedureName(), "");
  EXPECT_FALSE(settings.getFastTables());
  EXPECT_EQ(settings.getOutputLanguage(), "de");
}

TEST(BackendSettingsTest, MalformedNumbersNameTheKeyAndLine) {
  const struct {
    const char* text;
    const char* message;
    double line;
  } cases[] = {
      {"maxcells=12a", "BackendSettings::setSettings -- malformed value for key maxcells", 1},
      {"procedure=x\nmaxcells=", "BackendSettings::setSettings -- malformed value for key maxcells",
       2},
      {"maxcells=-1", "BackendSettings::setSettings -- malformed value for key maxcells", 1},
      {"maxcells= 5", "BackendSettings::setSettings -- malformed value for key maxcells", 1},
      {"MaxCells=99999999999", "BackendSettings::setSettings -- malformed value for key maxcells",
       1},
      {"\n\nunicode=yes", "BackendSettings::setSettings -- malformed value for key unicode", 3},
      {"bootstrapped=2", "BackendSettings::setSettings -- malformed value for key bootstrapped", 1},
      {"fasttables=", "BackendSettings::setSettings -- malformed value for key fasttables", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    BackendSettings settings;
    try {
      settings.setSettings(c.text);
      ADD_FAILURE() << "accepted";
    } catch (const OMSException& e) {
      EXPECT_EQ(e.Message(), c.message);
      EXPECT_EQ(e.Value1(), c.line);
    }
  }
}

TEST(BackendSettingsTest, FailedParseKeepsTheEarlierSettings) {
  BackendSettings settings;
  settings.setSettings("procedure=Kept\nmaxcells=7\n");
  EXPECT_THROW(settings.setSettings("procedure=Lost\nmaxcells=many\n"), OMSException);
  EXPECT_EQ(settings.getProcedureName(), "Kept");
  EXPECT_EQ(settings.getMaxCells(), 7u);
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
