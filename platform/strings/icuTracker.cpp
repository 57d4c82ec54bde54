#include "platform/strings/icuTracker.h"

#include <cstring>

#include "platform/errors/OMSException.h"
#include "platform/strings/CodePage.h"

namespace {

// The code page that texts of a language use when the session is not Unicode and the locale
// names no code set: the language's Windows code page. A row with a region or script applies
// only to it and comes before the language's general row.
struct LegacyCodePage {
  const char* language;
  const char* regionOrScript;
  const char* codePage;
};

constexpr LegacyCodePage kLegacyCodePages[] = {
    {"ja", "",     "Shift_JIS"},
    {"zh", "TW",   "Big5"},
    {"zh", "HK",   "Big5"},
    {"zh", "MO",   "Big5"},
    {"zh", "Hant", "Big5"},
    {"zh", "",     "GBK"},
    {"ko", "",     "windows-949"},
    {"th", "",     "windows-874"},
    {"vi", "",     "windows-1258"},
    {"el", "",     "windows-1253"},
    {"tr", "",     "windows-1254"},
    {"az", "",     "windows-1254"},
    {"he", "",     "windows-1255"},
    {"iw", "",     "windows-1255"},
    {"ar", "",     "windows-1256"},
    {"fa", "",     "windows-1256"},
    {"ur", "",     "windows-1256"},
    {"et", "",     "windows-1257"},
    {"lt", "",     "windows-1257"},
    {"lv", "",     "windows-1257"},
    {"ru", "",     "windows-1251"},
    {"uk", "",     "windows-1251"},
    {"be", "",     "windows-1251"},
    {"bg", "",     "windows-1251"},
    {"mk", "",     "windows-1251"},
    {"sr", "Latn", "windows-1250"},
    {"sr", "",     "windows-1251"},
    {"pl", "",     "windows-1250"},
    {"cs", "",     "windows-1250"},
    {"sk", "",     "windows-1250"},
    {"hu", "",     "windows-1250"},
    {"sl", "",     "windows-1250"},
    {"hr", "",     "windows-1250"},
    {"bs", "",     "windows-1250"},
    {"ro", "",     "windows-1250"},
    {"sq", "",     "windows-1250"},
};

constexpr const char* kDefaultLegacyCodePage = "windows-1252";

const char* LegacyCodePageOf(const icu::Locale& locale) {
  for (const LegacyCodePage& row : kLegacyCodePages) {
    if (std::strcmp(row.language, locale.getLanguage()) != 0) continue;
    if (row.regionOrScript[0] == '\0' || std::strcmp(row.regionOrScript, locale.getCountry()) == 0 ||
        std::strcmp(row.regionOrScript, locale.getScript()) == 0)
      return row.codePage;
  }
  return kDefaultLegacyCodePage;
}

bool IsNameChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-';
}

struct ParsedLocale {
  std::string icuName;  // language, script, region, variant, keywords
  std::string codeSet;  // "" when the text names none
};

// Splits "ll_RR.codeset@modifier" into the part ICU reads and the code set.
ParsedLocale Parse(const std::string& text) {
  const std::string where = "icuTracker::icuTracker -- malformed locale \"" + text + "\"";
  std::string base = text;
  std::string keywords;
  if (auto at = base.find('@'); at != std::string::npos) {
    const std::string modifier = base.substr(at + 1);
    base.erase(at);
    if (modifier.find('=') != std::string::npos) {
      for (char c : modifier)
        if (!IsNameChar(c) && c != '=' && c != ';') throw OMSException(where);
      keywords = "@" + modifier;
    } else {
      for (char c : modifier)
        if (!IsNameChar(c)) throw OMSException(where);
    }
  }
  ParsedLocale parsed;
  if (auto dot = base.find('.'); dot != std::string::npos) {
    parsed.codeSet = base.substr(dot + 1);
    base.erase(dot);
    if (parsed.codeSet.empty()) throw OMSException(where);
  }
  for (char c : base)
    if (!IsNameChar(c)) throw OMSException(where);
  parsed.icuName = base + keywords;
  return parsed;
}

}  // namespace

struct icuTracker::Data {
  bool unicode = true;
  std::string localeName;
  icu::Locale locale;
  std::unique_ptr<icu::Collator> collator;
  const CodePage* codePage = nullptr;  // lives for the whole process
};

icuTracker::icuTracker(bool unicode, const std::string& locale) : _my(std::make_unique<Data>()) {
  _my->unicode = unicode;
  _my->localeName = locale;
  const ParsedLocale parsed = Parse(locale);
  _my->locale = parsed.icuName.empty() ? icu::Locale::getRoot() : icu::Locale(parsed.icuName.c_str());
  if (_my->locale.isBogus())
    throw OMSException("icuTracker::icuTracker -- malformed locale \"" + locale + "\"");
  UErrorCode status = U_ZERO_ERROR;
  _my->collator.reset(icu::Collator::createInstance(_my->locale, status));
  if (U_FAILURE(status) || !_my->collator)
    throw OMSException("icuTracker::icuTracker -- no collator for locale \"" + locale + "\"");
  if (unicode)
    _my->codePage = &CodePage::Get("UTF-8");
  else if (!parsed.codeSet.empty())
    _my->codePage = &CodePage::Get(parsed.codeSet);
  else
    _my->codePage = &CodePage::Get(LegacyCodePageOf(_my->locale));
}

icuTracker::~icuTracker() = default;

bool icuTracker::IsUnicode() const { return _my->unicode; }
const std::string& icuTracker::LocaleName() const { return _my->localeName; }
const icu::Locale& icuTracker::GetLocale() const { return _my->locale; }
const icu::Collator& icuTracker::GetCollator() const { return *_my->collator; }
const CodePage& icuTracker::GetCodePage() const { return *_my->codePage; }
const std::string& icuTracker::CodePageName() const { return _my->codePage->Name(); }

int icuTracker::Compare(std::string_view a, std::string_view b) const {
  UErrorCode status = U_ZERO_ERROR;
  const UCollationResult order =
      _my->collator->compare(_my->codePage->Decode(a), _my->codePage->Decode(b), status);
  if (U_FAILURE(status)) throw OMSException("icuTracker::Compare -- collation failed");
  return order == UCOL_LESS ? -1 : (order == UCOL_GREATER ? 1 : 0);
}

std::string icuTracker::ToUtf8(std::string_view text) const { return _my->codePage->ToUtf8(text); }

std::string icuTracker::FromUtf8(std::string_view utf8) const {
  return _my->codePage->FromUtf8(utf8);
}
