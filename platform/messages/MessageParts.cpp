#include "platform/messages/MessageParts.h"

#include "platform/errors/OMSException.h"

namespace {

void PutUInt32(std::string& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

} // namespace

std::string EncodeMessageItems(const std::vector<MessageItem>& items) {
  std::string body;
  for (const MessageItem& item : items) {
    if (item.text.size() > UINT32_MAX) {
      throw OMSException("EncodeMessageItems -- text too long",
                         static_cast<double>(item.text.size()));
    }
    PutUInt32(body, item.kind);
    body.push_back(static_cast<char>(item.flag));
    PutUInt32(body, item.extra);
    PutUInt32(body, static_cast<std::uint32_t>(item.text.size()));
    body += item.text;
  }
  return body;
}

std::string EncodeMessagePart(std::uint32_t messageId, std::uint32_t index, std::uint32_t count,
                              std::string_view share) {
  std::string payload;
  payload.reserve(12 + share.size());
  PutUInt32(payload, messageId);
  PutUInt32(payload, index);
  PutUInt32(payload, count);
  payload += share;
  return payload;
}

std::vector<std::string> SplitMessageBody(std::string_view body, std::uint32_t parts,
                                          std::uint32_t messageId) {
  if (parts == 0) throw OMSException("SplitMessageBody -- parts == 0");
  std::vector<std::string> payloads;
  payloads.reserve(parts);
  // The first (size % parts) shares take one byte more, so every share differs by at most one.
  const std::size_t base = body.size() / parts;
  const std::size_t larger = body.size() % parts;
  std::size_t offset = 0;
  for (std::uint32_t index = 0; index < parts; ++index) {
    std::size_t share = base + (index < larger ? 1 : 0);
    payloads.push_back(EncodeMessagePart(messageId, index, parts, body.substr(offset, share)));
    offset += share;
  }
  return payloads;
}
