#include "platform/strings/NuvaroMB.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/strings/CodePage.h"

namespace {

// Every code page we accept keeps the bytes below 0x80 as single ASCII characters, so texts made
// only of them take the short paths below.
bool IsAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

unsigned char AsciiLower(char c) {
  const auto u = static_cast<unsigned char>(c);
  return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + ('a' - 'A')) : u;
}

char AsciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - ('a' - 'A')) : c; }

int CompareAsciiFolded(std::string_view a, std::string_view b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char x = AsciiLower(a[i]);
    const unsigned char y = AsciiLower(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

icu::UnicodeString Folded(const CodePage& codePage, std::string_view text) {
  icu::UnicodeString u = codePage.Decode(text);
  u.foldCase(U_FOLD_CASE_DEFAULT);
  return u;
}

// The first n bytes of text, extended to the end of the character that byte n - 1 belongs to.
std::string_view PrefixOfWholeCharacters(const CodePage& codePage, std::string_view text,
                                         std::size_t n) {
  if (n >= text.size()) return text;
  if (IsAscii(text.substr(0, n))) return text.substr(0, n);
  std::size_t end = 0;
  for (const CodePage::Char& c : codePage.Split(text)) {
    if (c.offset >= n) break;
    end = c.offset + c.length;
  }
  return text.substr(0, end);
}

}  // namespace

int NuvaroMBstricmp_A(std::string_view a, std::string_view b) {
  return NuvaroMBstricmp_A(CodePage::Current(), a, b);
}

int NuvaroMBstricmp_A(const CodePage& codePage, std::string_view a, std::string_view b) {
  if (IsAscii(a) && IsAscii(b)) return CompareAsciiFolded(a, b);
  const int8_t order = Folded(codePage, a).compareCodePointOrder(Folded(codePage, b));
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

int NuvaroMBstrnicmp_A(std::string_view a, std::string_view b, std::size_t n) {
  return NuvaroMBstrnicmp_A(CodePage::Current(), a, b, n);
}

int NuvaroMBstrnicmp_A(const CodePage& codePage, std::string_view a, std::string_view b,
                       std::size_t n) {
  if (n == 0) return 0;
  return NuvaroMBstricmp_A(codePage, PrefixOfWholeCharacters(codePage, a, n),
                           PrefixOfWholeCharacters(codePage, b, n));
}

std::size_t NuvaroMBstrrchr_A(std::string_view text, char c) {
  return NuvaroMBstrrchr_A(CodePage::Current(), text, c);
}

std::size_t NuvaroMBstrrchr_A(const CodePage& codePage, std::string_view text, char c) {
  // In UTF-8 and single-byte code pages no byte of one character can be part of another.
  if (codePage.IsUtf8() || codePage.IsSingleByte() || IsAscii(text)) return text.rfind(c);
  std::size_t found = std::string_view::npos;
  for (const CodePage::Char& ch : codePage.Split(text))
    if (ch.length == 1 && text[ch.offset] == c) found = ch.offset;
  return found;
}

std::string& NuvaroMBstrupr_A(std::string& text) {
  return NuvaroMBstrupr_A(CodePage::Current(), text);
}

std::string& NuvaroMBstrupr_A(const CodePage& codePage, std::string& text) {
  if (IsAscii(text)) {
    for (char& c : text) c = AsciiUpper(c);
    return text;
  }
  std::string upper;
  upper.reserve(text.size());
  std::string encoded;
  for (const CodePage::Char& ch : codePage.Split(text)) {
    const std::string_view bytes = std::string_view(text).substr(ch.offset, ch.length);
    if (!ch.valid || (ch.length == 1 && IsAscii(bytes))) {
      upper.push_back(ch.valid ? AsciiUpper(bytes[0]) : bytes[0]);
      continue;
    }
    const icu::UnicodeString original = codePage.Decode(bytes);
    icu::UnicodeString capital = original;
    capital.toUpper(icu::Locale::getRoot());
    if (capital != original && codePage.TryEncode(capital, encoded))
      upper += encoded;
    else
      upper += bytes;
  }
  text = std::move(upper);
  return text;
}

void NuvaroMBU8ToGeneric(std::string& out, std::string_view utf8In) {
  NuvaroMBU8ToGeneric(CodePage::Current(), out, utf8In);
}

void NuvaroMBU8ToGeneric(const CodePage& codePage, std::string& out, std::string_view utf8In) {
  out = codePage.FromUtf8(utf8In);
}
