#include "platform/stringtables/FacSTDictionary.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/errors/OMSException.h"
#include "platform/stringtables/PathFactory.h"
#include "platform/stringtables/StringTable.h"
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

TEST_F(FacSTDictionaryTest, LookUpGivesTranslationAndFurtherTextsOrTheKeyAndClearsThem) {
  FacSTDictionary dictionary(_tables.Path("lang/en"));
  std::string second;
  std::string third;
  EXPECT_EQ(dictionary.LookUp("Lower", second, third), "Lower");
  EXPECT_EQ(second, "lower bound");
  EXPECT_EQ(third, "of the interval");
  EXPECT_EQ(dictionary.LookUp("Bias", second, third), "Bias");
  EXPECT_EQ(second + third, "");
  second = third = "stale";
  EXPECT_EQ(dictionary.LookUp("No such key ^1", second, third), "No such key ^1");
  EXPECT_EQ(second + third, "");
}

TEST_F(FacSTDictionaryTest, MissingLocationsBehaveLikeAnEmptyTable) {
  std::filesystem::create_directories(_tables.Path("lang/ja"));
  for (const std::string& location :
       {_tables.Path("lang/xx"), _tables.Path("lang/ja"), _tables.Path("lang/de/other.stt"),
        std::string()}) {
    FacSTDictionary dictionary(location);
    EXPECT_FALSE(dictionary.HasTable()) << location;
    EXPECT_EQ(dictionary.LookUp("Bias"), "Bias") << location;
    dictionary.SetProcedureEx("OMS");
    EXPECT_EQ(dictionary.LookUp("Mean"), "Mean") << location;
  }
  FacSTDictionary none;
  EXPECT_FALSE(none.HasTable());
  EXPECT_EQ(none.LookUp("Bias"), "Bias");
}

TEST_F(FacSTDictionaryTest, LocationIsALanguageFolderATableFileOrARootReadAsEnglish) {
  EXPECT_EQ(FacSTDictionary(_tables.Path("lang/de")).LookUp("Bias"), "Verzerrung");
  EXPECT_EQ(FacSTDictionary(_tables.Path("lang/de/")).LookUp("Bias"), "Verzerrung");
  EXPECT_EQ(FacSTDictionary(_de).LookUp("Bias"), "Verzerrung");
  FacSTDictionary root(_tables.Root());
  ASSERT_TRUE(root.HasTable());
  EXPECT_EQ(root.LookUp("Lower"), "Lower");
  EXPECT_EQ(root.LookUp("Mean"), "Mean");  // only German has it
}

TEST_F(FacSTDictionaryTest, ProcedureSectionIsTriedBeforeTheGlobalSection) {
  FacSTDictionary dictionary(_tables.Path("lang/de"));
  const std::string report = "Pooling exceeded limit of ^1 pivot table cells...";
  EXPECT_EQ(dictionary.LookUp("Mean"), "Mittelwert");
  EXPECT_EQ(dictionary.LookUp(report), report) << "section keys are hidden without the procedure";

  dictionary.SetProcedure("OMS");
  EXPECT_EQ(dictionary.LookUp("Mean"), "Durchschnitt");
  EXPECT_EQ(dictionary.LookUp(report), "Grenze von ^1 Zellen überschritten...");
  EXPECT_EQ(dictionary.LookUp("Bias"), "Verzerrung") << "falls back to the global section";

  dictionary.SetProcedure("Frequencies");  // no such section
  EXPECT_EQ(dictionary.LookUp("Mean"), "Mittelwert");
  EXPECT_EQ(dictionary.LookUp(report), report);
  dictionary.SetProcedure("");
  EXPECT_EQ(dictionary.LookUp("Mean"), "Mittelwert");
}

TEST_F(FacSTDictionaryTest, SetProcedureIsExactWhileSetProcedureExIgnoresCaseAndBlanks) {
  FacSTDictionary dictionary(_tables.Path("lang/de"));
  dictionary.SetProcedure("oms");
  EXPECT_EQ(dictionary.LookUp("Mean"), "Mittelwert");
  dictionary.SetProcedureEx(" oms ");
  EXPECT_EQ(dictionary.LookUp("Mean"), "Durchschnitt");
  EXPECT_EQ(dictionary.GetProcedure(), " oms ");
}

