// Cell messages: numbers and their formats, strings with chunking, long strings, variables, data
// values, composites, copying and discarding, and the byte-order switches, from senders of both
// byte orders.
#include <cstring>
#include <typeinfo>

#include "SessionFixture.h"
#include "backend/omfactory/OmPayload.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
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

// The conversion's edge cases are in WireFormat below; here, that numbers get it.
TEST_P(CellMessages, NumberFormatsAreConvertedFromTheWireLayout) {
  const std::pair<std::int32_t, std::uint32_t> cases[] = {
      {0x050802, 0x02050008u},    // F8.2
      {0x7F050802, 0x02050008u},  // the top byte is ignored
  };
  std::int32_t id = 10;
  for (const auto& [wire, format] : cases) writer.Number(id++, 1.5, wire);
  Feed();
  id = 10;
  for (const auto& [wire, format] : cases) {
    const auto& number = PendingAs<OmNumber>(*factory, id++);
    EXPECT_EQ(number.Format(), format) << std::hex << wire;
    EXPECT_EQ(number.Value(), 1.5);
  }
}

TEST_P(CellMessages, FormatTopByteIsZeroedInThePayload) {
  Feed();  // the probe
  writer.Number(3, 2.0, 0x7F050802);
  std::vector<std::uint8_t> payload = writer.Records().back().payload;
  factory->Message(writer.Records().back().code, unsigned(payload.size()), payload.data());
  EXPECT_EQ(PendingAs<OmNumber>(*factory, 3).Format(), 0x02050008u);
  std::int32_t wire;
  std::memcpy(&wire, payload.data() + 8, 4);
  EXPECT_EQ(wire, 0x050802);
}

TEST_P(CellMessages, IntegersAndDataValuesUseTheSameConversion) {
  writer.Integer(1, -7, 0x053202);
  writer.DataValue(2, 2, 0x050802, "age", "Age in years", 42.0);
  Feed();
  const auto& integer = PendingAs<OmNumber>(*factory, 1);
  EXPECT_EQ(integer.Value(), -7.0);
  EXPECT_EQ(integer.Format(), 0x02050028u);
  const auto& value = PendingAs<OmNumDataValue>(*factory, 2);
  EXPECT_EQ(value.Format(), 0x02050008u);
  EXPECT_EQ(value.Value(), 42.0);
  EXPECT_EQ(value.VariableName(), "age");
  EXPECT_EQ(value.Label(), "Age in years");
}

TEST_P(CellMessages, StringValuesKeepNameLabelAndDisplayMode) {
  writer.DataValue(4, 0, 0x010A03, "sex", "Female", std::string_view("f"));
  Feed();
  const auto& value = PendingAs<OmStringDataValue>(*factory, 4);
  EXPECT_EQ(value.Value(), "f");
  EXPECT_EQ(value.Label(), "Female");
  EXPECT_EQ(value.DisplayMode(), 1u);  // display 0 asks for values
}

TEST_P(CellMessages, VariableDisplayTwoLeavesTheModeToTheSession) {
  writer.Variable(1, 2, "x1", "First");
  writer.Variable(2, 0, "x2", "Second");
  writer.Variable(3, 7, "x3", "");
  Feed();
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 1).DisplayMode(), 0u);
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 2).DisplayMode(), 1u);
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 3).DisplayMode(), 2u);
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 2).Name(), "x2");
  EXPECT_EQ(PendingAs<OmVariable>(*factory, 1).Label(), "First");
}

TEST_P(CellMessages, LiteralZeroMakesTranslatableStringsAndTextsCarryZeroBytes) {
  const std::string text("in\0come", 7);
  writer.String(1, "Mean", 0);
  writer.String(2, text, 1);
  Feed();
  EXPECT_TRUE(PendingAs<OmStringCell>(*factory, 1).Translatable());
  EXPECT_FALSE(PendingAs<OmStringCell>(*factory, 2).Translatable());
  EXPECT_EQ(Pending(2), text);
}

