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

// "kind/flag/extra/text", so that item lists compare in one step.
std::string Describe(const MessageItem& item) {
  return std::to_string(item.kind) + "/" + std::to_string(item.flag) + "/" +
         std::to_string(item.extra) + "/" + item.text;
}

std::vector<std::string> Describe(const std::vector<MessageItem>& items) {
  std::vector<std::string> described;
  for (const MessageItem& item : items) described.push_back(Describe(item));
  return described;
}

// Every remaining item of a complete message.
std::vector<std::string> Items(MessageHandler& handler) {
  std::vector<std::string> items;
  while (const std::optional<MessageItem> item = Next(handler)) items.push_back(Describe(*item));
  return items;
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
  EXPECT_FALSE(Next(handler)) << "no items before the message is complete";
  EXPECT_TRUE(Receive(handler, parts[2]));
  EXPECT_EQ(Items(handler), Describe(kModelItems));
  EXPECT_FALSE(Next(handler)) << "false again after the last item";
}

TEST(MessageHandlerTest, EmptySharesAndEmptyBodiesAreAccepted) {
  MessageHandler handler;
  const std::vector<std::string> parts = SplitMessageBody(EncodeMessageItems(kModelItems), 200, 1);
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) ASSERT_FALSE(Receive(handler, parts[i]));
  EXPECT_TRUE(Receive(handler, parts.back()));
  EXPECT_EQ(Items(handler), Describe(kModelItems));

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
  EXPECT_EQ(Items(handler), Describe(kModelItems));
}

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

TEST(MessageHandlerTest, TextLengthBeyondTheBodyIsRefusedWithoutReading) {
  std::string body = EncodeMessageItems({{1, 0, 0, "abc"}});
  body[9] = '\xFF';
  body[10] = '\xFF';
  body[11] = '\xFF';
  body[12] = '\xFF';
  MessageHandler handler;
  ASSERT_TRUE(Receive(handler, EncodeMessagePart(1, 0, 1, body)));
  try {
    Next(handler);
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
  EXPECT_EQ(Items(handler), (std::vector<std::string>{"0/0/0/second"}));
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
