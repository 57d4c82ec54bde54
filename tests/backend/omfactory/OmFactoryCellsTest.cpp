// Cell messages: numbers and their formats, strings with chunking, long strings, variables, data
// values, composites, copying and discarding, and the byte-order switches, from senders of both
// byte orders.
#include <typeinfo>

#include "SessionFixture.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmStringDataValue.h"
#include "platform/outputmodel/OmVariable.h"

namespace sessiontest {
namespace {

template <class C>
const C& PendingAs(OmFactory& factory, int id) {
  const OmCellText* cell = factory.PendingCell(id);
  if (cell == nullptr) throw std::runtime_error("slot " + std::to_string(id) + " is empty");
  return dynamic_cast<const C&>(*cell);
}

using CellMessages = BothOrdersTest;

TEST_P(CellMessages, StringValuesKeepNameLabelAndDisplayMode) {
  writer.DataValue(4, 0, 0x010A03, "sex", "Female", std::string_view("f"));
  Feed();
  const auto& value = PendingAs<OmStringDataValue>(*factory, 4);
  EXPECT_EQ(value.Value(), "f");
  EXPECT_EQ(value.Label(), "Female");
  EXPECT_EQ(value.DisplayMode(), 1u);  // display 0 asks for values
}

TEST_P(CellMessages, ChunkedStringIsOneCellAfterItsLastPiece) {
  const std::string text(70000, 'x');
  Feed();
  writer.String(5, text, 1, 40000);
  std::vector<OmStreamRecord> pieces = writer.Records();
  writer.Clear();
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0].payload.size(), 12u + 40000u);
  factory->Message(pieces[0].code, unsigned(pieces[0].payload.size()), pieces[0].payload.data());
  EXPECT_EQ(factory->PendingCell(5), nullptr);  // the first piece only buffers
  factory->Message(pieces[1].code, unsigned(pieces[1].payload.size()), pieces[1].payload.data());
  EXPECT_EQ(Pending(5), text);

  // The buffer was emptied: the next short string stands alone.
  writer.String(6, "short", 1);
  Feed();
  EXPECT_EQ(Pending(6), "short");
}

TEST_P(CellMessages, LongStringPiecesGoToTheirParts) {
  writer.LongStringPiece(7, 2, "ab", "", false);
  writer.LongStringPiece(7, 2, "", "cd", false);
  Feed();
  EXPECT_EQ(factory->PendingCell(7), nullptr);
  writer.LongStringPiece(7, 2, "e", "f", true);
  Feed();
  const auto& cell = PendingAs<OmStringCellUTF8>(*factory, 7);
  ASSERT_EQ(cell.NTexts(), 2u);
  EXPECT_EQ(cell.Texts()[0], "abe");
  EXPECT_EQ(cell.Texts()[1], "cdf");
}

TEST_P(CellMessages, LongStringKindsBelowTwoMakePlainStrings) {
  writer.LongString(1, 0, std::string(50000, 'a'));
  writer.LongString(2, -3, "literal");
  writer.LongString(3, 5, "only A");
  Feed();
  EXPECT_TRUE(PendingAs<OmStringCell>(*factory, 1).Translatable());
  EXPECT_EQ(Pending(1).size(), 50000u);
  EXPECT_FALSE(PendingAs<OmStringCell>(*factory, 2).Translatable());
  EXPECT_EQ(PendingAs<OmStringCellUTF8>(*factory, 3).NTexts(), 1u);
}

TEST_P(CellMessages, LongTextKeepsAThirdPartOnlyBelowOneHundredBytes) {
  writer.LongText(1, "A", "B", std::string(99, 'c'));
  writer.LongText(2, "A", "B", std::string(100, 'c'));
  writer.LongText(3, "A");
  Feed();
  EXPECT_EQ(PendingAs<OmStringCellUTF8>(*factory, 1).NTexts(), 3u);
  EXPECT_EQ(PendingAs<OmStringCellUTF8>(*factory, 1).Texts()[2], std::string(99, 'c'));
  EXPECT_EQ(PendingAs<OmStringCellUTF8>(*factory, 2).NTexts(), 2u);
  EXPECT_EQ(PendingAs<OmStringCellUTF8>(*factory, 3).NTexts(), 1u);
}

TEST_P(CellMessages, CompositeCollectsArgumentsAndRepeatLists) {
  writer.String(1, "^1 by ^2", 0);
  writer.BeginComposite(20, 1);
  writer.Variable(2, 1, "a", "A");
  writer.CompositeArgument(2);
  writer.BeginRepeatList();
  writer.Variable(3, 1, "b", "B");
  writer.CompositeArgument(3);
  writer.Variable(4, 1, "c", "C");
  writer.CompositeArgument(4);
  writer.EndRepeatList();
  Feed();
  EXPECT_EQ(factory->PendingCell(1), nullptr);  // the pattern slot ends empty
  EXPECT_EQ(factory->PendingCell(2), nullptr);
  const auto& composite = PendingAs<OmComposite>(*factory, 20);
  EXPECT_EQ(composite.Pattern().Text(), "^1 by ^2");
  ASSERT_EQ(composite.NArguments(), 2u);
  EXPECT_EQ(composite.Argument(0)->Text(), "A");
  EXPECT_EQ(composite.Argument(1), nullptr);  // a repeat list
  EXPECT_EQ(composite.Root().Parts()[1]->Parts().size(), 2u);
  EXPECT_FALSE(composite.InRepeatList());
}

TEST_P(CellMessages, CopyCellLeavesTheSourceAndDiscardEmptiesTheSlot) {
  writer.Variable(1, 1, "v", "V");
  writer.String(2, "old", 1);
  writer.CopyCell(1, 2);
  Feed();
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 1).Name(), "v");
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 2).Name(), "v");
  EXPECT_NE(factory->PendingCell(1), factory->PendingCell(2));
  writer.DiscardCell(1);
  writer.DiscardCell(77);  // never stored: nothing happens
  Feed();
  EXPECT_EQ(factory->PendingCell(1), nullptr);
  EXPECT_NE(factory->PendingCell(2), nullptr);
}

TEST_P(CellMessages, ByteOrderProbeSetsSwappingForTheSendersOrder) {
  EXPECT_FALSE(factory->SwapBytes());
  Feed();
  EXPECT_EQ(factory->SwapBytes(), GetParam() == ByteOrder::BigEndian);
}

OM_BOTH_ORDERS(CellMessages);

using ByteOrderMessages = SessionTest;

}  // namespace
}  // namespace sessiontest
