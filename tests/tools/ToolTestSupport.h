// Helpers shared by the tool tests: where the repository is, temporary files, and running the
// command line in-process.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/omfactory/OmTool.h"

namespace tooltest {

// The repository root: OMF_SOURCE_DIR as ctest sets it, else the folder this build came from.
inline std::string SourceDir() {
  if (const char* dir = std::getenv("OMF_SOURCE_DIR"); dir != nullptr && *dir != '\0') return dir;
  return OMF_SOURCE_DIR_DEFAULT;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

// A folder of its own for one test, removed with the object.
class TempDir {
public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "omftool-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const char* made = mkdtemp(name.data());
    _path = made != nullptr ? made : pattern;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(_path, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::string File(const std::string& name) const { return (std::filesystem::path(_path) / name).string(); }
  const std::string& Path() const { return _path; }

private:
  std::string _path;
};

// The result of one command line run in-process.
struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs `omfactory args...` as if installed in the repository's build folder, so that the
// default string tables are the repository's.
inline Result Tool(const std::vector<std::string>& args) {
  std::ostringstream out;
  std::ostringstream err;
  Result run;
  run.status = OmTool::Main(args, out, err, SourceDir() + "/build/test/tools/omfactory/omfactory");
  run.out = out.str();
  run.err = err.str();
  return run;
}

// Runs the built executable in a process of its own (state that one session leaves behind in
// this process cannot leak into it), from folder dir, its standard error sent to errFile.
inline Result Executable(const std::string& executable, const std::vector<std::string>& args,
                         const std::string& dir, const std::string& errFile) {
  auto quote = [](const std::string& s) {
    std::string q = "'";
    for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
  };
  std::string command = "cd " + quote(dir) + " && " + quote(executable);
  for (const std::string& a : args) command += " " + quote(a);
  command += " 2>" + quote(errFile);
  Result run;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) run.out.append(buffer, n);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  run.err = ReadFile(errFile);
  return run;
}

inline std::string Example(const std::string& name) { return SourceDir() + "/examples/" + name + ".oms"; }

}  // namespace tooltest
