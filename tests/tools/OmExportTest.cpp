// The escaping of the exports on hostile labels, and the format an output file's name chooses.
#include "tools/render/OmExport.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/omfactory/OmRenderCommand.h"

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
               {"x.txt", true, Format::kText},          {"x.pdf", false, Format::kText},
               {"noextension", false, Format::kText}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    Format format = Format::kText;
    EXPECT_EQ(OmRenderCommand::FormatOfFileName(c.path, format), c.known);
    EXPECT_EQ(format, c.format);
  }
}

}  // namespace
