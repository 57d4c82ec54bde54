// Messages that lie: payloads shorter than their fields, text lengths running past the payload,
// negative and absurd cell ids, empty slots where a cell is needed, a copy onto itself, and
// random bytes for every code. Each is a clear OMSException naming the message and field; inside
// a procedure it ends in recovery, outside one the session stays usable.
#include <random>
#include <typeinfo>

#include "SessionFixture.h"
#include "backend/omfactory/OmCellSlots.h"
#include "backend/omfactory/OmStringAssembler.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"

namespace sessiontest {
namespace {

std::vector<std::uint8_t> Bytes(const std::vector<std::int32_t>& ints) {
  std::vector<std::uint8_t> bytes;
  for (std::int32_t value : ints) {
    for (int i = 0; i < 4; ++i) bytes.push_back(std::uint8_t(std::uint32_t(value) >> (8 * i)));
  }
  return bytes;
}

// The text of a dispatcher failure.
std::string Dispatch(const std::string& condition) {
  return "OmFactory::Data::ProcessMessage() -- " + condition;
}

class HostileMessages : public SessionTest {
protected:
  // The last error's message, or "" when none was recovered.
  std::string LastError() const {
    const OMSException* error = factory->LastRecoveredError();
    return error ? error->Message() : "";
  }
  // Checks that the session still builds a procedure with a table after whatever came before.
  void ExpectUsable() {
    const std::size_t proceduresBefore = PartsOf<OmPivotTable>(*tree).size();
    BeginProcedure(99, Settings("Check"));
    BeginTable(1, "Works");
    writer.CellDimension(1, Str("S"));
    writer.Cell(1, Num(1), Str("N"));
    writer.EndTable(1);
    Feed();
    EndProcedure();
    EXPECT_EQ(PartsOf<OmPivotTable>(*tree).size(), proceduresBefore + 1);
  }
};

TEST_F(HostileMessages, TruncatedPayloadNamesCodeAndLengths) {
  BeginProcedure();
  BeginTable(1, "T");
  Send(273, {1, 0, 0, 0, 2, 0, 0, 0});  // IPC_CELL needs 12 bytes
  const OMSException* error = factory->LastRecoveredError();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->Message(), Dispatch("IPC_CELL payload too short"));
  EXPECT_EQ(error->Value1(), 12);
  EXPECT_EQ(error->Value2(), 8);
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(PartsOf<OmTextBlock>(*tree).size(), 1u);  // "Output Missing"
  ExpectUsable();
}

TEST_F(HostileMessages, TruncatedMessageIsNotSwappedAtAll) {
  factory->SwapBytes(true);
  std::vector<std::uint8_t> payload = {0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};  // IPC_NUMBER needs 16
  const std::vector<std::uint8_t> before = payload;
  factory->Message(256, unsigned(payload.size()), payload.data());
  EXPECT_EQ(payload, before);
  EXPECT_EQ(LastError(), Dispatch("IPC_NUMBER payload too short"));
}

TEST_F(HostileMessages, TextLengthRunningPastThePayloadIsRefused) {
  std::vector<std::uint8_t> payload = Bytes({1000, 1, 1});
  payload.insert(payload.end(), {'a', 'b', 'c'});
  Send(258, payload);
  EXPECT_EQ(LastError(), Dispatch("IPC_STRING text length out of range"));
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), 1000);
  EXPECT_EQ(factory->LastRecoveredError()->Value2(), 3);
  EXPECT_EQ(factory->PendingCell(1), nullptr);

  Send(258, Bytes({-4, 1, 1}));
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), -4);
}

TEST_F(HostileMessages, LyingLengthsInsideVariableAndDataValueAreRefused) {
  std::vector<std::uint8_t> variable = Bytes({1, 1, 2, 50});
  variable.insert(variable.end(), {'a', 'b', 'L'});
  Send(308, variable);
  EXPECT_EQ(LastError(), Dispatch("IPC_VARIABLE label length out of range"));

  // A numeric data value whose double would lie past the end.
  std::vector<std::uint8_t> value = Bytes({1, 1, 0x050802, 1, 0});
  value.insert(value.end(), {0, 0, 'n', 1, 2, 3});
  Send(309, value);
  EXPECT_EQ(LastError(), Dispatch("IPC_DATA_VALUE payload too short"));
  EXPECT_EQ(factory->CellSlotCount(), 0u);
}

