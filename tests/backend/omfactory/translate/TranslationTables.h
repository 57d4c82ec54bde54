// String tables for translation tests: the shipped English and German tables, and scratch tables
// written by a test and removed when it ends.
#pragma once

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

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

// One language folder holding an omfactory.stt with the given text, removed with the object.
class ScratchTable {
public:
  explicit ScratchTable(const std::string& text) {
    static std::atomic<int> counter{0};
    _folder = std::filesystem::temp_directory_path() /
              ("omf-xlate-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(_folder);
    std::filesystem::create_directories(_folder);
    std::ofstream(_folder / "omfactory.stt", std::ios::binary | std::ios::trunc) << text;
  }
  ~ScratchTable() {
    std::error_code ignored;
    std::filesystem::remove_all(_folder, ignored);
  }
  ScratchTable(const ScratchTable&) = delete;
  ScratchTable& operator=(const ScratchTable&) = delete;

  std::string Folder() const { return _folder.generic_string(); }

private:
  std::filesystem::path _folder;
};
