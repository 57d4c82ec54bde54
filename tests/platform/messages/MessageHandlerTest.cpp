#include "platform/messages/MessageHandler.h"
#include "platform/messages/MessageParts.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

bool Receive(MessageHandler& handler, const std::string& payload) {
  return handler.receiveMessage(payload.data(), static_cast<unsigned>(payload.size()));
}

// Expects receiveMessage to throw this text (the message and its two values).
void ExpectRefused(MessageHandler& handler, const std::string& payload, const std::string& what) {
  EXPECT_THAT([&] { Receive(handler, payload); },
              testing::ThrowsMessage<OMSException>(
                  testing::StrEq("MessageHandler::receiveMessage -- " + what)));
}

TEST(MessageHandlerTest, ForeignPartsBadCountsAndShortHeadersAreRefused) {
  MessageHandler handler;
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(7, 0, 2, "ab")));
  ExpectRefused(handler, EncodeMessagePart(8, 1, 2, "cd"),
                "part of another message, value 1 == 8, value 2 == 7");
  EXPECT_TRUE(Receive(handler, EncodeMessagePart(8, 0, 1, "")));

  ExpectRefused(handler, EncodeMessagePart(3, 0, 0, ""),
                "part count == 0, value 1 == 3, value 2 == 0");
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(3, 0, 3, "")));
  ExpectRefused(handler, EncodeMessagePart(3, 1, 2, ""),
                "part count changed, value 1 == 2, value 2 == 3");

  ExpectRefused(handler, std::string(11, '\0'),
                "part shorter than its header, value 1 == 12, value 2 == 11");
  EXPECT_THROW(handler.receiveMessage(nullptr, 20), OMSException);
}

} // namespace
