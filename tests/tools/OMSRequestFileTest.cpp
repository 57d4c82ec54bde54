#include "tools/omfactory/OMSRequestFile.h"

#include <gtest/gtest.h>

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

}  // namespace
