#include "tools/render/OmJsonRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"

namespace {

using Json = OmJsonRenderer::Json;

OmStringCell S(const std::string& text) { return OmStringCell(text); }

std::vector<std::string> Keys(const Json& object) {
  std::vector<std::string> keys;
  for (auto it = object.begin(); it != object.end(); ++it) keys.push_back(it.key());
  return keys;
}

// Rows: "Variables" with age, then group "Income" {net, gross}; columns: "Statistics" with N and
// Mean; layer: "Sex" with two categories. Cells are stored in reverse coordinate order.
std::unique_ptr<OmPivotTable> StatisticsTable() {
  auto t = std::make_unique<OmPivotTable>(S("Descriptive Statistics"), S("Descriptive Statistics"));
  t->TableId(42);
  const int vars = t->AddDimension(S("Variables"));
  const int stats = t->AddDimension(S("Statistics"));
  const int sex = t->AddDimension(S("Sex"));
  t->Rows().push_back(short(vars));
  t->Columns().push_back(short(stats));
  t->Layers().push_back(short(sex));
  OmDimension& v = t->Dimension(vars);
  v.Child(&v.Root(), -1, S("age"), false);                     // leaf 0
  OmDimensionNode* income = v.Child(&v.Root(), -1, S("Income"), true);
  v.Child(income, -1, S("net"), false);                        // leaf 1
  v.Child(income, -1, S("gross"), false);                      // leaf 2
  OmDimension& s = t->Dimension(stats);
  s.Child(&s.Root(), -1, S("N"), false);
  s.Child(&s.Root(), -1, S("Mean"), false);
  OmDimension& x = t->Dimension(sex);
  x.Child(&x.Root(), -1, S("Female"), false);
  x.Child(&x.Root(), -1, S("Male"), false);

  const int note = t->Footnote(OmFootnote(S("Skewed.")));
  OmStringCell marked("n/a");
  marked.Footnote(std::int16_t(note));
  t->Cell({2, 1, 1}, marked);
  t->Cell({1, 1, 0}, OmNumber(OmNumber::kSysMiss));
  t->Cell({0, 1, 0}, OmNumber(44.5, OmNumber::MakeFormat(5, 8, 2)));
  t->Cell({0, 0, 0}, OmNumber(1187));
  return t;
}

// A tree: procedure > (heading > table, text block), and a page title at the top.
struct Tree {
  OmOutputTree tree;
  OmOutputTree::Node procedure;
  OmOutputTree::Node heading;

