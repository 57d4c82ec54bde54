#include "backend/omfactory/translate/OmCellTextTranslator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/translate/TranslationTables.h"

namespace {

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

// ---- composites

TEST_F(CellTextTranslatorTest, CompositeTranslatesTheMembersOfARepeatList) {
  OmComposite composite("Bootstrap for ^1", true);
  composite.BeginRepeatList();
  composite.Add(Key("Lower"));
  composite.Add(Key("Upper"));
  composite.EndRepeatList();
  composite.Accept(_toGerman);
  EXPECT_EQ(composite.Text(), "Bootstrap für Untergrenze, Obergrenze");
}

}  // namespace
