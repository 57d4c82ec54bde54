#include "tools/render/OmHtmlRenderer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"

namespace {

OmStringCell S(const std::string& text) { return OmStringCell(text); }

std::size_t Count(const std::string& text, const std::string& piece) {
  std::size_t n = 0;
  for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
  return n;
}

bool Contains(const std::string& text, const std::string& piece) {
  return text.find(piece) != std::string::npos;
}

// Rows: "Gender" {Male, Female}; columns: "Satisfaction" with group "Satisfied" {High, Some}
// and then "Low"; layer: "Region" {North, South}. Every cell holds row * 10 + column + layer * 100.
std::unique_ptr<OmPivotTable> LayeredTable() {
  auto t = std::make_unique<OmPivotTable>(S("Gender by Satisfaction"), S("Crosstabulation"));
  const int gender = t->AddDimension(S("Gender"));
  const int sat = t->AddDimension(S("Satisfaction"));
  const int region = t->AddDimension(S("Region"));
  t->Rows().push_back(short(gender));
  t->Columns().push_back(short(sat));
  t->Layers().push_back(short(region));
  OmDimension& g = t->Dimension(gender);
  g.Child(&g.Root(), -1, S("Male"), false);
  g.Child(&g.Root(), -1, S("Female"), false);
  OmDimension& s = t->Dimension(sat);
  OmDimensionNode* satisfied = s.Child(&s.Root(), -1, S("Satisfied"), true);
  s.Child(satisfied, -1, S("High"), false);
  s.Child(satisfied, -1, S("Some"), false);
  s.Child(&s.Root(), -1, S("Low"), false);
  OmDimension& r = t->Dimension(region);
  r.Child(&r.Root(), -1, S("North"), false);
  r.Child(&r.Root(), -1, S("South"), false);
  for (int row = 0; row < 2; ++row) {
    for (int col = 0; col < 3; ++col) {
      for (int layer = 0; layer < 2; ++layer) {
        t->Cell({row, col, layer}, OmNumber(row * 10 + col + layer * 100));
      }
    }
  }
  return t;
}

TEST(OmHtmlRenderer, EscapeReplacesEveryMarkupCharacter) {
  EXPECT_EQ(OmHtmlRenderer::Escape(R"(<a href="x">Tom & 'Jerry'</a>)"),
            "&lt;a href=&quot;x&quot;&gt;Tom &amp; &#39;Jerry&#39;&lt;/a&gt;");
  EXPECT_EQ(OmHtmlRenderer::Escape("plain \xC3\xA9"), "plain \xC3\xA9");
}

TEST(OmHtmlRenderer, GroupsSpanTheirColumnsAndEachLayerGetsItsOwnGrid) {
  const std::string html = OmHtmlRenderer().RenderTable(*LayeredTable());
  EXPECT_EQ(Count(html, "<table class=\"grid\">"), 2u);
  EXPECT_TRUE(Contains(html, "Region: North")) << html;
  EXPECT_TRUE(Contains(html, "Region: South"));
  EXPECT_LT(html.find("Region: North"), html.find("Region: South"));
  // Satisfied spans its two categories; Low, outside the group, spans both header rows.
  EXPECT_EQ(Count(html, R"(scope="colgroup" colspan="2">Satisfied</th>)"), 2u) << html;
  EXPECT_EQ(Count(html, R"(scope="col" rowspan="2">Low</th>)"), 2u) << html;
  // The cells of the second layer are the second layer's.
  const std::string south = html.substr(html.find("Region: South"));
  EXPECT_TRUE(Contains(south, ">112</td>"));
  EXPECT_FALSE(Contains(south, ">12</td>"));
  EXPECT_TRUE(Contains(html.substr(0, html.find("Region: South")), ">12</td>"));
}

TEST(OmHtmlRenderer, NestedRowDimensionsSpanTheRowsOfTheirInnerCategories) {
  auto table = LayeredTable();
  // Region moves to the rows, outside Gender: each region spans its two gender rows.
  table->Layers().Clear();
  table->Rows().Insert(0, short(2));
  const std::string html = OmHtmlRenderer().RenderTable(*table);
  EXPECT_EQ(Count(html, "<table class=\"grid\">"), 1u);
  EXPECT_TRUE(Contains(html, R"(rowspan="2">North</th>)")) << html;
  EXPECT_TRUE(Contains(html, R"(rowspan="2">South</th>)"));
  // Three header rows (the column dimension label, its group, its categories), four body rows.
  EXPECT_EQ(Count(html, "<tr>"), 3u + 4u) << html;
}

TEST(OmHtmlRenderer, TextsAreEscapedEverywhere) {
  OmOutputTree tree;
  const std::string evil = "<script>alert('x')</script>";
  auto proc = std::make_unique<OmProcedure>(S(evil), "English", "UTF-8", "en_US");
  OmOutputTree::Node p = tree.AppendUnderRoot(std::move(proc));
  auto table = std::make_unique<OmPivotTable>(S(evil), S("Sub"));
  const int d = table->AddDimension(S(evil));
  table->Rows().push_back(short(d));
  OmDimension& dim = table->Dimension(d);
  dim.Child(&dim.Root(), -1, S(evil), false);
  OmStringCell value(evil);
  value.addMarker(evil);
  value.Footnote(std::int16_t(table->Footnote(OmFootnote(S(evil)))));
  table->Cell({0}, value);
  table->Caption(S(evil));
  tree.Append(p, std::move(table));
  auto text = std::make_unique<OmTextBlock>(S(evil), "UTF-8");
  text->AddLine(evil);
  tree.Append(p, std::move(text));

  OmHtmlRenderer::Options options;
  options.title = evil;
  const std::string html = OmHtmlRenderer(options).Render(tree);
  EXPECT_FALSE(Contains(html, "<script")) << html;
  EXPECT_GE(Count(html, "&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;"), 9u);
}

TEST(OmHtmlRenderer, FootnotesGetMarkersInCellsTitleAndNotes) {
  OmPivotTable t(S("Statistics"), S("Statistics"));
  const int d = t.AddDimension(S("Variables"));
  t.Rows().push_back(short(d));
  OmDimension& dim = t.Dimension(d);
  dim.Child(&dim.Root(), -1, S("age"), false);
  const int first = t.Footnote(OmFootnote(S("On the title.")));
  const OmStringCell dagger("\xE2\x80\xA0");
  const int second = t.Footnote(OmFootnote(S("On a cell."), &dagger));
  OmStringCell title("Statistics");
  title.Footnote(std::int16_t(first));
  t.SetTableTitle(title);
  OmNumber cell(44.5, OmNumber::MakeFormat(5, 8, 1));
  cell.Footnote(std::int16_t(second));
  t.Cell({0}, cell);

  const std::string html = OmHtmlRenderer().RenderTable(t);
  EXPECT_TRUE(Contains(html, R"(<div class="title">Statistics<sup class="fn">a</sup></div>)")) << html;
  EXPECT_TRUE(Contains(html, "44.5<sup class=\"fn\">\xE2\x80\xA0</sup>")) << html;
  EXPECT_TRUE(Contains(html, R"(<div class="notes"><sup class="fn">a</sup> On the title.</div>)"));
  EXPECT_TRUE(Contains(html, "<sup class=\"fn\">\xE2\x80\xA0</sup> On a cell.</div>"));
}

TEST(OmHtmlRenderer, HugeTablesAreDescribedInsteadOfLaidOut) {
  OmHtmlRenderer::Options options;
  options.maxGridCells = 5;
  const std::string html = OmHtmlRenderer(options).RenderTable(*LayeredTable());
  EXPECT_TRUE(Contains(html, "class=\"toolarge\"")) << html;
  EXPECT_FALSE(Contains(html, "<table"));
  options.maxGridCells = 12;
  EXPECT_TRUE(Contains(OmHtmlRenderer(options).RenderTable(*LayeredTable()), "<table"));
}

TEST(OmHtmlRenderer, OutlineLinksEveryShownPartAndLeavesExcludedOnesOut) {
  OmOutputTree tree;
  auto proc = std::make_unique<OmProcedure>(S("Descriptives"), "English", "UTF-8", "en_US");
  OmOutputTree::Node p = tree.AppendUnderRoot(std::move(proc));
  OmOutputTree::Node kept = tree.Append(p, std::make_unique<OmHeading>(S("Kept heading")));
  tree.Append(kept, LayeredTable());
  OmOutputTree::Node dropped = tree.Append(p, std::make_unique<OmHeading>(S("Dropped heading")));
  OmOutputTree::Node table =
      tree.Append(dropped, std::make_unique<OmPivotTable>(S("Dropped table"), S("T")));
  tree.Append(table, std::make_unique<OmHeading>(S("Dropped below")));
  table.Value()->_keep = 0;
  // Not selected itself, the heading still shows for what was selected inside it.
  dropped.Value()->_keep = 0;
  tree.Append(dropped, std::make_unique<OmHeading>(S("Selected inside")));

  const std::string html = OmHtmlRenderer().Render(tree);
  EXPECT_EQ(html.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_FALSE(Contains(html, "Dropped table"));
  EXPECT_FALSE(Contains(html, "Dropped below"));
  EXPECT_FALSE(Contains(html, "(excluded)"));
  EXPECT_TRUE(Contains(html, ">Dropped heading</a>"));
  EXPECT_TRUE(Contains(html, ">Selected inside</a>"));
  // Each link's target exists.
  for (const char* id : {"p1", "p2", "p3", "p4", "p5"}) {
    EXPECT_TRUE(Contains(html, std::string("href=\"#") + id + "\"")) << id;
    EXPECT_TRUE(Contains(html, std::string("<section id=\"") + id + "\"")) << id;
  }
  EXPECT_TRUE(Contains(html, ">Gender by Satisfaction</a>"));
  // Nothing is loaded from elsewhere.
  EXPECT_FALSE(Contains(html, "src="));
  EXPECT_FALSE(Contains(html, "<link"));

  OmHtmlRenderer::Options options;
  options.showExcluded = true;
  const std::string all = OmHtmlRenderer(options).Render(tree);
  EXPECT_TRUE(Contains(all, "Dropped table"));
  EXPECT_TRUE(Contains(all, "(excluded)"));
}

}  // namespace
