// A scratch folder of string-table files for one test, removed when the test ends.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

class TempTables {
public:
  TempTables() {
    static std::atomic<int> counter{0};
    _root = std::filesystem::temp_directory_path() /
            ("omf-strtab-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(_root);
    std::filesystem::create_directories(_root);
  }
  ~TempTables() {
    std::error_code ignored;
    std::filesystem::remove_all(_root, ignored);
  }
  TempTables(const TempTables&) = delete;
  TempTables& operator=(const TempTables&) = delete;

  std::string Root() const { return _root.generic_string(); }
  std::string Path(const std::string& relative) const { return (_root / relative).generic_string(); }

  // Writes text to root/relative, creating folders; returns the file's path.
  std::string Write(const std::string& relative, const std::string& text) const {
    const auto file = _root / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
    return file.generic_string();
  }

private:
  std::filesystem::path _root;
};
