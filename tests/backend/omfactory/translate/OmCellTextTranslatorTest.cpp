#include "backend/omfactory/translate/OmCellTextTranslator.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "platform/errors/OMSException.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/translate/TranslationTables.h"

namespace {

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

}  // namespace
