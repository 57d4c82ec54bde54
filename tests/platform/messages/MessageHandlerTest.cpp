#include "platform/messages/MessageHandler.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/messages/MessageParts.h"

namespace {

bool Receive(MessageHandler& handler, const std::string& payload) {
  return handler.receiveMessage(payload.data(), static_cast<unsigned>(payload.size()));
}

// The next item of a complete message, or nothing.
std::optional<MessageItem> Next(MessageHandler& handler) {
  MessageItem item;
  unsigned kind = 0;
  unsigned extra = 0;
  bool flag = false;
  if (!handler.getNextPart(kind, flag, extra, item.text)) return std::nullopt;
  item.kind = kind;
  item.flag = flag ? 1 : 0;
  item.extra = extra;
  return item;
}

// Expects receiveMessage to throw with this message and values.
void ExpectRefused(MessageHandler& handler, const std::string& payload, const std::string& message,
                   double value1, double value2) {
  try {
    Receive(handler, payload);
    ADD_FAILURE() << "accepted: " << message;
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), message);
    EXPECT_EQ(e.Value1(), value1);
    EXPECT_EQ(e.Value2(), value2);
  }
}

const std::vector<MessageItem> kModelItems = {
    {0, 0, 0, "Linear model"},
    {2, 1, 0xFFFFFFFF, std::string("<PMML>\0</PMML>", 14)},
    {5, 0, 3, "further text"}};

TEST(MessageHandlerTest, ForeignPartsBadCountsAndShortHeadersAreRefused) {
  MessageHandler handler;
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(7, 0, 2, "ab")));
  ExpectRefused(handler, EncodeMessagePart(8, 1, 2, "cd"),
                "MessageHandler::receiveMessage -- part of another message", 8, 7);
  EXPECT_TRUE(Receive(handler, EncodeMessagePart(8, 0, 1, "")));

  ExpectRefused(handler, EncodeMessagePart(3, 0, 0, ""),
                "MessageHandler::receiveMessage -- part count == 0", 3, 0);
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(3, 0, 3, "")));
  ExpectRefused(handler, EncodeMessagePart(3, 1, 2, ""),
                "MessageHandler::receiveMessage -- part count changed", 2, 3);

  ExpectRefused(handler, std::string(11, '\0'),
                "MessageHandler::receiveMessage -- part shorter than its header", 12, 11);
  EXPECT_THROW(handler.receiveMessage(nullptr, 20), OMSException);
}

TEST(MessageHandlerTest, BodyEndingInsideAnItemIsAnOMSException) {
  const std::string body = EncodeMessageItems(kModelItems);
  const std::string firstItem = EncodeMessageItems({kModelItems[0]});
  // Cut inside the second item's header, then inside its text.
  for (std::size_t cut : {firstItem.size() + 5, firstItem.size() + 13 + 3}) {
    SCOPED_TRACE(cut);
    MessageHandler handler;
    ASSERT_TRUE(Receive(handler, EncodeMessagePart(1, 0, 1, body.substr(0, cut))));
    const std::optional<MessageItem> first = Next(handler);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->text, "Linear model");
    EXPECT_THROW(Next(handler), OMSException);
  }
}

} // namespace
