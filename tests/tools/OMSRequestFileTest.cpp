#include "tools/omfactory/OMSRequestFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/errors/OMSException.h"
#include "tests/tools/ToolTestSupport.h"

namespace {

using Selectors = std::vector<OMSObjectSelector>;

// The message of the exception that parsing json throws, or "" when it parses.
std::string JsonError(const std::string& json) {
  try {
    OMSRequestFile::ParseJson(json);
  } catch (const OMSException& e) {
    return e.Message();
  }
  return std::string();
}

TEST(OMSRequestFile, EveryKeyOfARequestReachesTheSelector) {
  const Selectors requests = OMSRequestFile::ParseJson(R"([
    {"types": ["tables", "headings"],
     "if": {"commands": ["Desc*"], "subtypes": ["Descriptive Statistics"],
            "labels": ["Statistics"], "instances": [2, "LAST"]},
     "exceptif": {"subtypes": ["Notes"]},
     "showNotes": false, "viewer": false, "tag": "desc"}])");
  ASSERT_EQ(requests.size(), 1u);
  const OMSObjectSelector& r = requests[0];
  EXPECT_EQ(r.GetSelection(), unsigned(OMSObjectSelector::kTables | OMSObjectSelector::kHeadings));
  EXPECT_EQ(r.GetIfOption().GetCommands(), (std::vector<std::string>{"DESC*"}));
  EXPECT_EQ(r.GetIfOption().GetSubtypes(), (std::vector<std::string>{"DESCRIPTIVE STATISTICS"}));
  EXPECT_EQ(r.GetIfOption().GetNamesCount(), 1);
  EXPECT_EQ(r.GetIfOption().GetInstances(), (std::vector<int>{2}));
  EXPECT_TRUE(r.IsLastInstanceSelected());
  EXPECT_TRUE(r.GetExceptIfOption().GetHasSubtype("notes"));
  EXPECT_FALSE(r.ShowNotesTables());
  EXPECT_TRUE(r.GetViewerSpecified());
  EXPECT_FALSE(r.GetDestinationIsViewer());
  EXPECT_EQ(r.GetOMSTag(), "desc");

  EXPECT_TRUE(r.IsObjectSelected(OMSObjectSelector::kTables, "DESCRIPTIVES", "Descriptive Statistics",
                                 "Statistics"));
  EXPECT_FALSE(r.IsObjectSelected(OMSObjectSelector::kTables, "FREQUENCIES", "Descriptive Statistics",
                                  "Statistics"));
  EXPECT_FALSE(r.IsObjectSelected(OMSObjectSelector::kLogs, "DESCRIPTIVES", "", "Statistics"));
}

TEST(OMSRequestFile, OmittedTypesSelectEverythingAndTypeNamesAreExact) {
  const Selectors requests =
      OMSRequestFile::ParseJson(R"([{}, {"types": ["all"]}, {"types": 20}, {"types": []}])");
  ASSERT_EQ(requests.size(), 4u);
  EXPECT_EQ(requests[0].GetSelection(), 511u);
  EXPECT_EQ(requests[1].GetSelection(), 511u);
  EXPECT_EQ(requests[2].GetSelection(), unsigned(OMSObjectSelector::kLogs | OMSObjectSelector::kTables));
  EXPECT_EQ(requests[3].GetSelection(), 0u);
  EXPECT_TRUE(OMSRequestFile::ParseJson("[]").empty());

  EXPECT_EQ(OMSRequestFile::TypeBits("Tables"), 0u);
}

TEST(OMSRequestFile, DeparturesFromTheSchemaNameTheRequestAndKey) {
  struct Case {
    const char* json;
    const char* mentions;
  };
  const Case cases[] = {
    {"not json", "not JSON"},
    {R"({"types": ["tables"]})", "list of requests"},
    {R"([{}, 5])", "request 2"},
    {R"([{"type": ["tables"]}])", "\"type\": unknown key"},
    {R"([{"types": ["tabels"]}])", "unknown type \"tabels\""},
    {R"([{"types": "tables"}])", "\"types\""},
    {R"([{"types": 512}])", "\"types\""},
    {R"([{"if": {"instances": [0]}}])", "\"if.instances\""},
    {R"([{"if": {"instances": ["FIRST"]}}])", "\"if.instances\""},
    {R"([{"if": {"instances": [1.5]}}])", "\"if.instances\""},
    {R"([{"if": {"instances": [4294967297]}}])", "\"if.instances\""},
    {R"([{"exceptif": {"commands": "Descriptives"}}])", "\"exceptif.commands\""},
    {R"([{"if": {"labels": [""]}}])", "empty text"},
    {R"([{"if": {"label": ["x"]}}])", "\"if.label\": unknown key"},
    {R"([{"if": []}])", "\"if\""},
    {R"([{"showNotes": "yes"}])", "\"showNotes\""},
    {R"([{"viewer": 0}])", "\"viewer\""},
    {R"([{"tag": ""}])", "\"tag\""},
  };
  for (const Case& c : cases) {
    const std::string message = JsonError(c.json);
    EXPECT_NE(message.find(c.mentions), std::string::npos)
        << c.json << " gave \"" << message << "\"";
  }
}

