// Cell messages: numbers and their formats, strings with chunking, long strings, variables, data
// values, composites, copying and discarding, and the byte-order switches, from senders of both
// byte orders.
#include <typeinfo>

#include "SessionFixture.h"

namespace sessiontest {
namespace {

template <class C>
const C& PendingAs(OmFactory& factory, int id) {
  const OmCellText* cell = factory.PendingCell(id);
  if (cell == nullptr) throw std::runtime_error("slot " + std::to_string(id) + " is empty");
  return dynamic_cast<const C&>(*cell);
}

using CellMessages = BothOrdersTest;

TEST_P(CellMessages, ByteOrderProbeSetsSwappingForTheSendersOrder) {
  EXPECT_FALSE(factory->SwapBytes());
  Feed();
  EXPECT_EQ(factory->SwapBytes(), GetParam() == ByteOrder::BigEndian);
}

OM_BOTH_ORDERS(CellMessages);

using ByteOrderMessages = SessionTest;

}  // namespace
}  // namespace sessiontest
