// omfactory: renders recorded output message streams, or lists their records.
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tools/omfactory/OmTool.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  // The string tables are looked for beside the running program, wherever it was started from.
  std::error_code ec;
  std::string executable = std::filesystem::read_symlink("/proc/self/exe", ec).string();
  if (ec || executable.empty()) executable = argc > 0 ? argv[0] : "";
  return OmTool::Main(args, std::cout, std::cerr, executable);
}