TEST(OMSRequestFile, TextsAreMatchedInTheSessionCodePage) {
  const Selectors requests =
      OMSRequestFile::ParseJson(R"([{"if": {"labels": ["Gr\u00f6\u00dfe"]}}])", "windows-1252");
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_TRUE(requests[0].GetIfOption().GetHasName("Gr\xF6\xDF" "e"));
  // The UTF-8 spelling is not what the factory sees in a windows-1252 session.
  EXPECT_FALSE(requests[0].GetIfOption().GetHasName("Gr\u00f6\u00dfe"));
}

TEST(OMSRequestFile, BinaryRecordsReadBackAsWritten) {
  OMSObjectSelector first;
  first.SelectType(OMSObjectSelector::kTables);
  OMSSelector subtypes;
  subtypes.AddSubtypes("Notes");
  subtypes.AddInstances(3);
  first.AddIfOption(subtypes);
  OMSObjectSelector second;
  second.SelectType(OMSObjectSelector::kLogs);
  second.SetDestinationIsViewer(false);

  std::stringstream bytes;
  bytes << first << second;
  const Selectors read = OMSRequestFile::ParseRecords(bytes);
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[0].GetSelection(), unsigned(OMSObjectSelector::kTables));
  EXPECT_TRUE(read[0].GetIfOption().GetHasSubtype("NOTES"));
  EXPECT_EQ(read[0].GetIfOption().GetInstances(), (std::vector<int>{3}));
  EXPECT_EQ(read[1].GetSelection(), unsigned(OMSObjectSelector::kLogs));
  EXPECT_TRUE(read[1].GetViewerSpecified());

  std::istringstream empty;
  EXPECT_TRUE(OMSRequestFile::ParseRecords(empty).empty());
}

TEST(OMSRequestFile, ACutRecordIsReportedWithItsNumber) {
  OMSObjectSelector request;
  request.SelectType(OMSObjectSelector::kTables);
  OMSSelector names;
  names.AddNames("Descriptive Statistics");
  request.AddIfOption(names);
  std::stringstream whole;
  whole << request << request;
  const std::string bytes = whole.str();
  const std::size_t one = bytes.size() / 2;
  // Every cut inside the second record, including one byte in, names record 2.
  for (std::size_t cut : {one + 1, one + 8, bytes.size() - 1}) {
    std::istringstream in(bytes.substr(0, cut));
    try {
      OMSRequestFile::ParseRecords(in);
      ADD_FAILURE() << "a record cut at " << cut << " was accepted";
    } catch (const OMSException& e) {
      EXPECT_EQ(e.Value1(), 2.0) << "cut at " << cut;
    }
  }
}

TEST(OMSRequestFile, FilesThatCannotBeReadAreNamed) {
  tooltest::TempDir dir;
  const std::string missing = dir.File("missing.json");
  try {
    OMSRequestFile::ReadJson(missing);
    ADD_FAILURE() << "a missing file was read";
  } catch (const OMSException& e) {
    EXPECT_NE(e.Message().find(missing), std::string::npos) << e.Message();
  }
  EXPECT_THROW(OMSRequestFile::ReadRecords(missing), OMSException);

  const std::string bad = dir.File("bad.json");
  tooltest::WriteFile(bad, R"([{"types": ["tabels"]}])");
  try {
    OMSRequestFile::ReadJson(bad);
    ADD_FAILURE() << "an unknown type was accepted";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message().rfind(bad + ": ", 0), 0u) << e.Message();
    EXPECT_EQ(e.Value1(), 1.0);
  }
}

}  // namespace