TEST_F(HostileMessages, PageTitleSubtitleMustFitBehindItsSeparator) {
  std::vector<std::uint8_t> payload = Bytes({2, 2});
  payload.insert(payload.end(), {'T', 'i', 0, 'S'});
  Send(305, payload);
  EXPECT_EQ(LastError(),
            Dispatch("IPC_PAGE_TITLE subtitle length out of range"));
  EXPECT_EQ(tree->Size(), 1u);
}

TEST_F(HostileMessages, NegativeAndHugeCellIdsAreOutOfRange) {
  writer.Number(-1, 1, 0x050802);
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_NUMBER cell id out of range"));
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), -1);
  writer.Number(1 << 30, 1, 0x050802);
  Feed();
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), double(1 << 30));
  EXPECT_EQ(factory->LastRecoveredError()->Value2(), OmCellSlots::kIdLimit);
  EXPECT_EQ(factory->CellSlotCount(), 0u);  // nothing was allocated for it

  writer.Number(OmCellSlots::kIdLimit - 1, 1, 0x050802);
  Feed();
  EXPECT_EQ(factory->CellSlotCount(), std::size_t(OmCellSlots::kIdLimit));
}

TEST_F(HostileMessages, EveryCellIdFieldIsChecked) {
  BeginProcedure();
  BeginTable(1, "T");
  writer.Category(1, Str("c"), -7);
  Feed();
  EXPECT_EQ(LastError(),
            Dispatch("IPC_CATEGORY dimension cell id out of range"));
  BeginProcedure(2);
  writer.LongText(1 << 23, "x");
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_LONG_TEXT cell id out of range"));
  ExpectUsable();
}

TEST_F(HostileMessages, EmptySlotWhereACellIsNeededIsNamed) {
  BeginProcedure();
  BeginTable(1, "T");
  writer.CellDimension(1, Str("S"));
  writer.Cell(1, 500, Str("N"));
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_CELL value cell id empty"));
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), 500);
  ExpectUsable();
}

TEST_F(HostileMessages, EmptyPatternOrCompositeSlotIsNamed) {
  writer.BeginComposite(3, 4);
  Feed();
  EXPECT_EQ(LastError(),
            Dispatch("IPC_BEGIN_COMPOSITE pattern cell id empty"));
  writer.BeginRepeatList();
  Feed();
  EXPECT_EQ(LastError(),
            Dispatch("IPC_BEGIN_REPEAT_LIST current composite slot empty"));
}

TEST_F(HostileMessages, CompositeCannotBeItsOwnArgument) {
  writer.String(1, "^1", 0);
  writer.BeginComposite(2, 1);
  writer.CompositeArgument(2);
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_COMPOSITE_ARGUMENT cell id names the current composite"));
  EXPECT_NE(factory->PendingCell(2), nullptr);
}

TEST_F(HostileMessages, CopyCellOntoItselfOrFromAnEmptySlotFails) {
  writer.String(1, "x", 1);
  writer.CopyCell(1, 1);
  Feed();
  EXPECT_EQ(LastError(),
            Dispatch("IPC_COPY_CELL source and target cell ids equal"));
  EXPECT_EQ(Pending(1), "x");
  writer.CopyCell(8, 1);
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_COPY_CELL source cell id empty"));
}

TEST_F(HostileMessages, DroppedMessagesAcceptEmptySlots) {
  BeginProcedure();
  writer.Category(1, 400, 401);  // no table: only a CheckTCID failure could report
  Feed();
  EXPECT_EQ(LastError(), "OmFactory::CheckTCID() -- TCID invalid");

  OMSObjectSelector headingsOnly;
  headingsOnly.SelectType(32);
  requests.push_back(headingsOnly);
  Reopen();
  BeginProcedure();
  BeginTable(1, "Unkept");
  writer.Cell(1, 400, 401);
  Feed();
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
}

TEST_F(HostileMessages, AbsurdLineSkipIsClampedAndAbsurdPlacementRefused) {
  RecordingObserver log;
  factory->Register(&log);
  writer.LogLine(2000000000, "x");
  Feed();
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  // 999 empty lines, then the line: a thousand at most, whatever the count says.
  ASSERT_EQ(log.events.size(), 1000u);
  EXPECT_EQ(log.events.front(), "log:");
  EXPECT_EQ(log.events.back(), "log:x");

  BeginProcedure();
  BeginTable(1, "T");
  writer.PlaceDimension(1, Str("D"), 1000000000, 1);
  Feed();
  EXPECT_EQ(LastError(),
            Dispatch("IPC_PLACE_DIMENSION position out of range"));
  BeginProcedure(2);
  BeginTable(1, "T");
  writer.PlaceDimension(1, Str("D"), 1, 3);
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_PLACE_DIMENSION axis out of range"));
}

