#include "tools/omfactory/OmTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/stream/OmStreamWriter.h"
#include "tests/tools/ToolTestSupport.h"
#include "tools/examplegen/OmExampleStreams.h"

namespace {

using nlohmann::json;
using tooltest::Result;
using tooltest::Tool;

std::string Bytes(const OmStreamWriter& stream) {
  const std::vector<std::uint8_t> bytes = stream.FileBytes();
  return std::string(bytes.begin(), bytes.end());
}

// The kinds and labels of an outline, depth first, as "kind:label" entries.
std::vector<std::string> Outline(const json& node) {
  std::vector<std::string> out{node["kind"].get<std::string>() + ":" +
                               node["label"].get<std::string>()};
  for (const json& child : node["children"]) {
    for (std::string& entry : Outline(child)) out.push_back(std::move(entry));
  }
  return out;
}

bool Has(const std::vector<std::string>& list, const std::string& item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

TEST(OmTool, UnusableInputFilesStopWithStatusTwoAndOneLineAndNoOutput) {
  tooltest::TempDir dir;
  const std::string notStream = dir.File("notes.txt");
  tooltest::WriteFile(notStream, "These are my notes about the survey, not a stream.\n");
  const std::string shortHeader = dir.File("short.oms");
  tooltest::WriteFile(shortHeader, Bytes(OmExampleStreams::Descriptives()).substr(0, 11));
  const std::string empty = dir.File("empty.oms");
  tooltest::WriteFile(empty, "");

  struct Case {
    std::string path;
    const char* reason;
  };
  const Case cases[] = {
    {dir.File("missing.oms"), "no such file"},
    {dir.Path(), "folder"},
    {notStream, notStream.c_str()},
    {shortHeader, shortHeader.c_str()},
    {empty, empty.c_str()},
  };
  for (const Case& c : cases) {
    for (const char* command : {"render", "dump"}) {
      const Result run = Tool({command, c.path});
      EXPECT_EQ(run.status, 2) << command << " " << c.path;
      EXPECT_EQ(run.out, "") << command << " " << c.path;
      EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
      EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
    }
  }
  // One unusable stream among good ones: nothing is fed, nothing is written.
  const Result mixed = Tool({"render", tooltest::Example("descriptives"), dir.File("missing.oms")});
  EXPECT_EQ(mixed.status, 2);
  EXPECT_EQ(mixed.out, "");
}

TEST(OmTool, BadCommandLinesAreUsageErrors) {
  tooltest::TempDir dir;
  const std::string example = tooltest::Example("descriptives");
  const std::vector<std::vector<std::string>> lines = {
    {},
    {"paint", example},
    {"render"},
    {"render", "--format", "pdf", example},
    {"render", "--format"},
    {"render", "--colour", example},
    {"render", "--oms=", example},
    {"dump"},
    {"dump", example, example},
    {"render", "--code-page", "no-such-page", example},
    {"render", "--string-tables", dir.Path(), example},
    {"render", "-o", dir.File("no/such/folder/out.txt"), example},
  };
  for (const auto& args : lines) {
    std::string shown;
    for (const std::string& a : args) shown += a + " ";
    const Result run = Tool(args);
    EXPECT_EQ(run.status, 2) << shown;
    EXPECT_EQ(run.out, "") << shown;
    EXPECT_NE(run.err.find("omfactory: "), std::string::npos) << shown;
  }
  const Result help = Tool({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.out, OmTool::Usage());
}

TEST(OmTool, StreamsFeedOneSessionAndTheFormatsAgree) {
  const std::string descriptives = tooltest::Example("descriptives");
  const std::string crosstabs = tooltest::Example("crosstabs");
  const Result run = Tool({"render", "--format=json", descriptives, crosstabs});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const json doc = json::parse(run.out);
  const std::vector<std::string> outline = Outline(doc["outline"]);
  // The little-endian and the big-endian stream both arrive, in order, in one tree.
  std::vector<std::string> procedures;
  for (const json& child : doc["outline"]["children"]) {
    if (child["kind"] == "procedure") procedures.push_back(child["command"]);
  }
  EXPECT_EQ(procedures, (std::vector<std::string>{"Descriptives", "Crosstabs"}));
  EXPECT_TRUE(Has(outline, "table:Descriptive Statistics"));
  EXPECT_TRUE(Has(outline, "table:Gender * Job satisfaction * Region Crosstabulation"));

  const Result text = Tool({"render", descriptives, crosstabs});
  ASSERT_EQ(text.status, 0);
  EXPECT_NE(text.out.find("Descriptive Statistics"), std::string::npos);
  EXPECT_NE(text.out.find("Gender * Job satisfaction * Region Crosstabulation"), std::string::npos);

  const Result html = Tool({"render", "--format", "html", descriptives});
  ASSERT_EQ(html.status, 0);
  EXPECT_EQ(html.out.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_NE(html.out.find("Descriptive Statistics"), std::string::npos);
}

TEST(OmTool, ACutStreamStillWritesWhatCameBeforeTheCut) {
  tooltest::TempDir dir;
  const std::string whole = Bytes(OmExampleStreams::Descriptives());
  // A record header that promises more payload than follows.
  const std::string cut = dir.File("cut.oms");
  tooltest::WriteFile(cut, whole + std::string("\x25\x01\x40\x00\x00\x00" "abc", 9));
  const Result run = Tool({"render", "--format", "json", cut});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find(cut), std::string::npos) << run.err;
  const json doc = json::parse(run.out);
  EXPECT_TRUE(Has(Outline(doc["outline"]), "table:Descriptive Statistics"));

  const Result dump = Tool({"dump", cut});
  EXPECT_EQ(dump.status, 1);
  EXPECT_NE(dump.out.find("IPC_END_PROCEDURE"), std::string::npos);
  EXPECT_NE(dump.err.find("at offset " + std::to_string(whole.size())), std::string::npos)
      << dump.err;

  // Cut inside the procedure: it never ends, so only the log before it shows, with a warning.
  const std::string early = dir.File("early.oms");
  tooltest::WriteFile(early, whole.substr(0, whole.size() / 2));
  const Result half = Tool({"render", "--format", "json", early});
  EXPECT_EQ(half.status, 1);
  EXPECT_NE(half.err.find("did not end"), std::string::npos) << half.err;
  const json partial = json::parse(half.out);
  ASSERT_FALSE(partial["outline"]["children"].empty());
  EXPECT_EQ(partial["outline"]["children"][0]["kind"], "text");
}

// Files that are not what they claim: records cut anywhere, lengths and codes that lie. The tool
// ends with a status and says what was wrong; JSON stays a document.
TEST(OmTool, DamagedFilesAreReportedAndWhatCameBeforeIsRendered) {
  tooltest::TempDir dir;
  const std::string whole = Bytes(OmExampleStreams::Crosstabs());
  const std::string path = dir.File("damaged.oms");
  std::set<std::size_t> boundaries;  // a cut there leaves a shorter but sound stream
  OmStreamReader reader(std::vector<std::uint8_t>(whole.begin(), whole.end()));
  for (OmStreamRecord record; reader.Next(record);) boundaries.insert(reader.Offset());
  for (std::size_t cut = 17; cut < whole.size(); cut += cut < 40 ? 1 : whole.size() / 8) {
    if (boundaries.count(cut)) continue;
    tooltest::WriteFile(path, whole.substr(0, cut));
    for (const char* format : {"text", "json", "html"}) {
      SCOPED_TRACE(std::to_string(cut) + " bytes as " + format);
      const Result run = Tool({"render", "--format", format, path});
      EXPECT_EQ(run.status, 1);
      EXPECT_NE(run.err.find("the records before it were used"), std::string::npos) << run.err;
      if (std::string(format) == "json") {
        EXPECT_TRUE(json::accept(run.out));
      }
    }
  }
  // Bytes of the first records' headers and of payloads further on set to values that lie.
  for (std::size_t at = 16; at < whole.size(); at += at < 48 ? 1 : 389) {
    for (char lie : {'\x00', '\x7F', '\xFF'}) {
      std::string bytes = whole;
      bytes[at] = lie;
      tooltest::WriteFile(path, bytes);
      const Result run = Tool({"render", "--format", "json", path});
      EXPECT_LE(run.status, 2) << "byte " << at << " = " << int(lie);
      if (run.status != 2) {
        EXPECT_TRUE(json::accept(run.out)) << "byte " << at;
      }
    }
  }
  // 25 number messages cut short fail one by one: the first 20 are reported, then their count.
  OmStreamWriter failing;
  failing.ByteOrderProbe();
  for (int i = 0; i < 25; ++i) failing.Record(256, std::string_view("\x01\x02", 2));
  tooltest::WriteFile(path, Bytes(failing));
  const Result run = Tool({"render", path});
  EXPECT_EQ(run.status, 1);
  std::size_t reported = 0;
  for (std::size_t at = run.err.find(" failed: "); at != std::string::npos; at = run.err.find(" failed: ", at + 1)) ++reported;
  EXPECT_EQ(reported, 20u) << run.err;
  EXPECT_NE(run.err.find("omfactory: 5 more failing records not shown\n"), std::string::npos) << run.err;
}

TEST(OmTool, OmsRequestsFromJsonAndFromRecordsSelectTheOutput) {
  tooltest::TempDir dir;
  const std::string example = tooltest::Example("descriptives");
  const std::string requests = dir.File("requests.json");
  // Tables only: the procedure and its headings are not selected, yet they still show the
  // tables selected inside them.
  tooltest::WriteFile(requests, R"([{"types": ["tables"], "exceptif": {"subtypes": ["Notes"]}}])");
  const Result run = Tool({"render", "--format", "json", "--oms", requests, example});
  ASSERT_EQ(run.status, 0) << run.err;
  const std::vector<std::string> selected = Outline(json::parse(run.out)["outline"]);
  EXPECT_TRUE(Has(selected, "table:Descriptive Statistics"));
  EXPECT_TRUE(Has(selected, "procedure:Descriptives"));
  EXPECT_FALSE(Has(selected, "table:Notes"));
  EXPECT_FALSE(Has(selected, "text:Log"));
  const Result text = Tool({"render", "--oms", requests, example});
  ASSERT_EQ(text.status, 0) << text.err;
  EXPECT_NE(text.out.find("Descriptive Statistics"), std::string::npos) << text.out;
  EXPECT_EQ(text.out.find("Notes"), std::string::npos) << text.out;

  // The same selection of tables, as a binary record, keeps the notes table out too.
  OMSObjectSelector headings;
  headings.SelectType(OMSObjectSelector::kHeadings);
  OMSObjectSelector notes;
  notes.SelectType(OMSObjectSelector::kTables);
  OMSSelector only;
  only.AddSubtypes("Notes");
  notes.AddIfOption(only);
  std::ostringstream records;
  records << headings << notes;
  const std::string recordFile = dir.File("requests.bin");
  tooltest::WriteFile(recordFile, records.str());
  const Result fromRecords = Tool({"render", "--format=json", "--oms-record", recordFile, example});
  ASSERT_EQ(fromRecords.status, 0) << fromRecords.err;
  const std::vector<std::string> notesOnly = Outline(json::parse(fromRecords.out)["outline"]);
  EXPECT_TRUE(Has(notesOnly, "table:Notes"));
  EXPECT_FALSE(Has(notesOnly, "table:Descriptive Statistics"));

  // Bad request files are unusable input.
  tooltest::WriteFile(requests, R"([{"types": ["tabels"]}])");
  const Result bad = Tool({"render", "--oms", requests, example});
  EXPECT_EQ(bad.status, 2);
  EXPECT_NE(bad.err.find("tabels"), std::string::npos) << bad.err;
  tooltest::WriteFile(recordFile, records.str().substr(0, records.str().size() - 3));
  EXPECT_EQ(Tool({"render", "--oms-record", recordFile, example}).status, 2);
}

TEST(OmTool, StringTablesAreFoundBesideTheExecutable) {
  tooltest::TempDir dir;
  EXPECT_EQ(OmTool::FindStringTables(dir.File("bin/omfactory")), "");
  const std::string tables = tooltest::SourceDir() + "/stringtables";
  EXPECT_EQ(OmTool::FindStringTables(tooltest::SourceDir() + "/build/default/tools/omfactory/omfactory"),
            std::filesystem::path(tables).lexically_normal().string());

  // Without tables the texts stay as sent, with a warning; the German example shows the
  // difference. A copy of the executable outside the repository finds no tables.
  const std::string example = tooltest::Example("splitfile");
  const std::string copy = dir.File("omfactory");
  std::filesystem::copy_file(OMF_TOOL_EXE, copy);
  const Result bare = tooltest::Executable(copy, {"render", example}, dir.Path(), dir.File("err"));
  EXPECT_EQ(bare.status, 0);
  EXPECT_NE(bare.err.find("no stringtables/"), std::string::npos) << bare.err;
  EXPECT_NE(bare.out.find("Notes"), std::string::npos) << bare.out;
  const Result translated = Tool({"render", example});
  EXPECT_EQ(translated.err, "");
  EXPECT_NE(translated.out.find("Anmerkungen"), std::string::npos) << translated.out;
  const Result given = Tool({"render", "--string-tables", tables, example});
  EXPECT_EQ(given.out, translated.out);
}

}  // namespace