  Tree() {
    auto title = std::make_unique<OmPageTitle>("UTF-8");
    title->AddLine("Survey 2024");
    tree.AppendUnderRoot(std::move(title));
    auto proc = std::make_unique<OmProcedure>(S("Descriptives"), "English", "UTF-8", "en_US");
    procedure = tree.AppendUnderRoot(std::move(proc));
    heading = tree.Append(procedure, std::make_unique<OmHeading>(S("Statistics")));
    tree.Append(heading, StatisticsTable());
    auto text = std::make_unique<OmTextBlock>(S("Log"), "UTF-8", true);
    text->AddLine("DESCRIPTIVES age.");
    text->AddLine("");
    tree.Append(procedure, std::move(text));
  }
};

const Json& TableNode(const Json& document) {
  return document["outline"]["children"][1]["children"][0]["children"][0];
}

TEST(OmJsonRenderer, OutlineNestsPartsWithTheirKindsAndKindFields) {
  Tree t;
  const Json doc = OmJsonRenderer().Outline(t.tree);
  ASSERT_EQ(Keys(doc), (std::vector<std::string>{"outline"}));
  const Json& root = doc["outline"];
  EXPECT_EQ(root["kind"], "root");
  EXPECT_EQ(root["label"], "");
  ASSERT_EQ(root["children"].size(), 2u);

  const Json& title = root["children"][0];
  EXPECT_EQ(title["kind"], "pagetitle");
  EXPECT_EQ(title["lines"], Json::array({"Survey 2024"}));
  EXPECT_TRUE(title["children"].empty());

  const Json& proc = root["children"][1];
  EXPECT_EQ(Keys(proc), (std::vector<std::string>{"kind", "label", "command", "children"}));
  EXPECT_EQ(proc["kind"], "procedure");
  EXPECT_EQ(proc["label"], "Descriptives");
  EXPECT_EQ(proc["command"], "Descriptives");
  ASSERT_EQ(proc["children"].size(), 2u);

  const Json& heading = proc["children"][0];
  EXPECT_EQ(Keys(heading), (std::vector<std::string>{"kind", "label", "children"}));
  EXPECT_EQ(heading["kind"], "heading");
  EXPECT_EQ(heading["label"], "Statistics");
  ASSERT_EQ(heading["children"].size(), 1u);
  EXPECT_EQ(heading["children"][0]["kind"], "table");

  const Json& text = proc["children"][1];
  EXPECT_EQ(text["kind"], "text");
  EXPECT_EQ(text["lines"], Json::array({"DESCRIPTIVES age.", ""}));
  EXPECT_EQ(text["log"], true);
}

TEST(OmJsonRenderer, TableNodeKeysFootnotesCaptionAndCorner) {
  Tree t;
  const Json table = TableNode(OmJsonRenderer().Outline(t.tree));
  EXPECT_EQ(Keys(table),
            (std::vector<std::string>{"kind", "label", "title", "subtype", "caption", "corner", "id",
                                      "footnotes", "dimensions", "cells", "children"}));
  EXPECT_EQ(table["title"], "Descriptive Statistics");
  EXPECT_EQ(table["subtype"], "Descriptive Statistics");
  EXPECT_TRUE(table["caption"].is_null());
  EXPECT_TRUE(table["corner"].is_null());
  EXPECT_EQ(table["id"], 42);
  EXPECT_EQ(table["footnotes"], Json::parse(R"([{"index": 0, "marker": "a", "text": "Skewed."}])"));

  // Caption, corner and a footnote's own marker are shown when set.
  OmPivotTable t2(S("T"), S("Sub"));
  t2.Caption(S("Weighted."));
  t2.CornerText(S("Corner"));
  const OmStringCell star("*");
  t2.Footnote(OmFootnote(S("first")));
  t2.Footnote(OmFootnote(S("second"), &star));
  const Json node = OmJsonRenderer().Table(t2);
  EXPECT_EQ(node["caption"], "Weighted.");
  EXPECT_EQ(node["corner"], "Corner");
  EXPECT_EQ(node["footnotes"][1], Json::parse(R"({"index": 1, "marker": "*", "text": "second"})"));
}

TEST(OmJsonRenderer, DimensionsFollowDimensionNumbersWithAxesAndGroupsIndexedMinusOne) {
  const auto table = StatisticsTable();
  // Put the layer dimension first on the columns: the list still goes by dimension number.
  table->Layers().Clear();
  table->Columns().Insert(0, short(2));
  const Json dims = OmJsonRenderer().Table(*table)["dimensions"];
  ASSERT_EQ(dims.size(), 3u);
  EXPECT_EQ(dims[0]["label"], "Variables");
  EXPECT_EQ(dims[0]["axis"], "rows");
  EXPECT_EQ(dims[1]["axis"], "columns");
  EXPECT_EQ(dims[2]["label"], "Sex");
  EXPECT_EQ(dims[2]["axis"], "columns");

  const Json expected = Json::parse(R"([
    {"label": "age", "index": 0, "children": []},
    {"label": "Income", "index": -1, "children": [
      {"label": "net", "index": 1, "children": []},
      {"label": "gross", "index": 2, "children": []}]}])");
  EXPECT_EQ(dims[0]["categories"], expected);

  const Json layered = OmJsonRenderer().Table(*StatisticsTable())["dimensions"];
  EXPECT_EQ(layered[2]["axis"], "layers");
}

TEST(OmJsonRenderer, CellsAreSortedAndOnlyFiniteNumbersHaveValues) {
  const Json cells = OmJsonRenderer().Table(*StatisticsTable())["cells"];
  ASSERT_EQ(cells.size(), 4u);
  std::vector<Json> at;
  for (const Json& c : cells) {
    EXPECT_EQ(Keys(c), (std::vector<std::string>{"at", "value", "text", "footnotes"}));
    at.push_back(c["at"]);
  }
  EXPECT_EQ(at, (std::vector<Json>{Json::array({0, 0, 0}), Json::array({0, 1, 0}),
                                   Json::array({1, 1, 0}), Json::array({2, 1, 1})}));
  EXPECT_EQ(cells[0]["value"], 1187.0);
  EXPECT_EQ(cells[0]["text"], "1187");
  EXPECT_EQ(cells[1]["value"], 44.5);
  EXPECT_EQ(cells[1]["text"], "44.50");
  // The system-missing value is shown as a dot and has no value.
  EXPECT_TRUE(cells[2]["value"].is_null());
  EXPECT_EQ(cells[2]["text"], ".");
  // A text cell has no value; its footnote references come along.
  EXPECT_TRUE(cells[3]["value"].is_null());
  EXPECT_EQ(cells[3]["text"], "n/a");
  EXPECT_EQ(cells[3]["footnotes"], Json::array({0}));
}

