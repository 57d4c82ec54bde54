// omf_benchstream: writes the benchmarks' one-table stream to a file, so that the tools can be
// measured on it (bench/RESULTS.md, "Rendering memory"):
//   omf_benchstream CELLS FILE [--decorated]      CELLS a multiple of 1,000
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "bench/OmBenchStreams.h"

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4 || (argc == 4 && std::string(argv[3]) != "--decorated")) {
    std::cerr << "usage: omf_benchstream CELLS FILE [--decorated]\n";
    return 2;
  }
  try {
    OmBenchStreams::TableOptions options;
    options.decorated = argc == 4;
    const auto bytes = OmBenchStreams::NumericTable(OmBenchStreams::ShapeFor(std::atoll(argv[1])), options);
    std::ofstream file(argv[2], std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    if (!file.flush()) {
      std::cerr << "omf_benchstream: " << argv[2] << ": cannot be written\n";
      return 1;
    }
    std::cout << argv[2] << ": " << bytes.size() << " bytes\n";
  } catch (const std::exception& e) {
    std::cerr << "omf_benchstream: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
