// The producer's side of multi-part messages: encodes items into a message body and splits the
// body into the payloads that MessageHandler reassembles. Stream writers and tests use it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// One item of a message body, as MessageHandler::getNextPart yields it.
struct MessageItem {
  std::uint32_t kind = 0;
  std::uint8_t flag = 0;
  std::uint32_t extra = 0;
  std::string text;
};

// The body: each item as uint32 kind, uint8 flag, uint32 extra, uint32 text length, text.
std::string EncodeMessageItems(const std::vector<MessageItem>& items);

// One payload: the 12-byte header and the share as given (tests use it for parts out of order).
std::string EncodeMessagePart(std::uint32_t messageId, std::uint32_t index, std::uint32_t count,
                              std::string_view share);

// Splits a body into `parts` payloads of one message: each a 12-byte header (id, index, count)
// and a near-equal share of the body, in order (shares may be empty when the body is shorter than
// the part count). A part count of 0 throws OMSException.
std::vector<std::string> SplitMessageBody(std::string_view body, std::uint32_t parts,
                                          std::uint32_t messageId);
