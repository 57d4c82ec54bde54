// The JSON writer's numbers and strings against what the JSON library writes for them: the golden
// files were first written by it, and scripts read the output with it.
#include "tools/render/OmJsonRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

// The library's digits are not always the shortest (0.0320486 comes out as 0.032048599999999997):
// ours read back to the same number, are never longer, and are laid out (point, exponent, ".0")
// as the library lays out as many digits.
TEST(OmJsonRenderer, NumbersReadBackAndAreLaidOutAsTheJsonLibraryLaysThemOut) {
  std::vector<double> values = {0.0, -0.0, 1.0, -1187.0, 0.1, 1e-4, 1.5e-5, 123456789012345.0, 1e15,
                                1e16, 1e20, 1.7976931348623157e308, 5e-324, 58.37, 2.0 / 3, -0.000123};
  std::mt19937_64 random(19);
  for (int i = 0; i < 20000; ++i) {
    // Any bit pattern, and numbers of the sizes tables show.
    const double any = std::bit_cast<double>(random());
    if (std::isfinite(any)) values.push_back(any);
    values.push_back(double(std::int64_t(random() % 2000001) - 1000000) / std::pow(10.0, double(random() % 8)));
  }
  for (double v : values) {
    SCOPED_TRACE(v);
    const std::string ours = OmJsonRenderer::Number(v), theirs = nlohmann::json(v).dump();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(nlohmann::json::parse(ours).get<double>()), std::bit_cast<std::uint64_t>(v));
    EXPECT_LE(ours.size(), theirs.size());
    auto layout = [](std::string text) {
      for (char& c : text) c = c >= '1' && c <= '9' ? '0' : c;
      return text;
    };
    if (ours.size() == theirs.size()) {
      EXPECT_EQ(layout(ours), layout(theirs));
    }
  }
  EXPECT_EQ(OmJsonRenderer::Number(std::nan("")), "null");
}

TEST(OmJsonRenderer, StringsAreEscapedAsTheJsonLibraryEscapesThem) {
  const std::string cases[] = {
      "plain", "say \"hi\" \\ back", std::string("\x01\x1f\t\n\r\b\f\x7f", 8), std::string("nul\0x", 5),
      "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",
      // Not UTF-8: a stray byte, cut sequences, a surrogate, overlong forms, a bad second byte.
      "\xFF", "a\xC3", "a\xE2\x82", "\xED\xA0\x80z", "\xF0\x80\x80\x80", "\xC0\xAF", "\xC3\x28", "\xF4\x90\x80\x80"};
  for (const std::string& text : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(OmJsonRenderer::String(text),
              nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  }
}

// Cells stored out of coordinate order are sorted by a key packing their coordinates, or by the
// coordinates themselves when those need more than 64 bits.
TEST(OmJsonRenderer, CellsAreListedInCoordinateOrderWhateverOrderTheyWereStored) {
  const std::vector<std::vector<std::vector<int>>> cases = {
      {{1, 0, 2}, {0, 7, 1}, {0, 0, 0}, {2, 5, 3}, {0, 7, 0}, {1, 0, 1}},
      {{2000000000, 1, 5}, {7, 2000000000, 0}, {7, 1, 2000000000}, {0, 3, 3}}};
  for (const auto& stored : cases) {
    OmOutputTree tree;
    auto table = std::make_unique<OmPivotTable>(OmStringCell("t"), OmStringCell("t"));
    for (const char* label : {"a", "b", "c"}) table->AddDimension(OmStringCell(label));
    for (std::size_t i = 0; i < stored.size(); ++i) table->Cell(stored[i], OmNumber(double(i)));
    tree.AppendUnderRoot(std::move(table));
    const nlohmann::json doc = nlohmann::json::parse(OmJsonRenderer().Render(tree));
    std::vector<std::vector<int>> listed;
    for (const auto& cell : doc["outline"]["children"][0]["cells"]) {
      listed.push_back(cell["at"].get<std::vector<int>>());
      EXPECT_EQ(stored[std::size_t(cell["value"].get<double>())], listed.back());
    }
    std::vector<std::vector<int>> sorted = stored;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(listed, sorted);
  }
}

}  // namespace
