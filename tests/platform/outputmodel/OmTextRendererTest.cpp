#include "platform/outputmodel/OmTextRenderer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

OmStringCell S(const std::string& t) { return OmStringCell(t); }

TEST(OmTextRenderer, EveryLayerGetsItsOwnBlock) {
  OmPivotTable t(S("Layered"), S("L"));
  t.AddDimension(S("Row"));
  t.AddDimension(OmVariable("sex", "Sex", 2));
  t.Rows().push_back(0);
  t.Layers().push_back(1);
  t.Dimension(0).Child(&t.Dimension(0).Root(), -1, S("r"), false);
  t.Dimension(1).Child(&t.Dimension(1).Root(), -1, S("Male"), false);
  t.Dimension(1).Child(&t.Dimension(1).Root(), -1, S("Female"), false);
  t.Cell({0, 0}, OmNumber(1, 0x50005));
  t.Cell({0, 1}, OmNumber(2, 0x50005));
  const std::string all = OmTextRenderer().RenderTable(t);
  EXPECT_THAT(all, testing::ContainsRegex("Sex: Male\n.*Sex: Female\n"));
  OmTextRenderer::Options first;
  first.allLayers = false;
  const std::string one = OmTextRenderer(first).RenderTable(t);
  EXPECT_EQ(one.find("Sex: Female"), std::string::npos);
  EXPECT_NE(one.find("(2 layers; only the first is shown)"), std::string::npos);
  // A layer whose categories are hidden (a split kept at one value) prints no layer line.
  t.Dimension(1).setDisplayFlags(true, true);
  const std::string hidden = OmTextRenderer(first).RenderTable(t);
  EXPECT_EQ(hidden.find("Male"), std::string::npos) << hidden;
  EXPECT_EQ(hidden.find("Sex"), std::string::npos) << hidden;
}

// A group of an inner column dimension is labelled once under each category of the outer one.
TEST(OmTextRenderer, InnerColumnGroupsAreLabelledOncePerOuterCategory) {
  OmPivotTable t(S("Grouped"), S("G"));
  for (const char* label : {"Year", "Measure", "Row"}) t.AddDimension(S(label));
  for (short d : {0, 1}) t.Columns().push_back(d);
  t.Rows().push_back(2);
  for (const char* year : {"2024", "2025"}) t.Dimension(0).Child(&t.Dimension(0).Root(), -1, S(year), false);
  OmDimension::Node money = t.Dimension(1).Child(&t.Dimension(1).Root(), -1, S("Money"), true);
  for (const char* measure : {"Cost", "Price"}) t.Dimension(1).Child(money, -1, S(measure), false);
  t.Dimension(2).Child(&t.Dimension(2).Root(), -1, S("r"), false);
  for (int c = 0; c < 4; ++c) t.Cell({c / 2, c % 2, 0}, OmNumber(c, 0x50005));
  const std::string text = OmTextRenderer().RenderTable(t);
  std::size_t labels = 0;
  for (std::size_t at = text.find("Money"); at != std::string::npos; at = text.find("Money", at + 1)) ++labels;
  EXPECT_EQ(labels, 2u) << text;
}

TEST(OmTextRenderer, FootnoteMarkersRunThroughTheAlphabet) {
  OmPivotTable t(S("t"), S("t"));
  EXPECT_EQ(OmTextRenderer::FootnoteMarker(t, 0), "a");
  EXPECT_EQ(OmTextRenderer::FootnoteMarker(t, 25), "z");
  EXPECT_EQ(OmTextRenderer::FootnoteMarker(t, 26), "aa");
  EXPECT_EQ(OmTextRenderer::FootnoteMarker(t, 27), "ab");
  // A cell's references are listed together.
  t.AddDimension(S("Row"));
  t.Rows().push_back(0);
  t.Dimension(0).Child(&t.Dimension(0).Root(), -1, S("r"), false);
  OmNumber cell(1, 0x50005);
  for (const char* note : {"one", "two"}) cell.Footnote(std::int16_t(t.Footnote(OmFootnote(S(note)))));
  t.Cell({0}, cell);
  EXPECT_NE(OmTextRenderer().RenderTable(t).find("1[a,b]"), std::string::npos) << OmTextRenderer().RenderTable(t);
}

TEST(OmTextRenderer, OutlineIndentsByLevelAndSkipsExcludedParts) {
  OmOutputTree tree;
  tree.AppendUnderRoot(std::make_unique<OmPageTitle>("UTF-8"));
  static_cast<OmPageTitle*>(tree.Last().Value())->AddLine("Study");
  auto proc = tree.AppendUnderRoot(std::make_unique<OmProcedure>(S("Descriptives"), "en", "UTF-8", "en"));
  auto heading = tree.Append(proc, std::make_unique<OmHeading>(S("Part one")));
  auto block = std::make_unique<OmTextBlock>(S("Text Output"), "UTF-8");
  for (const char* line : {"hello", "", "world"}) block->AddLine(line);
  tree.Append(heading, std::move(block));
  // An unselected table hides its contents; an unselected heading still shows what was
  // selected inside it.
  auto table = std::make_unique<OmPivotTable>(S("Hidden"), S("H"));
  table->_keep = 0;
  auto t = tree.Append(proc, std::move(table));
  tree.Append(t, std::make_unique<OmHeading>(S("Below hidden")));
  auto unselected = std::make_unique<OmHeading>(S("Unselected"));
  unselected->_keep = 0;
  auto u = tree.Append(proc, std::move(unselected));
  tree.Append(u, std::make_unique<OmHeading>(S("Selected inside")));
  const std::string expected =
      "Page Title: Study\n"
      "Descriptives\n"
      "  Part one\n"
      "    Text Output\n"
      "      hello\n"
      "\n"
      "      world\n"
      "\n"
      "  Unselected\n"
      "    Selected inside\n";
  EXPECT_EQ(OmTextRenderer().Render(tree), expected);
  OmTextRenderer::Options all;
  all.showExcluded = true;
  const std::string withExcluded = OmTextRenderer(all).Render(tree);
  EXPECT_NE(withExcluded.find("  Unselected (excluded)\n"), std::string::npos) << withExcluded;
  EXPECT_NE(withExcluded.find("Below hidden\n"), std::string::npos) << withExcluded;
}

}  // namespace
