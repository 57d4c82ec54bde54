// The output languages that the OLANG setting may name, with the string-table folder of each. A
// setting names a language by its two-letter code, by the first three letters of its keyword or
// by its full code ("pt_BR"); the session switches its string tables to the folder found.
#pragma once

#include <string_view>

struct OmLanguage {
  const char* keyword;
  const char* folder;
  const char* code;
};

// The entry that an OLANG value selects (the first that matches, in table order), or null.
const OmLanguage* OmFindLanguage(std::string_view value);
