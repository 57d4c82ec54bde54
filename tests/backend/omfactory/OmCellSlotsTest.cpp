// The slot table's waiting values: a number or text stored in a low slot becomes a cell only when
// taken or looked at, exactly the cell that storing an object would have given, and never one
// left over from an earlier value of the slot. High ids make their cells at once; both must agree.
#include "backend/omfactory/OmCellSlots.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/strings/icuTracker.h"

namespace {

class OmCellSlotsTest : public ::testing::TestWithParam<int> {
protected:
  int Id() const { return GetParam(); }
  OmCellSlots slots;
  icuTracker tracker{true, "en_US"};
};

TEST_P(OmCellSlotsTest, AWaitingNumberIsMadeOnceWithItsValueFormatAndTracker) {
  slots.StoreNumber(Id(), 2.5, 0x050802, &tracker);
  OmCellText* peeked = slots.Peek(Id());
  ASSERT_NE(peeked, nullptr);
  EXPECT_EQ(slots.Peek(Id()), peeked);  // looking again does not make another
  auto* number = dynamic_cast<OmNumber*>(peeked);
  ASSERT_NE(number, nullptr);
  EXPECT_EQ(number->Value(), 2.5);
  EXPECT_EQ(number->Format(), 0x050802u);
  EXPECT_EQ(number->getICUTracker(), &tracker);
  std::unique_ptr<OmCellText> taken = slots.Take(Id());
  EXPECT_EQ(taken.get(), peeked);
  EXPECT_EQ(slots.Take(Id()), nullptr);
  EXPECT_EQ(slots.Peek(Id()), nullptr);
}

TEST_P(OmCellSlotsTest, ATextReusingTheSlotCarriesNothingOfTheLongerTextBefore) {
  slots.StoreText(Id(), std::string(300, 'x'), true, &tracker);
  std::unique_ptr<OmCellText> first = slots.Take(Id());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->Text(), std::string(300, 'x'));
  slots.StoreText(Id(), "Mean", false, nullptr);
  slots.StoreText(Id(), "N", true, &tracker);  // the second replaces the first unmade
  std::unique_ptr<OmCellText> taken = slots.Take(Id());
  auto* text = dynamic_cast<OmStringCell*>(taken.get());
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->Text(), "N");
  EXPECT_TRUE(text->Translatable());
  EXPECT_EQ(text->getICUTracker(), &tracker);
  slots.StoreText(Id(), "", false, nullptr);
  ASSERT_NE(slots.Peek(Id()), nullptr);  // an empty text is still a cell
  EXPECT_EQ(slots.Peek(Id())->Text(), "");
}

TEST_P(OmCellSlotsTest, ObjectsAndValuesReplaceEachOtherInOneSlot) {
  slots.StoreNumber(Id(), 1.0, 0x050802, nullptr);
  slots.Store(Id(), std::make_unique<OmStringCell>("object"));
  ASSERT_NE(slots.Peek(Id()), nullptr);
  EXPECT_EQ(slots.Peek(Id())->Text(), "object");
  slots.StoreNumber(Id(), 7.0, 0x050800, nullptr);
  auto* number = dynamic_cast<OmNumber*>(slots.Peek(Id()));
  ASSERT_NE(number, nullptr);
  EXPECT_EQ(number->Value(), 7.0);
}

TEST_P(OmCellSlotsTest, DiscardAndClearEmptyWaitingValues) {
  slots.StoreNumber(Id(), 1.0, 0x050802, nullptr);
  slots.Discard(Id());
  EXPECT_EQ(slots.Peek(Id()), nullptr);
  slots.StoreText(Id(), "kept until cleared", false, nullptr);
  slots.StoreNumber(Id() + 1, 3.0, 0x050802, nullptr);
  slots.Clear();
  EXPECT_EQ(slots.Size(), 0u);
  EXPECT_EQ(slots.Take(Id()), nullptr);
  EXPECT_EQ(slots.Take(Id() + 1), nullptr);
  slots.Discard(Id() + 5);  // beyond the table: nothing to do
  EXPECT_EQ(slots.Size(), 0u);
}

// A low id keeps values, a high one makes cells at once, and the last id of the range too.
INSTANTIATE_TEST_SUITE_P(Ids, OmCellSlotsTest,
                         ::testing::Values(0, 40, OmCellSlots::kValueIds - 1, OmCellSlots::kValueIds,
                                           OmCellSlots::kIdLimit - 2));

TEST(OmCellSlotsRange, IdsOutsideTheTableAreRefused) {
  OmCellSlots slots;
  EXPECT_THROW(slots.StoreNumber(OmCellSlots::kIdLimit, 1.0, 0, nullptr), OMSException);
  EXPECT_THROW(slots.StoreText(-1, "x", false, nullptr), OMSException);
  EXPECT_EQ(slots.Peek(-1), nullptr);
  EXPECT_EQ(slots.Size(), 0u);
}

}  // namespace
