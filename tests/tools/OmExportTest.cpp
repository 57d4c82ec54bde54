// The escaping of the exports on hostile labels, and the format an output file's name chooses.
#include "tools/render/OmExport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "tools/omfactory/OmRenderCommand.h"
#include "tools/render/OmXlsxExport.h"

namespace {

TEST(OmExport, HostileLabelsAreEscapedForEachFormat) {
  const struct {
    std::string text, csv, markdown, latex;
  } cases[] = {
      {"plain 1.5", "plain 1.5", "plain 1.5", "plain 1.5"},
      {"a,b", "\"a,b\"", "a,b", "a,b"},
      {"say \"hi\"", "\"say \"\"hi\"\"\"", "say \"hi\"", "say \"hi\""},
      {"two\nlines", "\"two\nlines\"", "two lines", "two lines"},
      {"a|b\\c", "a|b\\c", "a\\|b\\\\c", "a\\textbar{}b\\textbackslash{}c"},
      {"*x* _y_ `z` [l] #h ~s", "*x* _y_ `z` [l] #h ~s", "\\*x\\* \\_y\\_ \\`z\\` \\[l\\] \\#h \\~s",
       "*x* \\_y\\_ `z` [l] \\#h \\textasciitilde{}s"},
      {"<b>&", "<b>&", "&lt;b>&amp;", "\\textless{}b\\textgreater{}\\&"},
      {"100% $5 {x}^2", "100% $5 {x}^2", "100% $5 {x}^2",
       "100\\% \\$5 \\{x\\}\\textasciicircum{}2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(OmExport::CsvField(c.text), c.csv);
    EXPECT_EQ(OmExport::MarkdownEscape(c.text), c.markdown);
    EXPECT_EQ(OmExport::LatexEscape(c.text), c.latex);
  }
}

TEST(OmExport, TheOutputFilesExtensionChoosesTheFormat) {
  using Format = OmRenderCommand::Format;
  const struct {
    const char* path;
    bool known;
    Format format;
  } cases[] = {{"out.csv", true, Format::kCsv},         {"dir.v2/Out.MD", true, Format::kMarkdown},
               {"a.markdown", true, Format::kMarkdown}, {"paper.tex", true, Format::kLatex},
               {"x.htm", true, Format::kHtml},          {"x.json", true, Format::kJson},
               {"x.txt", true, Format::kText},          {"Book.XLSX", true, Format::kXlsx},
               {"x.pdf", false, Format::kText},
               {"noextension", false, Format::kText}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    Format format = Format::kText;
    EXPECT_EQ(OmRenderCommand::FormatOfFileName(c.path, format), c.known);
    EXPECT_EQ(format, c.format);
  }
}

TEST(OmXlsxExport, SheetNamesAreValidAndUniqueWithoutRegardToCase) {
  std::set<std::string> used;
  const struct {
    std::string wanted, name;
  } cases[] = {
      {"Descriptives", "Descriptives"},
      {"descriptives", "descriptives (2)"},
      {"T-Test: a/b [c] *?\\", "T-Test_ a_b _c_ ___"},
      {"'quoted'", "quoted"},
      {"", "Sheet"},
      {"History", "History (2)"},
      // 31 characters at most, counted in characters, not bytes; a repeat still fits.
      {"Gender * Job satisfaction * Region Crosstabulation", "Gender _ Job satisfaction _ Reg"},
      {"Gender * Job satisfaction * Region", "Gender _ Job satisfaction _ (2)"},
      {"\xC3\x9C" + std::string(40, 'x'), "\xC3\x9C" + std::string(30, 'x')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.wanted);
    EXPECT_EQ(OmXlsxExport::SheetName(c.wanted, used), c.name);
  }
}

TEST(OmXlsxExport, NumberFormatsShowTheTablesDecimals) {
  auto word = [](int type, int decimals) { return std::uint32_t(type << 16 | decimals << 24 | 8); };
  const struct {
    std::uint32_t format;
    const char* excel;
  } cases[] = {{word(5, 2), "0.00"},     {word(5, 0), "0"},         {word(0, 0), "General"},
               {word(0, 3), "0.000"},    {word(3, 1), "#,##0.0"},   {word(4, 2), "\\$#,##0.00"},
               {word(6, 3), "0.000E+00"}, {word(7, 1), "0.0\\%"}, {word(5, 99), "0.000000000000000000000000000000"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.excel);
    EXPECT_EQ(OmXlsxExport::NumberFormat(c.format), c.excel);
  }
}

}  // namespace
