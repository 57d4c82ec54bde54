// Output in another language and another code page: translations reach cells in the session's
// code page, so the JSON (UTF-8) reads right, categories sort by the translated text and OMS
// label patterns match translated labels.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

#include "ToolTestSupport.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using tooltest::TempDir;
using tooltest::Tool;
using tooltest::WriteFile;

struct Language {
  const char* olang;      // the OLANG setting
  const char* folder;     // lang/<folder>
  const char* codePage;   // of the session and the procedure
  const char* table;      // the string table, UTF-8
  const char* title;      // "Frequency" translated
  std::vector<std::string> sorted;  // the categories, translated, in ascending order
};

const Language kGerman{"German", "de", "windows-1252",
                       "Frequency\tHäufigkeit\nApple\tÄpfel\nPear\tBirne\nOil\tÖl\n",
                       "Häufigkeit", {"Äpfel", "Birne", "Öl"}};
// Japanese collation goes by reading, hiragana and katakana alike: ごま (goma, sesame), ナシ
// (nashi, pear), りんご (ringo, apple).
const Language kJapanese{"Japanese", "ja", "Shift_JIS",
                         "Frequency\t度数\nApple\tりんご\nPear\tナシ\nOil\tごま\n",
                         "度数", {"ごま", "ナシ", "りんご"}};

// A procedure whose table "Frequency" has a dimension of three translatable categories that the
// procedure asks to be sorted ascending.
void WriteStream(const Language& language, const std::string& path) {
  OmStreamWriter w;
  w.ByteOrderProbe();
  w.OutputSetting("OLANG", language.olang);
  w.BeginProcedure(1, std::string("procedure=Frequencies\ntranslated=Frequencies\nlanguage=") +
                          language.folder + "\ncodepage=" + language.codePage + "\nlocale=" +
                          language.folder + "\n");
  int id = 0;
  auto text = [&w, &id](const char* t, int literal = 0) {
    w.String(++id, t, literal);
    return id;
  };
  const int title = text("Frequency");
  w.BeginTable(1, title, text("Frequencies", 1));
  w.PlaceDimension(1, text("Fruit", 1), 1, 0);
  w.PlaceDimension(1, text("Statistics", 1), 1, 1);
  w.CellDimension(1, text("Statistics", 1));
  for (const char* fruit : {"Pear", "Oil", "Apple"}) {
    const int category = text(fruit);
    w.Category(1, category, text("Fruit", 1));
    if (fruit[1] == 'e') w.SortDimension(1, 0);  // the current dimension, ascending
    w.Number(++id, 1.0, (5 << 16) | (8 << 8));
    const int value = id;
    w.Cell(1, value, text("N", 1));
  }
  w.EndTable(1);
  w.EndProcedure();
  w.Save(path);
}

struct Rendered {
  int status = -1;
  std::string err;
  std::string title;                    // of the first table, empty without one
  std::vector<std::string> categories;  // its first dimension's, in order
};

Rendered Render(const TempDir& dir, const Language& language, const std::string& omsLabel = "") {
  const std::string stream = dir.File(std::string(language.folder) + ".oms");
  WriteStream(language, stream);
  std::vector<std::string> args{"render", "--format", "json", "--code-page", language.codePage,
                                "--string-tables", dir.Path()};
  if (!omsLabel.empty()) {
    const std::string requests = dir.File(std::string(language.folder) + "-oms.json");
    WriteFile(requests, R"([{"types": ["tables"], "if": {"labels": [")" + omsLabel + R"("]}}])");
    args.insert(args.end(), {"--oms", requests});
  }
  args.push_back(stream);
  const tooltest::Result run = Tool(args);
  Rendered r{run.status, run.err, {}, {}};
  if (run.status != 0) return r;
  // The first table anywhere in the tree.
  std::vector<nlohmann::json> pending{nlohmann::json::parse(run.out)["outline"]};
  while (!pending.empty()) {
    const nlohmann::json node = pending.back();
    pending.pop_back();
    if (node.value("kind", "") == "table") {
      r.title = node["title"].is_string() ? node["title"].get<std::string>() : "";
      for (const auto& category : node["dimensions"][0]["categories"]) {
        r.categories.push_back(category["label"].get<std::string>());
      }
      break;
    }
    if (node.contains("children")) {
      for (auto it = node["children"].rbegin(); it != node["children"].rend(); ++it) pending.push_back(*it);
    }
  }
  return r;
}

class Localisation : public ::testing::Test {
protected:
  void SetUp() override {
    for (const Language* l : {&kGerman, &kJapanese}) {
      std::filesystem::create_directories(std::filesystem::path(dir.Path()) / "lang" / l->folder);
      WriteFile(dir.File(std::string("lang/") + l->folder + "/omfactory.stt"), l->table);
    }
    std::filesystem::create_directories(std::filesystem::path(dir.Path()) / "lang" / "en");
    WriteFile(dir.File("lang/en/omfactory.stt"), "Frequency\tFrequency\n");
  }
  TempDir dir;
};

TEST_F(Localisation, TranslationsSortAndMatchInTheSessionsCodePage) {
  for (const Language* l : {&kGerman, &kJapanese}) {
    SCOPED_TRACE(l->codePage);
    const Rendered r = Render(dir, *l);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.title, l->title);
    EXPECT_EQ(r.categories, l->sorted);
  }
  // A language without a folder shows English, with one warning and no failure.
  const Language french{"French", "fr", "UTF-8", "", "Frequency", {"Apple", "Oil", "Pear"}};
  const Rendered english = Render(dir, french);
  ASSERT_EQ(english.status, 0) << english.err;
  EXPECT_EQ(english.title, "Frequency");
  EXPECT_EQ(english.categories, french.sorted);
  const std::string warning = "omfactory: warning: no string table for the output language fr";
  EXPECT_EQ(english.err.find(warning), 0u) << english.err;
  EXPECT_EQ(english.err.find(warning, 1), std::string::npos) << english.err;
  // A lower-case label pattern matches the translated label once both are in the code page.
  const Rendered matched = Render(dir, kGerman, "häufigkeit");
  ASSERT_EQ(matched.status, 0) << matched.err;
  EXPECT_EQ(matched.title, "Häufigkeit");
  const Rendered other = Render(dir, kGerman, "haufigkeit");
  ASSERT_EQ(other.status, 0) << other.err;
  EXPECT_EQ(other.title, "");
}

}  // namespace
