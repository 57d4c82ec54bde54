#include "platform/stream/MessageCodes.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(MessageCodesTest, TableListsEachCodeOnceInCodeOrderUnderItsIpcName) {
  std::set<std::string> names;
  int previous = -1;
  for (const MessageCodeName& row : kMessageCodeNames) {
    const int code = static_cast<int>(row.code);
    EXPECT_GT(code, previous) << row.name;
    previous = code;
    EXPECT_EQ(std::string(row.name).rfind("IPC_", 0), 0u) << row.name;
    EXPECT_TRUE(names.insert(row.name).second) << row.name << " twice";
    EXPECT_STREQ(MessageCodeNameOf(static_cast<std::int16_t>(code)), row.name);
  }
  // Four control codes and 256..322 without the seven codes that have no handler.
  EXPECT_EQ(names.size(), 4u + 67u - 7u);
}

TEST(MessageCodesTest, CodesWithoutAMessageHaveNoName) {
  for (int code : {-5, 0, 28, 255, 260, 264, 277, 294, 301, 303, 306, 323, 1000}) {
    EXPECT_EQ(MessageCodeNameOf(static_cast<std::int16_t>(code)), nullptr) << code;
  }
  EXPECT_STREQ(MessageCodeNameOf(59), "IPC_BYTE_ORDER");
  EXPECT_STREQ(MessageCodeNameOf(322), "IPC_MISC_PROPERTY");
}

} // namespace
