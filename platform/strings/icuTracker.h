// The locale facts of a session that cells need to compare and render their texts: an ICU locale,
// its collator and the code page of the texts. The factory session makes one from a procedure's
// (Unicode flag, locale) pair; cells and string tables keep only a pointer to it.
//
// Choices:
// - The locale text is POSIX-like: "de_DE", "de-DE", "ja_JP.Shift_JIS", "de_DE@euro". A code set
//   after "." names the code page; a modifier after "@" is dropped unless it holds ICU keywords
//   ("de@collation=phonebook"), which are kept. An empty locale is the root locale, never the
//   process default, so that results do not depend on the environment.
// - Unicode: the texts are UTF-8, whatever the code set says. Otherwise the code set, or when
//   there is none the usual Windows code page of the language (table in icuTracker.cpp),
//   "windows-1252" for languages not listed.
// - The collator is ICU's for the locale at its default (tertiary) strength.
// - A tracker is immutable once made; const use from several threads is safe.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <unicode/coll.h>
#include <unicode/locid.h>

class CodePage;

class icuTracker {
public:
  // Throws OMSException for a malformed locale text or an unknown or unusable code set.
  icuTracker(bool unicode, const std::string& locale);
  ~icuTracker();
  icuTracker(const icuTracker&) = delete;
  icuTracker& operator=(const icuTracker&) = delete;

  bool IsUnicode() const;
  const std::string& LocaleName() const;  // as given
  const icu::Locale& GetLocale() const;
  const icu::Collator& GetCollator() const;
  const CodePage& GetCodePage() const;    // "UTF-8" when Unicode
  const std::string& CodePageName() const;

  // Orders two texts of this tracker's code page as the locale sorts them: negative, 0, positive.
  int Compare(std::string_view a, std::string_view b) const;

  // Converts a text of this tracker's code page to UTF-8 for rendering, and back.
  std::string ToUtf8(std::string_view text) const;
  std::string FromUtf8(std::string_view utf8) const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
