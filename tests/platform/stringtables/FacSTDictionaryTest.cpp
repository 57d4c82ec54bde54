#include "platform/stringtables/FacSTDictionary.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/errors/OMSException.h"
#include "platform/stringtables/PathFactory.h"

namespace {

constexpr const char* kEnglish =
    "Bias\tBias\n"
    "Lower\tLower\tlower bound\tof the interval\n"
    "[procedure OMS]\n"
    "Pooling exceeded limit of ^1 pivot table cells...\tPooling exceeded limit of ^1 cells...\n";

constexpr const char* kGerman =
    "Bias\tVerzerrung\n"
    "Lower\tUntergrenze\tuntere Grenze\n"
    "Mean\tMittelwert\n"
    "[procedure OMS]\n"
    "Pooling exceeded limit of ^1 pivot table cells...\tGrenze von ^1 Zellen überschritten...\n"
    "Mean\tDurchschnitt\n";

// The two tables in a scratch folder of the test's own, removed when the test ends.
class FacSTDictionaryTest : public ::testing::Test {
protected:
  void SetUp() override {
    for (const auto& [language, text] : {std::pair{"en", kEnglish}, std::pair{"de", kGerman}}) {
      std::filesystem::create_directories(_root / "lang" / language);
      std::ofstream(_root / "lang" / language / "omfactory.stt", std::ios::binary) << text;
    }
  }
  void TearDown() override {
    FacSTDictionary::ClearCache();
    PathFactory::getPathInstance(PathFactory::kStringTables).ResetFolder();
    std::filesystem::remove_all(_root);
  }
  std::string Path(const char* relative) const { return (_root / relative).generic_string(); }

  const std::filesystem::path _root =
      std::filesystem::temp_directory_path() / ("omf-strtab-" + std::to_string(::getpid()));
};

}  // namespace

TEST_F(FacSTDictionaryTest, LocationIsALanguageFolderATableFileOrARootReadAsEnglish) {
  for (const char* location : {"lang/de", "lang/de/", "lang/de/omfactory.stt"})
    EXPECT_EQ(FacSTDictionary(Path(location)).LookUp("Bias"), "Verzerrung") << location;
  FacSTDictionary root(_root.generic_string());
  ASSERT_TRUE(root.HasTable());
  EXPECT_EQ(root.LookUp("Lower"), "Lower");
  EXPECT_EQ(root.LookUp("Mean"), "Mean");  // only German has it
}

TEST_F(FacSTDictionaryTest, TableFileThatIsAFolderIsAnError) {
  std::filesystem::create_directories(_root / "lang/ru/omfactory.stt");
  EXPECT_THAT([&] { FacSTDictionary dictionary(Path("lang/ru")); },
              testing::ThrowsMessage<OMSException>(
                  testing::HasSubstr("omfactory.stt is not a file")));
}

TEST_F(FacSTDictionaryTest, CopiesShareTheTableButSelectProceduresOnTheirOwn) {
  FacSTDictionary original(Path("lang/de"));
  original.SetProcedure("OMS");
  FacSTDictionary copy(original);
  EXPECT_EQ(copy.Table(), original.Table());
  EXPECT_EQ(copy.LookUp("Mean"), "Durchschnitt");

  copy.SetProcedure("");
  EXPECT_EQ(copy.LookUp("Mean"), "Mittelwert");
  EXPECT_EQ(original.LookUp("Mean"), "Durchschnitt");

  FacSTDictionary assigned;
  assigned = original;
  EXPECT_EQ(assigned.LookUp("Mean"), "Durchschnitt");
  original.SetGlobalStringTable(Path("lang/en"));
  EXPECT_EQ(assigned.LookUp("Bias"), "Verzerrung");
}
