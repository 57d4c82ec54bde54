#include "platform/messages/MessageHandler.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/messages/MessageParts.h"

namespace {

bool Receive(MessageHandler& handler, const std::string& payload) {
  return handler.receiveMessage(payload.data(), static_cast<unsigned>(payload.size()));
}

std::vector<MessageItem> Items(MessageHandler& handler) {
  std::vector<MessageItem> items;
  unsigned kind = 0;
  unsigned extra = 0;
  bool flag = false;
  std::string text;
  while (handler.getNextPart(kind, flag, extra, text)) {
    items.push_back({kind, static_cast<std::uint8_t>(flag ? 1 : 0), extra, text});
  }
  return items;
}

void ExpectSameItems(const std::vector<MessageItem>& actual,
                     const std::vector<MessageItem>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(actual[i].kind, expected[i].kind) << "item " << i;
    EXPECT_EQ(actual[i].flag, expected[i].flag) << "item " << i;
    EXPECT_EQ(actual[i].extra, expected[i].extra) << "item " << i;
    EXPECT_EQ(actual[i].text, expected[i].text) << "item " << i;
  }
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

TEST(MessageHandlerTest, PartsInOrderCompleteTheMessageOnlyWithTheLastOne) {
  const std::vector<std::string> parts = SplitMessageBody(EncodeMessageItems(kModelItems), 3, 41);
  MessageHandler handler;
  EXPECT_FALSE(Receive(handler, parts[0]));
  EXPECT_FALSE(Receive(handler, parts[1]));
  std::string text;
  unsigned kind = 0;
  unsigned extra = 0;
  bool flag = false;
  EXPECT_FALSE(handler.getNextPart(kind, flag, extra, text))
      << "no items before the message is complete";
  EXPECT_TRUE(Receive(handler, parts[2]));
  ExpectSameItems(Items(handler), kModelItems);
  EXPECT_FALSE(handler.getNextPart(kind, flag, extra, text)) << "false again after the last item";
}

TEST(MessageHandlerTest, EmptySharesAndEmptyBodiesAreAccepted) {
  MessageHandler handler;
  const std::vector<std::string> parts = SplitMessageBody(EncodeMessageItems(kModelItems), 200, 1);
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) ASSERT_FALSE(Receive(handler, parts[i]));
  EXPECT_TRUE(Receive(handler, parts.back()));
  ExpectSameItems(Items(handler), kModelItems);

  EXPECT_TRUE(Receive(handler, EncodeMessagePart(2, 0, 1, "")));
  EXPECT_TRUE(Items(handler).empty());
}

TEST(MessageHandlerTest, PartOutOfOrderIsRefusedAndTheHandlerStartsAfresh) {
  const std::vector<std::string> parts = SplitMessageBody(EncodeMessageItems(kModelItems), 3, 41);
  MessageHandler handler;
  ExpectRefused(handler, parts[1], "MessageHandler::receiveMessage -- part out of order", 1, 0);
  EXPECT_FALSE(Receive(handler, parts[0]));
  ExpectRefused(handler, parts[2], "MessageHandler::receiveMessage -- part out of order", 2, 1);
  // Afresh: the earlier part 0 is forgotten, so the whole message must come again.
  ExpectRefused(handler, parts[1], "MessageHandler::receiveMessage -- part out of order", 1, 0);
  for (const std::string& part : parts) Receive(handler, part);
  ExpectSameItems(Items(handler), kModelItems);
}

TEST(MessageHandlerTest, PartOfAnotherMessageIsRefused) {
  MessageHandler handler;
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(7, 0, 2, "ab")));
  ExpectRefused(handler, EncodeMessagePart(8, 1, 2, "cd"),
                "MessageHandler::receiveMessage -- part of another message", 8, 7);
  EXPECT_TRUE(Receive(handler, EncodeMessagePart(8, 0, 1, "")));
}

TEST(MessageHandlerTest, CountZeroOrAChangedCountIsRefused) {
  MessageHandler handler;
  ExpectRefused(handler, EncodeMessagePart(3, 0, 0, ""),
                "MessageHandler::receiveMessage -- part count == 0", 3, 0);
  EXPECT_FALSE(Receive(handler, EncodeMessagePart(3, 0, 3, "")));
  ExpectRefused(handler, EncodeMessagePart(3, 1, 2, ""),
                "MessageHandler::receiveMessage -- part count changed", 2, 3);
}

TEST(MessageHandlerTest, PayloadShorterThanThePartHeaderIsRefused) {
  MessageHandler handler;
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
    unsigned kind = 0;
    unsigned extra = 0;
    bool flag = false;
    std::string text;
    ASSERT_TRUE(handler.getNextPart(kind, flag, extra, text));
    EXPECT_EQ(text, "Linear model");
    EXPECT_THROW(handler.getNextPart(kind, flag, extra, text), OMSException);
  }
}

TEST(MessageHandlerTest, TextLengthBeyondTheBodyIsRefusedWithoutReading) {
  std::string body = EncodeMessageItems({{1, 0, 0, "abc"}});
  body[9] = '\xFF';
  body[10] = '\xFF';
  body[11] = '\xFF';
  body[12] = '\xFF';
  MessageHandler handler;
  ASSERT_TRUE(Receive(handler, EncodeMessagePart(1, 0, 1, body)));
  unsigned kind = 0;
  unsigned extra = 0;
  bool flag = false;
  std::string text;
  try {
    handler.getNextPart(kind, flag, extra, text);
    FAIL() << "a 4 GiB text in a 16-byte body was accepted";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "MessageHandler::getNextPart -- body ends inside an item text");
    EXPECT_EQ(e.Value1(), 4294967295.0);
    EXPECT_EQ(e.Value2(), 3.0);
  }
}

TEST(MessageHandlerTest, NextMessageStartsAfterACompleteOne) {
  MessageHandler handler;
  ASSERT_TRUE(
      Receive(handler, EncodeMessagePart(1, 0, 1, EncodeMessageItems({{0, 0, 0, "first"}}))));
  const std::vector<std::string> parts =
      SplitMessageBody(EncodeMessageItems({{0, 0, 0, "second"}}), 2, 2);
  EXPECT_FALSE(Receive(handler, parts[0]));
  EXPECT_TRUE(Receive(handler, parts[1]));
  ExpectSameItems(Items(handler), {{0, 0, 0, "second"}});
}

TEST(MessageHandlerTest, SplitSharesDifferByAtMostOneByteAndKeepTheBodyOrder) {
  const std::string body = "0123456789";
  const std::vector<std::string> parts = SplitMessageBody(body, 4, 5);
  ASSERT_EQ(parts.size(), 4u);
  const std::vector<std::string> shares = {"012", "345", "67", "89"};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_EQ(parts[i], EncodeMessagePart(5, static_cast<std::uint32_t>(i), 4, shares[i]));
  }
  EXPECT_THROW(SplitMessageBody(body, 0, 5), OMSException);
}

TEST(MessageHandlerTest, ItemsAreEncodedLittleEndian) {
  const std::string body = EncodeMessageItems({{0x01020304, 7, 0x0A0B0C0D, "xy"}});
  EXPECT_EQ(body, std::string("\x04\x03\x02\x01\x07\x0D\x0C\x0B\x0A\x02\0\0\0xy", 15));
}

} // namespace
