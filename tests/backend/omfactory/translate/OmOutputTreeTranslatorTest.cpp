#include "backend/omfactory/translate/OmOutputTreeTranslator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/translate/TranslationTables.h"

namespace {

OmStringCell Key(const std::string& key) { return OmStringCell(key, true); }

// A bootstrap-style table with a translatable text in every place the translator reaches:
// label, title, caption, corner, a dimension with a group of categories and a plain category, a
// footnote with a marker, and cells.
std::unique_ptr<OmPivotTable> FullTable() {
  auto table = std::make_unique<OmPivotTable>(Key("Bootstrap Statistics"),
                                              OmStringCell("Bootstrap Statistics"));
  table->SetTableTitle(Key("Bootstrap"));
  table->Caption(Key("Based on ^1 samples"));
  table->CornerText(Key("Statistic"));

  const int d = table->AddDimension(Key("Statistics"));
  OmDimension& dimension = table->Dimension(d);
  OmDimensionNode* group = dimension.Child(&dimension.Root(), -1, Key("Bootstrap"), true);
  dimension.Child(group, -1, Key("Bias"), false);
  dimension.Child(group, -1, Key("Std. Error"), false);
  dimension.Child(&dimension.Root(), -1, Key("Mean"), false);

  const OmStringCell marker = Key("Lower");
  table->Footnote(OmFootnote(Key("Not all bootstrap results available..."), &marker));

  table->Cell({0}, OmNumber(1.5));
  table->Cell({1}, Key("Upper"));
  table->Cell({2}, OmStringCell("Upper", false));
  return table;
}

std::vector<std::string> CategoryTexts(const OmDimension& dimension) {
  std::vector<std::string> texts;
  for (const auto& child : dimension.Root().Children()) {
    texts.push_back(child->Label()->Text());
    for (const auto& grandchild : child->Children()) texts.push_back(grandchild->Label()->Text());
  }
  return texts;
}

class OutputTreeTranslatorTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(_dictionary.HasTable()) << ShippedStringTables(); }

  FacSTDictionary _dictionary{ShippedStringTables() + "/lang/de"};
  OmOutputTreeTranslator _translator{&_dictionary};
};

TEST_F(OutputTreeTranslatorTest, EveryTextOfATableIsTranslated) {
  auto table = FullTable();
  table->Accept(_translator);

  EXPECT_EQ(table->LabelText(), "Bootstrap-Statistiken");
  EXPECT_EQ(table->TableTitle()->Text(), "Bootstrap");
  EXPECT_EQ(table->Caption()->Text(), "Basierend auf ^1 Stichproben");
  EXPECT_EQ(table->CornerText()->Text(), "Statistik");
  EXPECT_EQ(table->Dimension(0).Label()->Text(), "Statistiken");
  EXPECT_EQ(CategoryTexts(table->Dimension(0)),
            (std::vector<std::string>{"Bootstrap", "Verzerrung", "Std.-Fehler", "Mittelwert"}));
  ASSERT_EQ(table->Footnotes().size(), 1u);
  EXPECT_EQ(table->Footnotes()[0].Text().Text(), "Nicht alle Bootstrap-Ergebnisse verfügbar...");
  EXPECT_EQ(table->Footnotes()[0].Marker()->Text(), "Untergrenze");
  EXPECT_EQ(table->Cell({1})->Text(), "Obergrenze");
  EXPECT_EQ(table->Cell({2})->Text(), "Upper");  // not translatable
}

TEST_F(OutputTreeTranslatorTest, TemplateNameIsNotTranslated) {
  // OMS subtypes and the pooling registries key on the template name as the procedure sent it.
  auto table = FullTable();
  table->Accept(_translator);
  EXPECT_EQ(table->TemplateName().Text(), "Bootstrap Statistics");
}

