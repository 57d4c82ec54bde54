// The bundled examples against what the code makes of them: each stream file is what the example
// generator writes, and each renders to its golden JSON. When a change is meant to alter them,
// tools/regen-golden.sh rewrites both; the golden files are never edited by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/tools/ToolTestSupport.h"
#include "tools/examplegen/OmExampleStreams.h"

namespace {

namespace fs = std::filesystem;

const char* const kRegenerate = "if the change is intended, run tools/regen-golden.sh and review git diff";

std::string GoldenDir() { return tooltest::SourceDir() + "/tests/tools/golden"; }

std::set<std::string> Names(const std::string& dir, const std::string& extension) {
  std::set<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() == extension) names.insert(entry.path().stem().string());
  }
  return names;
}

// The first line where two texts differ, for a readable failure.
std::string FirstDifference(const std::string& a, const std::string& b) {
  const auto [ia, ib] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  const std::size_t at = std::size_t(ia - a.begin());
  const std::size_t start = a.rfind('\n', at == 0 ? 0 : at - 1);
  const std::size_t from = start == std::string::npos ? 0 : start + 1;
  auto line = [from](const std::string& s) { return s.substr(from, s.find('\n', from) - from); };
  return "expected: " + line(b) + "\n  actual: " + line(a);
}

TEST(OmGolden, EveryExampleIsWhatTheGeneratorWrites) {
  const std::vector<OmExampleStreams::Example> all = OmExampleStreams::All();
  std::set<std::string> generated;
  for (const OmExampleStreams::Example& example : all) {
    generated.insert(example.name);
    const std::vector<std::uint8_t> bytes = example.stream.FileBytes();
    const std::string committed = tooltest::ReadFile(tooltest::Example(example.name));
    EXPECT_TRUE(committed == std::string(bytes.begin(), bytes.end()))
        << "examples/" << example.name << ".oms differs from the generator's; " << kRegenerate;
  }
  EXPECT_EQ(Names(tooltest::SourceDir() + "/examples", ".oms"), generated)
      << "examples/ and the generator list different streams";
}

TEST(OmGolden, EveryExampleRendersToItsGoldenTextJsonCsvAndMarkdown) {
  const std::string tables = tooltest::SourceDir() + "/stringtables";
  for (const std::string& name : Names(tooltest::SourceDir() + "/examples", ".oms")) {
    for (const char* format : {"text", "json", "csv", "markdown"}) {
      SCOPED_TRACE(name + " " + format);
      const std::string extension = format[0] == 'm' ? "md" : format[0] == 't' ? "txt" : format;
      const std::string file = name + "." + extension;
      const std::string golden = tooltest::ReadFile(GoldenDir() + "/" + file);
      ASSERT_FALSE(golden.empty()) << "no tests/tools/golden/" << file << "; " << kRegenerate;
      const tooltest::Result run = tooltest::Tool(
          {"render", "--format", format, "--string-tables", tables, tooltest::Example(name)});
      // The examples are well formed: they render without a complaint.
      EXPECT_EQ(run.status, 0);
      EXPECT_EQ(run.err, "");
      if (run.out != golden) {
        ADD_FAILURE() << "rendering differs from tests/tools/golden/" << file << "\n  "
                      << FirstDifference(run.out, golden) << "\n" << kRegenerate;
      }
    }
  }
}

}  // namespace
