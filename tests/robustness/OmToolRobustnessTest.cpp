// The command-line tool on files that are not what they claim: nothing that is a stream file, a
// header cut short, records cut anywhere, lengths that lie. It must always end by itself with
// a status and a message saying what was wrong, never by a signal.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "fuzz/OmSampleStreams.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/stream/OmStreamWriter.h"

#ifndef OMF_TOOL_PATH
#error "OMF_TOOL_PATH names the built omfactory tool"
#endif

namespace {

namespace fs = std::filesystem;

struct ToolRun {
  bool exited = false;  // ended by itself, not by a signal
  int status = -1;
  std::string output;  // standard error and output together
};

class ToolOnBadFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    _dir = fs::temp_directory_path() / ("omf_tool_robustness_" + std::to_string(::getpid()));
    fs::create_directories(_dir);
  }
  void TearDown() override { fs::remove_all(_dir); }

  std::string Write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
    const fs::path path = _dir / name;
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return path.string();
  }

  ToolRun Render(const std::string& path, const std::string& format = "text") {
    const std::string command = std::string(OMF_TOOL_PATH) + " render --format " + format + " '" +
                                path + "' 2>&1 >/dev/null";
    ToolRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
      run.output.append(buffer, n);
    }
    const int raw = ::pclose(pipe);
    run.exited = raw != -1 && WIFEXITED(raw);
    run.status = run.exited ? WEXITSTATUS(raw) : -1;
    return run;
  }

  fs::path _dir;
};

std::vector<std::uint8_t> SessionFile() {
  for (OmSampleStreams::Named& named : OmSampleStreams::All(OmStreamWriter::ByteOrder::BigEndian)) {
    if (named.name == "session") return named.stream.FileBytes();
  }
  return {};
}

TEST_F(ToolOnBadFiles, RecordsCutShortAreReportedAndTheRestIsRendered) {
  const std::vector<std::uint8_t> whole = SessionFile();
  // Where whole records end: a cut there leaves a shorter but sound stream.
  std::set<std::size_t> boundaries;
  OmStreamReader reader(whole);
  for (OmStreamRecord record; reader.Next(record);) boundaries.insert(reader.Offset());
  // Cuts inside the first records in text, then spread over the file in every format.
  std::vector<std::pair<std::size_t, const char*>> cuts;
  for (std::size_t cut = 17; cut < 40; ++cut) cuts.emplace_back(cut, "text");
  for (std::size_t cut = 40; cut < whole.size(); cut += whole.size() / 8) {
    for (const char* format : {"text", "json", "html"}) cuts.emplace_back(cut, format);
  }
  for (const auto& [cut, format] : cuts) {
    if (boundaries.count(cut)) continue;
    SCOPED_TRACE("file cut to " + std::to_string(cut) + " of " + std::to_string(whole.size()) +
                 " as " + format);
    const ToolRun run =
        Render(Write("cut", {whole.begin(), whole.begin() + std::ptrdiff_t(cut)}), format);
    ASSERT_TRUE(run.exited) << run.output;
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_NE(run.output.find("the records before it were used"), std::string::npos) << run.output;
  }
}

TEST_F(ToolOnBadFiles, RecordLengthsThatLieNeverKillTheTool) {
  const std::vector<std::uint8_t> whole = SessionFile();
  // Every byte of the first records' length and code fields set to values that lie.
  for (std::size_t at = 16; at < 48 && at < whole.size(); ++at) {
    for (std::uint8_t lie : {std::uint8_t(0x00), std::uint8_t(0x7F), std::uint8_t(0xFF)}) {
      if (whole[at] == lie) continue;
      SCOPED_TRACE("byte " + std::to_string(at) + " = " + std::to_string(lie));
      std::vector<std::uint8_t> bytes = whole;
      bytes[at] = lie;
      const ToolRun run = Render(Write("lie", bytes));
      ASSERT_TRUE(run.exited) << run.output;
      EXPECT_LE(run.status, 2) << run.output;
    }
  }
}

}  // namespace

namespace {

TEST_F(ToolOnBadFiles, OnlyTheFirstTwentyFailingRecordsAreReportedThenTheirCount) {
  // 25 number messages cut short: each fails on its own, inside a procedure or not.
  OmStreamWriter w;
  w.ByteOrderProbe();
  for (int i = 0; i < 25; ++i) w.Record(256, std::string_view("\x01\x02", 2));
  const ToolRun run = Render(Write("failing.oms", w.FileBytes()));
  ASSERT_TRUE(run.exited);
  EXPECT_EQ(run.status, 1);
  std::size_t failed = 0;
  for (std::size_t at = run.output.find(" failed: "); at != std::string::npos;
       at = run.output.find(" failed: ", at + 1)) {
    ++failed;
  }
  EXPECT_EQ(failed, 20u) << run.output;
  EXPECT_NE(run.output.find("omfactory: 5 more failing records not shown\n"), std::string::npos)
      << run.output;
}

}  // namespace
