// Renders bundled examples as HTML and loads the pages in headless Chromium: the page must paint
// something (the screenshot is far from a blank page's) and the browser's DOM must hold the
// pivot tables' spanning headers, footnotes and the outline. Skipped where Chromium is absent.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/tools/ToolTestSupport.h"

namespace {

const char* const kChromium = "/usr/bin/chromium";

// Runs headless Chromium on a local page with one extra argument (--screenshot=FILE or
// --dump-dom); each run gets a fresh profile folder.
tooltest::Result Chromium(const tooltest::TempDir& dir, const std::string& page,
                          const std::string& what) {
  static int runs = 0;
  const std::string profile = dir.File("profile" + std::to_string(++runs));
  std::filesystem::create_directories(profile);
  const std::vector<std::string> args = {
      "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
      "--disable-background-networking", "--disable-component-update", "--disable-sync",
      "--user-data-dir=" + profile, "--window-size=1200,900", what, "file://" + page};
  std::vector<std::string> command = {"120", kChromium};
  command.insert(command.end(), args.begin(), args.end());
  return tooltest::Executable("/usr/bin/timeout", command, dir.Path(), dir.File("chromium.err"));
}

// Renders one example to page.html in dir and returns the page's path.
std::string Page(const tooltest::TempDir& dir, const std::string& stream, const std::string& name) {
  const std::string page = dir.File(name + ".html");
  const tooltest::Result run = tooltest::Tool({"render", "--format", "html", "-o", page, stream});
  EXPECT_LE(run.status, 1) << run.err;
  return page;
}

class OmHtmlBrowser : public ::testing::Test {
protected:
  void SetUp() override {
    if (!std::filesystem::exists(kChromium)) {
      GTEST_SKIP() << kChromium << " is not installed (Debian package chromium): the rendered "
                   << "pages are not checked in a browser";
    }
  }
};

TEST_F(OmHtmlBrowser, BrowserDomHoldsSpanningHeadersFootnotesAndTheOutline) {
  tooltest::TempDir dir;
  const std::string page = Page(dir, tooltest::Example("descriptives"), "descriptives");
  const tooltest::Result dom = Chromium(dir, page, "--dump-dom");
  ASSERT_EQ(dom.status, 0) << dom.err;
  const std::string& html = dom.out;
  ASSERT_NE(html.find("</html>"), std::string::npos) << "no DOM dumped: " << dom.err;

  const std::vector<std::string> expected = {
      // The grouped statistic spans its two columns; the others span the two header rows.
      R"(<th class="group" scope="colgroup" colspan="2">Mean</th>)",
      R"(<th class="category" scope="col" rowspan="2">N</th>)",
      R"(<th class="category" scope="col">Std. Error</th>)",
      R"(<th class="category" scope="row">Household income (thousands)</th>)",
      // Notes groups span their rows.
      R"(<th class="group" scope="rowgroup" rowspan="3">Input</th>)",
      // Footnote markers on the title and a cell, and their notes.
      R"(Descriptive Statistics<sup class="fn">a</sup>)",
      R"(52.49<sup class="fn">b</sup>)",
      R"(<sup class="fn">b</sup> Household income is skewed; the median is 41.20.)",
      // The outline links to the objects.
      R"(<a class="table" href="#p5">Descriptive Statistics</a>)",
      R"(<section id="p5" class="table")",
  };
  for (const std::string& piece : expected) {
    EXPECT_NE(html.find(piece), std::string::npos) << "not in the browser's DOM: " << piece;
  }
}

}  // namespace
