// String tables for translation tests: the shipped tables of the source tree.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

// The shipped tables' root (stringtables/ of the source tree). ctest names the source tree in
// OMF_SOURCE_DIR; a binary run by hand finds it from this file's own path.
inline std::string ShippedStringTables() {
  if (const char* source = std::getenv("OMF_SOURCE_DIR"); source != nullptr && *source != '\0') {
    return (std::filesystem::path(source) / "stringtables").generic_string();
  }
  const std::filesystem::path here(__FILE__);  // tests/backend/omfactory/translate/this file
  return (here.parent_path().parent_path().parent_path().parent_path().parent_path() /
          "stringtables")
      .generic_string();
}
