// The server's multibyte string functions: case-insensitive comparison, upper-casing, search for a
// character and conversion from UTF-8, in the code page given, or without one in this thread's
// current code page (CodePage::Current, which a session sets to its own while it works). The OMS
// records, the factory session and the pooling tools call them.
//
// Choices: a multibyte character is never split. Upper-casing uses Unicode full case mapping
// (language-neutral, so "ß" becomes "SS"); a character whose capital the code page cannot hold stays
// as it is. Comparisons use Unicode full case folding and then code point order. Bytes that form no
// character are compared by value and never case-mapped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class CodePage;

// Compares two texts without regard to case: negative, 0 when equal, positive.
int NuvaroMBstricmp_A(std::string_view a, std::string_view b);
int NuvaroMBstricmp_A(const CodePage& codePage, std::string_view a, std::string_view b);

// Compares the first n bytes of each text without regard to case; a character that begins within
// those n bytes is compared whole. n == 0 compares equal.
int NuvaroMBstrnicmp_A(std::string_view a, std::string_view b, std::size_t n);
int NuvaroMBstrnicmp_A(const CodePage& codePage, std::string_view a, std::string_view b,
                       std::size_t n);

// The byte offset of the last character of text that is the one-byte character c, never a byte
// inside a multibyte character; std::string_view::npos when there is none.
std::size_t NuvaroMBstrrchr_A(std::string_view text, char c);
std::size_t NuvaroMBstrrchr_A(const CodePage& codePage, std::string_view text, char c);

// Upper-cases text in place (its length may change: "ß" becomes "SS"); returns text.
std::string& NuvaroMBstrupr_A(std::string& text);
std::string& NuvaroMBstrupr_A(const CodePage& codePage, std::string& text);

// Converts UTF-8 text to the current code page into out; characters that the code page cannot
// hold become "?", malformed UTF-8 becomes U+FFFD (or "?").
void NuvaroMBU8ToGeneric(std::string& out, std::string_view utf8In);
void NuvaroMBU8ToGeneric(const CodePage& codePage, std::string& out, std::string_view utf8In);
