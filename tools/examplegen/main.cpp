// examplegen: writes the bundled example streams into a folder (examples/ by default).
#include <filesystem>
#include <iostream>
#include <string>

#include "platform/errors/OMSException.h"
#include "tools/examplegen/OmExampleStreams.h"

int main(int argc, char** argv) {
  if (argc > 2) {
    std::cerr << "usage: examplegen [DIR]\n";
    return 2;
  }
  const std::filesystem::path dir = argc == 2 ? argv[1] : "examples";
  try {
    std::filesystem::create_directories(dir);
    for (const OmExampleStreams::Example& example : OmExampleStreams::All()) {
      const std::filesystem::path file = dir / (example.name + ".oms");
      example.stream.Save(file.string());
      std::cout << file.string() << ": " << example.stream.Records().size() << " records\n";
    }
  } catch (const std::exception& e) {
    std::cerr << "examplegen: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
