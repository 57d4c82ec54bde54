// A code page of the server: the encoding of the bytes that procedures send and that output
// objects store. Splits texts into whole characters and converts them to and from Unicode with ICU;
// the multibyte string functions (NuvaroMB.h) and icuTracker work through it.
//
// Choices:
// - Only byte-oriented, ASCII-compatible code pages are accepted ("UTF-8", "windows-1252",
//   "Shift_JIS", "GBK", "Big5", "EUC-JP", "ISO-8859-x", ...): every byte below 0x80 is a character
//   of its own and the printable ones are ASCII. Texts of the server are C strings whose syntax
//   characters ("*", " ", "-") are ASCII; UTF-16/32, EBCDIC and shift-state encodings are rejected.
// - A name is any ICU converter name or alias; a name made only of digits ("1252", "932") means
//   the Windows code page of that number.
// - Bytes that form no character of the code page are kept one by one: they never merge with their
//   neighbours, are never case-mapped, and convert to U+FFFD.
// - Code pages are loaded once and live for the whole process, so references to them stay valid.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/unistr.h>

class CodePage {
public:
  // One character of a text: its bytes and what they decode to. A byte that forms no character is
  // a character of length 1 with `valid` false.
  struct Char {
    std::size_t offset = 0;  // first byte in the text
    std::size_t length = 0;  // bytes, at least 1
    bool valid = false;
  };

  // The code page of that name, loaded on first use. Throws OMSException for a name that ICU does
  // not know or a code page that is not byte-oriented and ASCII-compatible.
  static const CodePage& Get(std::string_view name);

  // This thread's code page, "UTF-8" until SetCurrent changes it: the string functions of
  // NuvaroMB.h without a code page argument work in it. Each thread has its own, so sessions on
  // other threads never switch it; a session makes its own current for the length of each call
  // (Scope) and changes it when a procedure names another.
  static const CodePage& Current();
  static void SetCurrent(std::string_view name);
  static void SetCurrent(const CodePage& page);

  // Makes page this thread's current code page until the scope ends, then restores the one
  // before. (Inline: a session opens one around every message it handles.)
  class Scope {
  public:
    explicit Scope(const CodePage& page) : _previous(_current) { _current = &page; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() { _current = _previous; }

  private:
    const CodePage* _previous;
  };

  CodePage(const CodePage&) = delete;
  CodePage& operator=(const CodePage&) = delete;
  ~CodePage();

  const std::string& Name() const;     // as given to Get
  const std::string& IcuName() const;  // ICU's canonical converter name
  bool IsUtf8() const;
  bool IsSingleByte() const;
  int MaxCharSize() const;

  // The characters of text, in order; their lengths add up to text.size().
  std::vector<Char> Split(std::string_view text) const;

  // Decodes text. A byte that forms no character becomes U+DC00 + byte (a lone surrogate), so
  // that it compares by its value and stays apart from every real character.
  icu::UnicodeString Decode(std::string_view text) const;

  // Encodes one character's worth of Unicode text; false when the code page cannot represent
  // all of it (out is then unspecified).
  bool TryEncode(const icu::UnicodeString& text, std::string& out) const;

  // Whole-text conversions: bytes that form no character become U+FFFD; characters that the code
  // page cannot represent become "?".
  std::string ToUtf8(std::string_view text) const;
  std::string FromUtf8(std::string_view utf8) const;

private:
  struct Data;
  explicit CodePage(std::string_view name);
  // Each thread's current code page (null: not yet asked for, UTF-8): sessions on other threads
  // never see it change.
  static inline thread_local const CodePage* _current = nullptr;
  std::unique_ptr<Data> _my;
};

// Converts text of the named code page to UTF-8 (renderers, tools).
std::string ToUtf8(std::string_view text, std::string_view codePage);
// Converts UTF-8 text to the named code page.
std::string FromUtf8(std::string_view utf8, std::string_view codePage);
