#include "platform/messages/MessageHandler.h"
#include "platform/messages/MessageParts.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

bool Receive(MessageHandler& handler, const std::string& payload) {
  return handler.receiveMessage(payload.data(), static_cast<unsigned>(payload.size()));
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

} // namespace