TEST_P(CellMessages, StoringIntoAnOccupiedSlotReplacesTheCell) {
  writer.String(1, "first", 1);
  writer.Number(1, 9, 0x050802);
  Feed();
  EXPECT_EQ(PendingAs<OmNumber>(*factory, 1).Value(), 9.0);
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

TEST_P(CellMessages, StringOfExactly32766BytesNeedsNoChunks) {
  const std::string text(32766, 'y');
  writer.StringPiece(2, text, 1);
  Feed();
  EXPECT_EQ(Pending(2), text);
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

TEST_P(CellMessages, LongTextFinishesPartsThatLongStringPiecesStarted) {
  writer.LongStringPiece(4, 2, "start ", "", false);
  writer.LongText(4, "end", "second");
  Feed();
  const auto& cell = PendingAs<OmStringCellUTF8>(*factory, 4);
  EXPECT_EQ(cell.Texts()[0], "start end");
  EXPECT_EQ(cell.Texts()[1], "second");
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

TEST_P(CellMessages, CompositePatternThatIsACompositeMovesWhole) {
  writer.String(1, "inner ^1", 0);
  writer.BeginComposite(2, 1);
  writer.String(3, "x", 1);
  writer.CompositeArgument(3);
  writer.BeginComposite(9, 2);  // the finished composite becomes the pattern slot's content
  Feed();
  EXPECT_EQ(factory->PendingCell(2), nullptr);
  const auto& moved = PendingAs<OmComposite>(*factory, 9);
  EXPECT_EQ(moved.NArguments(), 1u);
  EXPECT_EQ(moved.Pattern().Text(), "inner ^1");
}

TEST_P(CellMessages, RepeatListOnANonCompositeSlotIsABadCast) {
  writer.String(1, "^1", 0);
  writer.BeginComposite(2, 1);
  writer.Number(2, 5, 0x050802);  // replaces the composite
  Feed();
  writer.BeginRepeatList();
  EXPECT_THROW(Feed(), std::bad_cast);
  // The session goes on.
  writer.String(3, "after", 1);
  Feed();
  EXPECT_EQ(Pending(3), "after");
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

TEST_F(ByteOrderMessages, ProbeReadAsOneTurnsSwappingOffAndSwapMessageSetsItFromItsByte) {
  Send(59, {0, 0, 0, 1});  // 16777216 on this machine
  EXPECT_TRUE(factory->SwapBytes());
  Send(59, {1, 0, 0, 0});
  EXPECT_FALSE(factory->SwapBytes());
  Send(304, {1});
  EXPECT_TRUE(factory->SwapBytes());
  Send(304, {0});
  EXPECT_FALSE(factory->SwapBytes());
}

TEST_F(ByteOrderMessages, SwappedFieldsAreReversedInPlace) {
  factory->SwapBytes(true);
  // IPC_INTEGER: value 5, format F8.2, cell id 3, all most significant byte first.
  std::vector<std::uint8_t> payload = {0, 0, 0, 5, 0, 5, 8, 2, 0, 0, 0, 3};
  factory->Message(257, unsigned(payload.size()), payload.data());
  EXPECT_EQ(PendingAs<OmNumber>(*factory, 3).Value(), 5.0);
  const std::vector<std::uint8_t> native = {5, 0, 0, 0, 2, 8, 5, 0, 3, 0, 0, 0};
  EXPECT_EQ(payload, native);
}

TEST(WireFormat, ConversionTable) {
  EXPECT_EQ(OmPayload::ConvertFormat(0x050802), 0x02050008u);
  EXPECT_EQ(OmPayload::ConvertFormat(0x052802), 0x02050028u);  // width 40 stays
  EXPECT_EQ(OmPayload::ConvertFormat(0x052902), 0x02050028u);  // 41 is cut
  EXPECT_EQ(OmPayload::ConvertFormat(0x053202), 0x02050028u);  // 50 too
  EXPECT_EQ(OmPayload::ConvertFormat(0x023202), 0x02020032u);  // type 2 keeps a width of 50
  EXPECT_EQ(OmPayload::ConvertFormat(0x010A03), 0x0001030Au);  // type 1: two low bytes are the width
  EXPECT_EQ(OmPayload::ConvertFormat(0x01FF00), 0x000100FFu);
  EXPECT_EQ(OmPayload::ConvertFormat(0xFF0000), 0xFF0000u);
}

}  // namespace
}  // namespace sessiontest
