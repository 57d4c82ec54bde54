// Messages that lie: payloads shorter than their fields, text lengths running past the payload,
// negative and absurd cell ids, empty slots where a cell is needed, a copy onto itself. Each is a
// clear OMSException naming the message and field; inside a procedure it ends in recovery,
// outside one the session stays usable.

#include <functional>

#include "SessionFixture.h"
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

// A sender that numbers cells upward without reusing slots passes millions of ids: any
// non-negative id holds its cell, and the slots hold only the cells still waiting.
TEST_F(HostileMessages, AnyNonNegativeCellIdWorksAndOnlyANegativeOneIsRefused) {
  BeginProcedure();
  BeginTable(1, "T");
  writer.CellDimension(1, Str("S"));
  for (const std::int32_t id : {65535, 65536, 4194304, INT32_MAX}) {
    writer.Number(id, 1.0, 0x050802);
    writer.Cell(1, id, Str("N" + std::to_string(id)));
  }
  writer.EndTable(1);
  Feed();
  EXPECT_EQ(LastError(), "");
  std::size_t cells = 0;
  for (auto it = OpenTable().FirstCell(); !it.AtEnd(); ++it) ++cells;
  EXPECT_EQ(cells, 4u);
  EXPECT_LE(factory->CellSlotCount(), 65536u);  // the dense slots; no sparse cell is left
  Send(std::int16_t(MessageCode::IPC_DISCARD_CELL), Bytes({-1}));
  EXPECT_EQ(LastError(), Dispatch("IPC_DISCARD_CELL cell id out of range"));
}

// A procedure that gets a table's structure wrong meets the server's own numbered errors; codes
// the factory does not implement fail as such.
TEST_F(HostileMessages, TableStructureErrorsAndUnimplementedCodesFailThatProcedureOnly) {
  const struct {
    std::function<void()> send;
    std::string error;
  } cases[] = {
      {[this] { writer.EndTable(2); },
       "Server error 101 of omerrors.err: The procedure ended a table that was never begun."},
      {[this] {
         writer.BeginGroup(1, Str("G"), Str("D"));
         writer.EndTable(1);
       },
       "Server error 102 of omerrors.err: The procedure ended a table while one of its groups was still open."},
      {[this] {
         writer.Dimension(1, Str("D"));
         writer.Bold();
       },
       "Server error 103 of omerrors.err: The procedure styled or annotated the current category while no category was current."},
      {[this] { writer.RequiredTable(1, 2); }, Dispatch("IPC_REQUIRED_TABLE not implemented")},
      {[this] { writer.ScratchCategory(1, 2); }, Dispatch("IPC_SCRATCH_CATEGORY not implemented")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.error);
    Reopen();
    BeginProcedure();
    BeginTable(1, "T");
    c.send();
    Feed();
    EXPECT_EQ(LastError(), c.error);
    ExpectUsable();
  }
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

}  // namespace
TEST_F(HostileMessages, CompositeCannotBeItsOwnArgument) {
  writer.String(1, "^1", 0);
  writer.BeginComposite(2, 1);
  writer.CompositeArgument(2);
  Feed();
  EXPECT_EQ(LastError(), Dispatch("IPC_COMPOSITE_ARGUMENT cell id names the current composite"));
  EXPECT_NE(factory->PendingCell(2), nullptr);
}

}  // namespace sessiontest
