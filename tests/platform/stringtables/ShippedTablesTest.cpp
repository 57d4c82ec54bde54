// Checks the string tables shipped in stringtables/ (found through OMF_STRINGTABLES_DIR).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/stringtables/FacSTDictionary.h"
#include "platform/stringtables/PathFactory.h"
#include "platform/stringtables/StringTable.h"

namespace {

const std::string kRoot = OMF_STRINGTABLES_DIR;

// The placeholders of a text, sorted: "^2 of ^1" gives {"^1", "^2"}.
std::vector<std::string> Placeholders(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t i = text.find('^'); i != std::string::npos; i = text.find('^', i + 1)) {
    std::size_t end = i + 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    if (end > i + 1) found.push_back(text.substr(i, end - i));
  }
  std::sort(found.begin(), found.end());
  return found;
}

class ShippedTablesTest : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(_english.HasTable()) << kRoot;
    ASSERT_TRUE(_german.HasTable()) << kRoot;
  }
  void TearDown() override {
    PathFactory::SetRoot("");
    PathFactory::getPathInstance(PathFactory::kStringTables).ResetFolder();
  }

  FacSTDictionary _english{kRoot + "/lang/en"};
  FacSTDictionary _german{kRoot + "/lang/de"};
};

}  // namespace

TEST_F(ShippedTablesTest, EveryEnglishKeyHasAGermanEntryInTheSameSectionWithTheSamePlaceholders) {
  const StringTable& en = *_english.Table();
  const StringTable& de = *_german.Table();
  std::size_t keys = 0;
  for (const StringTableSection* section : en.Sections()) {
    const StringTableSection* german =
        section->Name().empty() ? &de.Global() : de.FindSection(section->Name());
    ASSERT_NE(german, nullptr) << "German lacks [procedure " << section->Name() << "]";
    for (const auto& [key, entry] : section->Entries()) {
      ++keys;
      const StringTableEntry* translation = german->Find(key);
      if (!translation) {
        ADD_FAILURE() << "German lacks \"" << key << "\" (English line " << entry._line << ")";
        continue;
      }
      EXPECT_EQ(Placeholders(translation->_translation), Placeholders(key))
          << "\"" << key << "\" -> \"" << translation->_translation << "\"";
    }
  }
  EXPECT_GT(keys, 100u);
}

TEST_F(ShippedTablesTest, GermanHoldsNoKeyOrSectionThatEnglishLacks) {
  const StringTable& en = *_english.Table();
  for (const StringTableSection* section : _german.Table()->Sections()) {
    const StringTableSection* english =
        section->Name().empty() ? &en.Global() : en.FindSection(section->Name());
    ASSERT_NE(english, nullptr) << "English lacks [procedure " << section->Name() << "]";
    for (const auto& [key, entry] : section->Entries()) {
      EXPECT_NE(english->Find(key), nullptr)
          << "English lacks \"" << key << "\" (German line " << entry._line << ")";
    }
  }
}

TEST_F(ShippedTablesTest, EnglishTranslatesEveryKeyToItself) {
  for (const StringTableSection* section : _english.Table()->Sections()) {
    for (const auto& [key, entry] : section->Entries()) {
      EXPECT_EQ(entry._translation, key);
      EXPECT_EQ(entry._second, "");
      EXPECT_EQ(entry._third, "");
    }
  }
}

TEST_F(ShippedTablesTest, HoldTheTextsThatTheLibraryWritesItself) {
  const char* texts[] = {
      "Output Missing", "Out of memory collecting output.", "Log", "Text Output", "Pooled",
      "Fraction Missing Info.", "Relative Increase Variance", "Relative Efficiency",
      "No variance among imputations.", "Models not pooled - terms vary...",
      "Significance computed using F distribution, not Chi-square.", "^1, ^2",
      "Corr siq requires N...", "Bootstrap", "Bootstrap for ^1", "Bootstrap Statistics",
      "Statistic", "Bias", "Std. Error", "Sig. (2-tailed)", "^1% Confidence Interval",
      "BCa ^1% Confidence Interval", "Lower", "Upper", "Based on ^1 samples",
      "^1% coverage needs ^2 samples...", "Not all jackknife results available, so...",
      "Not all bootstrap results available...",
      "Unless otherwise noted, bootstrap results are based on ^1 ^2", "bootstrap samples",
      "stratified bootstrap samples", "residual bootstrap samples", "wild bootstrap samples"};
  for (const char* text : texts) {
    EXPECT_NE(_english.Table()->Global().Find(text), nullptr) << text;
    if (std::string(text) == "Bootstrap") continue;  // the same word in German
    EXPECT_NE(_german.LookUp(text), text) << "German leaves \"" << text << "\" untranslated";
  }
}

TEST_F(ShippedTablesTest, ChoosingALanguageFolderSwitchesTheSessionAndThePoolerReport) {
  // The flow of a session: the host's root, then an output-language change to German, then
  // the imputation pooler's own dictionary on the folder of the chosen language.
  PathFactory::SetRoot(kRoot);
  PathFactory& paths = PathFactory::getPathInstance(PathFactory::kStringTables);
  FacSTDictionary session(kRoot);
  session.SetProcedureEx("Frequencies");
  EXPECT_EQ(session.LookUp("Std. Error"), "Std. Error");

  session.SetGlobalStringTable(paths.GetFullPath("lang/de"));
  EXPECT_EQ(session.LookUp("Std. Error"), "Std.-Fehler");
  EXPECT_EQ(session.LookUp("Based on ^1 samples"), "Basierend auf ^1 Stichproben");

  const std::string report = "Pooling exceeded limit of ^1 pivot table cells...";
  EXPECT_EQ(session.LookUp(report), report) << "the report lives in the OMS section only";
  FacSTDictionary pooler(paths.Directory());
  pooler.SetProcedure("OMS");
  EXPECT_EQ(pooler.LookUp(report),
            "Beim Zusammenfassen wurde die Grenze von ^1 Pivot-Tabellenzellen überschritten...");

  session.SetGlobalStringTable(paths.GetFullPath("lang/en"));
  EXPECT_EQ(session.LookUp("Std. Error"), "Std. Error");
}