TEST(OmJsonRenderer, ExcludedPartsAreLeftOutUnlessAskedButUnselectedHeadingsShowTheirContent) {
  Tree t;
  OmOutputTree::Node table = t.heading.Next();
  table.Value()->_keep = 0;
  const Json kept = OmJsonRenderer().Outline(t.tree);
  ASSERT_EQ(kept["outline"]["children"][1]["children"][0]["children"].size(), 0u);

  OmJsonRenderer::Options options;
  options.showExcluded = true;
  const Json all = OmJsonRenderer(options).Outline(t.tree);
  const Json& excluded = all["outline"]["children"][1]["children"][0]["children"][0];
  EXPECT_EQ(excluded["kind"], "table");
  EXPECT_EQ(excluded["excluded"], true);

  // A heading that was not selected itself still holds the selected table.
  table.Value()->_keep = 1;
  t.heading.Value()->_keep = 0;
  const Json inside = OmJsonRenderer().Outline(t.tree);
  const Json& heading = inside["outline"]["children"][1]["children"][0];
  EXPECT_EQ(heading["kind"], "heading");
  EXPECT_EQ(heading["children"][0]["kind"], "table");
}

TEST(OmJsonRenderer, TextsOfALegacyCodePageBecomeUtf8AndUnknownCodePagesAreRefused) {
  OmOutputTree tree;
  auto proc = std::make_unique<OmProcedure>(S("Descriptives"), "German", "windows-1252", "de_DE");
  OmOutputTree::Node p = tree.AppendUnderRoot(std::move(proc));
  auto text = std::make_unique<OmTextBlock>(S("Gr\xF6\xDF" "e"), "windows-1252");
  text->AddLine("Mittelwert \xB1 5 \x80");
  tree.Append(p, std::move(text));

  OmJsonRenderer::Options options;
  options.codePage = "windows-1252";
  const Json doc = OmJsonRenderer(options).Outline(tree);
  const Json& node = doc["outline"]["children"][0]["children"][0];
  EXPECT_EQ(node["label"], "Gr\u00F6\u00DFe");
  EXPECT_EQ(node["lines"][0], "Mittelwert \u00B1 5 \u20AC");
  // Whatever the input, the document serialises as valid UTF-8.
  EXPECT_NO_THROW(Json::parse(OmJsonRenderer::Write(doc)));

  options.codePage = "no-such-code-page";
  EXPECT_THROW(OmJsonRenderer{options}, OMSException);
}

TEST(OmJsonRenderer, WrittenDocumentParsesBackToTheSameOutline) {
  Tree t;
  const OmJsonRenderer renderer;
  const std::string written = renderer.Render(t.tree);
  ASSERT_FALSE(written.empty());
  EXPECT_EQ(written.back(), '\n');
  EXPECT_EQ(Json::parse(written), renderer.Outline(t.tree));
  // Lines of plain values stay on one line.
  EXPECT_NE(written.find("\"lines\": [\"DESCRIPTIVES age.\", \"\"]"), std::string::npos);
}

TEST(OmJsonRenderer, VeryDeepOutlinesAreFlattenedInsteadOfRecursingWithoutBound) {
  OmOutputTree tree;
  OmOutputTree::Node n = tree.AppendUnderRoot(std::make_unique<OmHeading>(S("h")));
  for (int i = 0; i < 500; ++i) n = tree.Append(n, std::make_unique<OmHeading>(S("h")));
  const Json doc = OmJsonRenderer().Outline(tree);
  int depth = 0;
  std::size_t parts = 0;
  // Walk the nesting iteratively, counting every heading.
  std::vector<std::pair<const Json*, int>> todo{{&doc["outline"], 0}};
  while (!todo.empty()) {
    auto [node, d] = todo.back();
    todo.pop_back();
    depth = std::max(depth, d);
    for (const Json& child : (*node)["children"]) {
      ++parts;
      todo.emplace_back(&child, d + 1);
    }
  }
  EXPECT_EQ(parts, 501u);
  EXPECT_LE(depth, 70);
  EXPECT_NO_THROW(Json::parse(OmJsonRenderer::Write(doc)));
}

}  // namespace
