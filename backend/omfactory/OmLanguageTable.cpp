#include "backend/omfactory/OmLanguageTable.h"

#include <string>

#include "platform/strings/NuvaroMB.h"

namespace {

constexpr OmLanguage kLanguages[] = {
    {"GERMAN",   "lang/de",    "de"},
    {"ENGLISH",  "lang/en",    "en"},
    {"SPANISH",  "lang/es",    "es"},
    {"FRENCH",   "lang/fr",    "fr"},
    {"ITALIAN",  "lang/it",    "it"},
    {"JAPANESE", "lang/ja",    "ja"},
    {"KOREAN",   "lang/ko",    "ko"},
    {"POLISH",   "lang/pl",    "pl"},
    {"RUSSIAN",  "lang/ru",    "ru"},
    {"TCHINESE", "lang/zh_TW", "zh-tw"},
    {"SCHINESE", "lang/zh_CN", "zh-cn"},
    {"BPORTUGU", "lang/pt_BR", "pt_BR"},
};

bool Matches(const std::string& value, const OmLanguage& language) {
  if (value.size() <= 2) {
    return NuvaroMBstricmp_A(value, std::string_view(language.code).substr(0, 2)) == 0;
  }
  return NuvaroMBstrnicmp_A(value, language.keyword, 3) == 0 ||
         NuvaroMBstrnicmp_A(value, language.code, 5) == 0;
}

}  // namespace

const OmLanguage* OmFindLanguage(std::string_view value) {
  std::string upper(value);
  NuvaroMBstrupr_A(upper);
  for (const OmLanguage& language : kLanguages) {
    if (Matches(upper, language)) return &language;
  }
  return nullptr;
}
