#include "platform/stringtables/FacSTDictionary.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/errors/OMSException.h"
#include "platform/stringtables/PathFactory.h"
#include "tests/platform/stringtables/TempTables.h"

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

class FacSTDictionaryTest : public ::testing::Test {
protected:
  void SetUp() override {
    _en = _tables.Write("lang/en/omfactory.stt", kEnglish);
    _de = _tables.Write("lang/de/omfactory.stt", kGerman);
  }
  void TearDown() override {
    FacSTDictionary::ClearCache();
    PathFactory::getPathInstance(PathFactory::kStringTables).ResetFolder();
  }

  TempTables _tables;
  std::string _en;
  std::string _de;
};

}  // namespace

TEST_F(FacSTDictionaryTest, LocationIsALanguageFolderATableFileOrARootReadAsEnglish) {
  EXPECT_EQ(FacSTDictionary(_tables.Path("lang/de")).LookUp("Bias"), "Verzerrung");
  EXPECT_EQ(FacSTDictionary(_tables.Path("lang/de/")).LookUp("Bias"), "Verzerrung");
  EXPECT_EQ(FacSTDictionary(_de).LookUp("Bias"), "Verzerrung");
  FacSTDictionary root(_tables.Root());
  ASSERT_TRUE(root.HasTable());
  EXPECT_EQ(root.LookUp("Lower"), "Lower");
  EXPECT_EQ(root.LookUp("Mean"), "Mean");  // only German has it
}

TEST_F(FacSTDictionaryTest, TableFileThatIsAFolderIsAnError) {
  std::filesystem::create_directories(_tables.Path("lang/ru/omfactory.stt"));
  try {
    FacSTDictionary dictionary(_tables.Path("lang/ru"));
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_NE(e.Message().find("omfactory.stt is not a file"), std::string::npos) << e.what();
  }
}

TEST_F(FacSTDictionaryTest, CopiesShareTheTableButSelectProceduresOnTheirOwn) {
  FacSTDictionary original(_tables.Path("lang/de"));
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
  original.SetGlobalStringTable(_tables.Path("lang/en"));
  EXPECT_EQ(assigned.LookUp("Bias"), "Verzerrung");
}