TEST_F(OutputTreeTranslatorTest, TranslatingATableTwiceGivesTheSameResult) {
  auto once = FullTable();
  once->Accept(_translator);
  auto twice = FullTable();
  twice->Accept(_translator);
  twice->Accept(_translator);

  EXPECT_EQ(twice->LabelText(), once->LabelText());
  EXPECT_EQ(twice->Caption()->Text(), once->Caption()->Text());
  EXPECT_EQ(CategoryTexts(twice->Dimension(0)), CategoryTexts(once->Dimension(0)));
  EXPECT_EQ(twice->Footnotes()[0].Text().Text(), once->Footnotes()[0].Text().Text());
  EXPECT_EQ(twice->Cell({1})->Text(), once->Cell({1})->Text());
}

TEST_F(OutputTreeTranslatorTest, SwitchingTheStringTableSwitchesTheLabels) {
  auto table = FullTable();
  table->Accept(_translator);
  ASSERT_EQ(table->Dimension(0).Label()->Text(), "Statistiken");

  // The session switches the language on the dictionary the translator holds.
  _dictionary.SetGlobalStringTable(ShippedStringTables() + "/lang/en");
  table->Accept(_translator);
  EXPECT_EQ(table->LabelText(), "Bootstrap Statistics");
  EXPECT_EQ(table->Dimension(0).Label()->Text(), "Statistics");
  EXPECT_EQ(CategoryTexts(table->Dimension(0)),
            (std::vector<std::string>{"Bootstrap", "Bias", "Std. Error", "Mean"}));
  EXPECT_EQ(table->Footnotes()[0].Marker()->Text(), "Lower");

  _dictionary.SetGlobalStringTable(ShippedStringTables() + "/lang/de");
  table->Accept(_translator);
  EXPECT_EQ(table->Cell({1})->Text(), "Obergrenze");
}

TEST_F(OutputTreeTranslatorTest, TableWithoutTitleCaptionOrCornerText) {
  OmPivotTable table(Key("Notes"), OmStringCell("Notes"));
  table.Accept(_translator);
  EXPECT_EQ(table.LabelText(), "Anmerkungen");
  EXPECT_EQ(table.TableTitle(), nullptr);
  EXPECT_EQ(table.Caption(), nullptr);
  EXPECT_EQ(table.CornerText(), nullptr);
}

TEST_F(OutputTreeTranslatorTest, CompositeCellsAreSubstitutedFromTranslatedParts) {
  OmPivotTable table(Key("Bootstrap"), OmStringCell("Bootstrap"));
  table.AddDimension(Key("Statistics"));
  OmComposite composite("Bootstrap for ^1", true);
  composite.Add(Key("Bias"));
  table.Cell({0}, composite);
  table.Accept(_translator);
  EXPECT_EQ(table.Cell({0})->Text(), "Bootstrap für Verzerrung");
}

TEST_F(OutputTreeTranslatorTest, TranslatedCategoriesAreFoundByTheirNewLabels) {
  // Enough categories for the node's hashed look-up; labels found before translation must not
  // leave a look-up keyed on the old texts.
  OmPivotTable table(Key("Statistics"), OmStringCell("Statistics"));
  OmDimension& dimension = table.Dimension(table.AddDimension(Key("Statistics")));
  dimension.Child(&dimension.Root(), -1, Key("Bias"), false);
  for (int i = 0; i < 40; ++i) {
    dimension.Child(&dimension.Root(), -1, OmStringCell("Category " + std::to_string(i)), false);
  }
  ASSERT_EQ(dimension.FindChild(&dimension.Root(), Key("Bias"), false), 0);

  table.Accept(_translator);
  OmStringCell translated("Verzerrung");
  EXPECT_EQ(dimension.FindChild(&dimension.Root(), translated, false), 0);
}

TEST_F(OutputTreeTranslatorTest, PartsOtherThanTablesAreLeftAsTheyAre) {
  // Their labels are translated by the end of the procedure with the cell-text translator.
  OmHeading heading(Key("Notes"));
  heading.Accept(_translator);
  EXPECT_EQ(heading.LabelText(), "Notes");

  heading.Label()->Accept(_translator.GetCellTextTranslator());
  EXPECT_EQ(heading.LabelText(), "Anmerkungen");
}

}  // namespace
