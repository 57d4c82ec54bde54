// The hot messages allocate nothing but the cells a table keeps: counts every heap allocation of
// this test program while IPC_NUMBER, IPC_STRING, IPC_CELL and IPC_CATEGORY messages are handled.
#include "SessionFixture.h"
#include "platform/outputmodel/OmNumber.h"
#include "tests/robustness/OmCountingAllocator.h"

namespace sessiontest {
namespace {

constexpr int kMessages = 200;

class HotPath : public BothOrdersTest {
protected:
  // Payload copies of every record written so far, ready to be handed over without allocating.
  std::vector<OmStreamRecord> Take() {
    std::vector<OmStreamRecord> records = writer.Records();
    writer.Clear();
    return records;
  }
  // Allocations made while the session handles records.
  std::size_t Count(std::vector<OmStreamRecord>& records) {
    const std::size_t before = robustness::CountingAllocator::Allocations();
    for (OmStreamRecord& record : records) {
      factory->Message(record.code, unsigned(record.payload.size()), record.payload.data());
    }
    return robustness::CountingAllocator::Allocations() - before;
  }
};

TEST_P(HotPath, NumbersAndTextsWaitInTheirSlotsWithoutAllocating) {
  writer.Number(1, 0, 0x050802);
  writer.String(2, "Std. Deviation", 1);  // the slot tables and the text buffer have their room
  Feed();
  for (int i = 0; i < kMessages; ++i) {
    writer.Number(1, i, 0x050802);
    writer.String(2, i % 2 ? "N" : "Mean", 1);
  }
  std::vector<OmStreamRecord> records = Take();
  EXPECT_EQ(Count(records), 0u);
  // What waits is the last of each.
  const auto* number = dynamic_cast<const OmNumber*>(factory->PendingCell(1));
  ASSERT_NE(number, nullptr);
  EXPECT_EQ(number->Value(), kMessages - 1);
  ASSERT_NE(factory->PendingCell(2), nullptr);
  EXPECT_EQ(factory->PendingCell(2)->Text(), "N");
}

TEST_P(HotPath, CellAndCategoryMessagesAllocateNothingOnceTheirCategoriesExist) {
  BeginProcedure();
  BeginTable(1, "Hot");
  writer.String(2, "Statistics", 1);
  writer.CellDimension(1, 2);
  writer.String(3, "x", 1);
  writer.String(4, "Variables", 1);
  writer.Category(1, 3, 4);
  writer.Number(5, 1, 0x050802);
  writer.String(6, "N", 1);
  writer.Cell(1, 5, 6);
  Feed();
  ASSERT_EQ(OpenTable().NCells(), 1u);

  // Every message finds its category and replaces the one cell. A category message makes its
  // two named cells (and frees them); a cell message whose label is a known text makes nothing:
  // the table keeps a plain number without a cell object.
  for (int i = 0; i < kMessages; ++i) {
    writer.String(3, "x", 1);
    writer.String(4, "Variables", 1);
    writer.Category(1, 3, 4);
    std::vector<OmStreamRecord> category = Take();
    EXPECT_LE(Count(category), 2u) << "category message " << i;
    writer.Number(5, i, 0x050802);
    writer.String(6, "N", 1);
    writer.Cell(1, 5, 6);
    std::vector<OmStreamRecord> cell = Take();
    EXPECT_EQ(Count(cell), 0u) << "cell message " << i;
  }
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  EXPECT_EQ(OpenTable().NCells(), 1u);
}

OM_BOTH_ORDERS(HotPath);

}  // namespace
}  // namespace sessiontest
