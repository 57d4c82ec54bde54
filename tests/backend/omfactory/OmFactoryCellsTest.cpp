// Cell messages from senders of both byte orders.
#include "SessionFixture.h"

namespace sessiontest {
namespace {

using CellMessages = BothOrdersTest;

TEST_P(CellMessages, ByteOrderProbeSetsSwappingForTheSendersOrder) {
  EXPECT_FALSE(factory->SwapBytes());
  Feed();
  EXPECT_EQ(factory->SwapBytes(), GetParam() == ByteOrder::BigEndian);
}

OM_BOTH_ORDERS(CellMessages);

}  // namespace
}  // namespace sessiontest
