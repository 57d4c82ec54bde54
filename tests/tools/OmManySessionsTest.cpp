// Many sessions at once, as a server runs them, one per thread: each renders what it renders
// alone, whatever the others do meanwhile (imputation and bootstrap pooling, another output
// language, OMS selection, another code page).
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "ToolTestSupport.h"

namespace {

using tooltest::SourceDir;
using tooltest::TempDir;
using tooltest::Tool;
using tooltest::WriteFile;

TEST(ManySessions, EightSessionsOnEightThreadsEachRenderWhatTheyRenderAlone) {
  TempDir dir;
  const std::string requests = dir.File("oms.json");
  WriteFile(requests, R"([{"types": ["tables"], "if": {"subtypes": ["Descriptive Statistics"]}}])");
  const std::string examples = SourceDir() + "/examples/";
  const std::vector<std::vector<std::string>> runs = {
      {"render", "--format", "json", examples + "mi_regression.oms"},
      {"render", "--format", "json", examples + "bootstrap_descriptives.oms"},
      {"render", "--format", "json", examples + "descriptives_de.oms"},
      {"render", "--format", "json", "--oms", requests, examples + "descriptives.oms"},
      {"render", "--format", "json", examples + "crosstabs_fr.oms"},
      {"render", "--format", "text", examples + "splitfile.oms"},
      {"render", "--format", "html", examples + "crosstabs.oms"},
      {"render", "--format", "json", "--code-page", "windows-1252", examples + "logpages.oms"},
  };
  std::vector<std::string> alone;
  for (const auto& args : runs) {
    const tooltest::Result run = Tool(args);
    ASSERT_EQ(run.status, 0) << args.back() << ": " << run.err;
    alone.push_back(run.out);
  }
  for (int round = 0; round < 3; ++round) {
    std::vector<tooltest::Result> together(runs.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < runs.size(); ++i) {
      threads.emplace_back([&, i] { together[i] = Tool(runs[i]); });
    }
    for (std::thread& t : threads) t.join();
    for (std::size_t i = 0; i < runs.size(); ++i) {
      SCOPED_TRACE(runs[i].back());
      EXPECT_EQ(together[i].status, 0) << together[i].err;
      EXPECT_EQ(together[i].out, alone[i]);
    }
  }
}

}  // namespace
