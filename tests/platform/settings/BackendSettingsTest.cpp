#include "platform/settings/BackendSettings.h"

#include <string>

#include <gmock/gmock.h>
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

TEST(BackendSettingsTest, EachCallStartsFromTheDefaults) {
  BackendSettings settings;
  settings.setSettings("procedure=First\nfasttables=1\nunicode=0\nmaxcells=5\nlocale=de_DE\n");
  settings.setSettings("language=de\n");
  EXPECT_EQ(Summary(settings), "||de|UTF-8|en_US|1|0|0|0");
}

TEST(BackendSettingsTest, MalformedNumbersNameTheKeyAndLine) {
  const struct { const char* text; const char* key; int line; } cases[] = {
      {"maxcells=12a", "maxcells", 1},         {"procedure=x\nmaxcells=", "maxcells", 2},
      {"maxcells=-1", "maxcells", 1},          {"maxcells= 5", "maxcells", 1},
      {"MaxCells=99999999999", "maxcells", 1}, {"\n\nunicode=yes", "unicode", 3},
      {"bootstrapped=2", "bootstrapped", 1},   {"fasttables=", "fasttables", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT([&] { BackendSettings().setSettings(c.text); },
                testing::ThrowsMessage<OMSException>(testing::StrEq(
                    std::string("BackendSettings::setSettings -- malformed value for key ") +
                    c.key + ", value 1 == " + std::to_string(c.line) + ", value 2 == 0")));
  }
}

TEST(BackendSettingsTest, FailedParseKeepsTheEarlierSettingsAndCopiesAreIndependent) {
  BackendSettings settings;
  settings.setSettings("procedure=Kept\nmaxcells=7\n");
  EXPECT_THROW(settings.setSettings("procedure=Lost\nmaxcells=many\n"), OMSException);
  EXPECT_EQ(Summary(settings), "Kept||en|UTF-8|en_US|1|0|0|7");
  BackendSettings copy = settings;
  settings.setSettings("procedure=Two\n");
  EXPECT_EQ(copy.getProcedureName(), "Kept");
  copy = settings;
  EXPECT_EQ(copy.getProcedureName(), "Two");
}

} // namespace
