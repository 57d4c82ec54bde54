#include "tools/render/OmHtmlRenderer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

OmStringCell S(const std::string& text) { return OmStringCell(text); }

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

}  // namespace