TEST_F(HostileMessages, OutputSettingMustBeTerminated) {
  std::vector<std::uint8_t> payload(40, 'A');
  Send(34, payload);
  EXPECT_EQ(LastError(),
            Dispatch("IPC_OUTPUT_SETTING keyword not terminated"));
}

TEST_F(HostileMessages, NullPayloadIsAnEmptyOne) {
  factory->Message(256, 16, nullptr);
  EXPECT_EQ(LastError(), Dispatch("IPC_NUMBER payload too short"));
  EXPECT_EQ(factory->LastRecoveredError()->Value2(), 0);
}

TEST_F(HostileMessages, BrokenEndProcedurePartsEndInRecovery) {
  BeginProcedure();
  BeginTable(1, "T");
  Send(291, {1, 2, 3});
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(PartsOf<OmTextBlock>(*tree).size(), 1u);
  ExpectUsable();
}

TEST_F(HostileMessages, UnreadableBootstrapSpecificationsStillAppendTheProcedure) {
  BeginProcedure();
  BeginTable(1, "T");
  writer.CellDimension(1, Str("S"));
  writer.Cell(1, Num(1), Str("N"));
  writer.EndTable(1);
  writer.EndProcedure("not a bootstrap setup");
  Feed();
  EXPECT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(PartsOf<OmProcedure>(*tree).size(), 1u);
  ExpectUsable();
}

// Random payloads for every code, inside and outside procedures: only the documented exception
// kinds may leave the session, and it must stay usable (the sanitizer build checks the reads).
TEST_F(HostileMessages, RandomPayloadsNeverEscapeAsAnythingElse) {
  std::mt19937 random(20240611);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<int> small(0, 40);
  for (int round = 0; round < 3000; ++round) {
    if (round % 100 == 0) {
      BeginProcedure(round);
      BeginTable(std::uint8_t(round % 3), "Fuzzed");
    }
    static constexpr std::int16_t kControl[] = {27, 34, 56, 59};
    const std::int16_t code =
        round % 7 == 0 ? kControl[(round / 7) % 4] : std::int16_t(250 + round % 76);
    if (code == 276) continue;  // procedures are begun above
    std::vector<std::uint8_t> payload(std::size_t(small(random)));
    // Mostly small bytes, so that lengths and ids are often plausible.
    for (std::uint8_t& b : payload) {
      const int value = byte(random);
      b = std::uint8_t(value < 200 ? value % 4 : value);
    }
    try {
      factory->Message(code, unsigned(payload.size()), payload.data());
    } catch (const std::bad_cast&) {
      // A composite message on a slot holding another kind of cell.
    } catch (const OMSException&) {
      // Recovery itself failed; the session must still go on.
    }
  }
  factory->SwapBytes(false);
  if (factory->Procedure() != nullptr) EndProcedure();
  ExpectUsable();
}

TEST(StringAssembly, PendingTextIsCappedAndOverflowNamesTheSizes) {
  OmStringAssembler strings;
  EXPECT_TRUE(strings.Fits(OmStringAssembler::kMaxBytes));
  EXPECT_FALSE(strings.Fits(OmStringAssembler::kMaxBytes + 1));
  strings.AppendPart(3, 0, "abc");
  strings.AppendChunk("12345");
  EXPECT_EQ(strings.PendingBytes(), 8u);
  EXPECT_FALSE(strings.Fits(OmStringAssembler::kMaxBytes - 7));
  EXPECT_EQ(strings.FinishChunks("6"), "123456");
  strings.DropParts(3);
  EXPECT_EQ(strings.PendingBytes(), 0u);
}

TEST(StringAssembly, LongStringKeepsPartCUntilALongTextFinishesIt) {
  OmStringAssembler strings;
  strings.AppendPart(1, 2, "c");
  strings.AppendPart(1, 0, "a");
  OmStringAssembler::Parts first = strings.TakeParts(1, false);
  EXPECT_EQ(first.a, "a");
  EXPECT_EQ(first.c, "");
  EXPECT_EQ(strings.PendingBytes(), 1u);
  EXPECT_EQ(strings.TakeParts(1, true).c, "c");
  EXPECT_EQ(strings.PendingBytes(), 0u);
}

}  // namespace
}  // namespace sessiontest
