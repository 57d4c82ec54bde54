#include "backend/omfactory/translate/OmCellTextTranslator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/translate/TranslationTables.h"

namespace {

// The translator only passes trackers on; a distinct address stands for one and is never used.
icuTracker* TrackerToken() {
  alignas(std::max_align_t) static unsigned char token[16];
  return reinterpret_cast<icuTracker*>(token);
}

std::unique_ptr<OmStringCell> Key(const std::string& key) {
  return std::make_unique<OmStringCell>(key, true);
}

class CellTextTranslatorTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(_german.HasTable()) << ShippedStringTables(); }

  FacSTDictionary _german{ShippedStringTables() + "/lang/de"};
  FacSTDictionary _english{ShippedStringTables() + "/lang/en"};
  OmCellTextTranslator _toGerman{&_german};
};

TEST(CellTextTranslatorConstruction, NullDictionaryIsRejected) {
  EXPECT_THROW(OmCellTextTranslator(nullptr), OMSException);
}

// ---- string cells

TEST_F(CellTextTranslatorTest, TranslatableCellShowsTranslationAndKeepsItsKey) {
  OmStringCell cell("Bias", true);
  cell.Accept(_toGerman);
  EXPECT_EQ(cell.Text(), "Verzerrung");
  EXPECT_EQ(cell.KeyText(), "Bias");
}

TEST_F(CellTextTranslatorTest, CellThatIsNotTranslatableKeepsItsText) {
  // A variable named like a key must not be translated.
  OmStringCell cell("Bias", false);
  cell.Accept(_toGerman);
  EXPECT_EQ(cell.Text(), "Bias");
  EXPECT_EQ(cell.SecondText(), "");
}

TEST_F(CellTextTranslatorTest, TranslatingTwiceStartsFromTheKeyEachTime) {
  OmStringCell cell("Based on ^1 samples", true);
  cell.Accept(_toGerman);
  cell.Accept(_toGerman);
  EXPECT_EQ(cell.Text(), "Basierend auf ^1 Stichproben");

  // Another language after German: looked up from the key, not from the German text.
  OmCellTextTranslator toEnglish(&_english);
  cell.Accept(toEnglish);
  EXPECT_EQ(cell.Text(), "Based on ^1 samples");
}

TEST(CellTextTranslatorTables, SecondAndThirdTextsOfTheLookUpAreKeptWithTheCell) {
  ScratchTable table("Mean\tMittel\tzweiter Text\tdritter Text\nSum\tSumme\n");
  FacSTDictionary dictionary(table.Folder());
  OmCellTextTranslator translator(&dictionary);

  OmStringCell mean("Mean", true);
  mean.Accept(translator);
  EXPECT_EQ(mean.Text(), "Mittel");
  EXPECT_EQ(mean.SecondText(), "zweiter Text");
  EXPECT_EQ(mean.FurtherText(), "dritter Text");

  // An entry without further texts clears what an earlier translation left.
  OmStringCell sum("Sum", true);
  sum.setSecondText("stale");
  sum.setFurtherText("stale");
  sum.Accept(translator);
  EXPECT_EQ(sum.Text(), "Summe");
  EXPECT_EQ(sum.SecondText(), "");
  EXPECT_EQ(sum.FurtherText(), "");
}

TEST_F(CellTextTranslatorTest, DictionaryIsToldTheTrackerOfTheCellLookedUp) {
  OmStringCell cell("Bias", true);
  cell.setICUTracker(TrackerToken());
  cell.Accept(_toGerman);
  EXPECT_EQ(_german.getICUTracker(), TrackerToken());
}

TEST_F(CellTextTranslatorTest, NumbersAndVariablesAreLeftAlone) {
  OmNumber number(3.5);
  const std::string numberText = number.Text();
  number.Accept(_toGerman);
  EXPECT_EQ(number.Text(), numberText);

  OmVariable variable("Bias", "Bias", 0);
  const std::string variableText = variable.Text();
  variable.Accept(_toGerman);
  EXPECT_EQ(variable.Text(), variableText);
}

// ---- composites

TEST_F(CellTextTranslatorTest, CompositeShowsTranslatedPatternFilledWithTranslatedArguments) {
  OmComposite composite("Bootstrap for ^1", true);
  composite.Add(Key("Bias"));
  composite.Accept(_toGerman);
  EXPECT_EQ(composite.Text(), "Bootstrap für Verzerrung");
}

TEST_F(CellTextTranslatorTest, CompositeKeepsArgumentsThatAreNotTranslatable) {
  OmComposite composite("^1, ^2", true);
  composite.Add(std::make_unique<OmStringCell>("Mean", false));
  composite.Add(Key("Mean"));
  composite.Accept(_toGerman);
  EXPECT_EQ(composite.Text(), "Mean; Mittelwert");
}

TEST_F(CellTextTranslatorTest, CompositeTranslatesTheMembersOfARepeatList) {
  OmComposite composite("Bootstrap for ^1", true);
  composite.BeginRepeatList();
  composite.Add(Key("Lower"));
  composite.Add(Key("Upper"));
  composite.EndRepeatList();
  composite.Accept(_toGerman);
  EXPECT_EQ(composite.Text(), "Bootstrap für Untergrenze, Obergrenze");
}

TEST_F(CellTextTranslatorTest, NestedCompositeIsTranslatedInsideItsParent) {
  OmComposite inner("Based on ^1 samples", true);
  inner.Add(OmNumber(1000.0, OmNumber::kDefaultFormat));
  OmComposite outer("Bootstrap for ^1", true);
  outer.Add(inner);
  outer.Accept(_toGerman);

  OmComposite expectedInner("Basierend auf ^1 Stichproben", false);
  expectedInner.Add(OmNumber(1000.0, OmNumber::kDefaultFormat));
  expectedInner.Substitute();
  EXPECT_EQ(outer.Text(), "Bootstrap für " + expectedInner.Text());
}

TEST_F(CellTextTranslatorTest, CompositeTranslatedTwiceGivesTheSameText) {
  OmComposite composite("Bootstrap for ^1", true);
  composite.Add(Key("Std. Error"));
  composite.Accept(_toGerman);
  const std::string once = composite.Text();
  composite.Accept(_toGerman);
  EXPECT_EQ(composite.Text(), once);
  EXPECT_EQ(once, "Bootstrap für Std.-Fehler");
}

TEST_F(CellTextTranslatorTest, CompositePassesItsTrackerToEveryPart) {
  icuTracker* const tracker = TrackerToken();
  OmComposite composite("Bootstrap for ^1", true);
  composite.BeginRepeatList();
  composite.Add(Key("Lower"));
  composite.EndRepeatList();
  composite.Add(Key("Upper"));
  composite.setICUTracker(tracker);
  composite.Accept(_toGerman);

  EXPECT_EQ(composite.Pattern().getICUTracker(), tracker);
  const auto& arguments = composite.Root().Parts();
  ASSERT_EQ(arguments.size(), 2u);
  ASSERT_TRUE(arguments[0]->IsRepeatList());
  EXPECT_EQ(arguments[0]->Parts().at(0)->Cell()->getICUTracker(), tracker);
  EXPECT_EQ(arguments[1]->Cell()->getICUTracker(), tracker);
}

}  // namespace