TEST_F(FacSTDictionaryTest, LanguageSwitchChangesTranslationsAndKeepsTheProcedure) {
  FacSTDictionary dictionary(_tables.Path("lang/en"));
  dictionary.SetProcedureEx("oms");
  const std::string report = "Pooling exceeded limit of ^1 pivot table cells...";
  EXPECT_EQ(dictionary.LookUp("Bias"), "Bias");
  EXPECT_EQ(dictionary.LookUp(report), "Pooling exceeded limit of ^1 cells...");

  dictionary.SetGlobalStringTable(ExtNameStr(_tables.Path("lang/de")));
  EXPECT_EQ(dictionary.GetStringTablePath().GetGeneric(), _tables.Path("lang/de"));
  EXPECT_EQ(dictionary.LookUp("Bias"), "Verzerrung");
  EXPECT_EQ(dictionary.LookUp(report), "Grenze von ^1 Zellen überschritten...");

  dictionary.SetGlobalStringTable(_tables.Path("lang/fr"));  // no French tables: the keys
  EXPECT_EQ(dictionary.LookUp("Bias"), "Bias");
  EXPECT_EQ(dictionary.LookUp(report), report);

  dictionary.SetGlobalStringTable(_tables.Path("lang/de"));
  EXPECT_EQ(dictionary.LookUp("Mean"), "Durchschnitt");
}

TEST_F(FacSTDictionaryTest, MalformedFileIsReportedWithFileAndLineAndTheOldTableStays) {
  const std::string bad = _tables.Write("lang/pl/omfactory.stt", "Bias\tObciazenie\nLower\n");
  FacSTDictionary dictionary(_tables.Path("lang/de"));
  try {
    dictionary.SetGlobalStringTable(_tables.Path("lang/pl"));
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    const std::string canonical = std::filesystem::weakly_canonical(bad).generic_string();
    EXPECT_EQ(e.Message(), "StringTable::Parse -- " + canonical +
                               " line 2: entry without a tab between key and translation");
    EXPECT_EQ(e.Value1(), 2);
  }
  EXPECT_EQ(dictionary.GetStringTablePath().GetGeneric(), _tables.Path("lang/de"));
  EXPECT_EQ(dictionary.LookUp("Bias"), "Verzerrung");
  EXPECT_THROW(FacSTDictionary{bad}, OMSException);
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

TEST_F(FacSTDictionaryTest, EachFileIsReadOnceUntilTheCacheIsCleared) {
  FacSTDictionary first(_tables.Path("lang/de"));
  FacSTDictionary sameFile(_tables.Path("lang/../lang/de/./omfactory.stt"));
  EXPECT_EQ(first.Table(), sameFile.Table()) << "one table per file, whatever the spelling";

  _tables.Write("lang/de/omfactory.stt", "Bias\tSystematischer Fehler\n");
  FacSTDictionary beforeClear(_tables.Path("lang/de"));
  EXPECT_EQ(beforeClear.LookUp("Bias"), "Verzerrung") << "the file was not read again";

  FacSTDictionary::ClearCache();
  FacSTDictionary afterClear(_tables.Path("lang/de"));
  EXPECT_EQ(afterClear.LookUp("Bias"), "Systematischer Fehler");
  EXPECT_EQ(first.LookUp("Bias"), "Verzerrung") << "held tables stay valid";
  EXPECT_NE(first.Table(), afterClear.Table());
}

TEST_F(FacSTDictionaryTest, MissingFileIsLookedForAgainLater) {
  FacSTDictionary before(_tables.Path("lang/es"));
  EXPECT_FALSE(before.HasTable());
  _tables.Write("lang/es/omfactory.stt", "Bias\tSesgo\n");
  FacSTDictionary after(_tables.Path("lang/es"));
  EXPECT_EQ(after.LookUp("Bias"), "Sesgo");
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
