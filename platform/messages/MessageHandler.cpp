#include "platform/messages/MessageHandler.h"

#include <cstdint>
#include <cstring>

#include "platform/errors/OMSException.h"

namespace {

constexpr std::size_t kPartHeaderBytes = 12;
constexpr std::size_t kItemHeaderBytes = 13;

std::uint32_t GetUInt32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | (static_cast<std::uint32_t>(bytes[1]) << 8) |
         (static_cast<std::uint32_t>(bytes[2]) << 16) |
         (static_cast<std::uint32_t>(bytes[3]) << 24);
}

} // namespace

struct MessageHandler::Data {
  std::string _body;
  std::uint32_t _id = 0;
  std::uint32_t _count = 0;    // of the message being gathered; 0 = none
  std::uint32_t _expected = 0; // index of the next part due
  bool _complete = false;
  std::size_t _readOffset = 0;

  void Restart() {
    _body.clear();
    _id = 0;
    _count = 0;
    _expected = 0;
    _complete = false;
    _readOffset = 0;
  }
};

MessageHandler::MessageHandler() : _my(std::make_unique<Data>()) {}
MessageHandler::~MessageHandler() = default;

bool MessageHandler::receiveMessage(const void* payload, unsigned int length) {
  Data& my = *_my;
  if (my._complete) my.Restart();
  if (payload == nullptr || length < kPartHeaderBytes) {
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- part shorter than its header",
                       static_cast<double>(kPartHeaderBytes), static_cast<double>(length));
  }
  const auto* bytes = static_cast<const unsigned char*>(payload);
  const std::uint32_t id = GetUInt32(bytes);
  const std::uint32_t index = GetUInt32(bytes + 4);
  const std::uint32_t count = GetUInt32(bytes + 8);
  if (count == 0) {
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- part count == 0",
                       static_cast<double>(id));
  }
  if (index != my._expected) {
    const std::uint32_t expected = my._expected;
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- part out of order",
                       static_cast<double>(index), static_cast<double>(expected));
  }
  if (index > 0 && id != my._id) {
    const std::uint32_t current = my._id;
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- part of another message",
                       static_cast<double>(id), static_cast<double>(current));
  }
  if (index > 0 && count != my._count) {
    const std::uint32_t current = my._count;
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- part count changed",
                       static_cast<double>(count), static_cast<double>(current));
  }
  const std::size_t share = length - kPartHeaderBytes;
  if (share > kMaxBodyBytes - my._body.size()) {
    my.Restart();
    throw OMSException("MessageHandler::receiveMessage -- message body too large",
                       static_cast<double>(kMaxBodyBytes), static_cast<double>(index));
  }
  my._id = id;
  my._count = count;
  my._body.append(reinterpret_cast<const char*>(bytes + kPartHeaderBytes), share);
  my._expected = index + 1;
  if (my._expected == count) {
    my._complete = true;
    my._readOffset = 0;
  }
  return my._complete;
}

bool MessageHandler::getNextPart(unsigned int& kind, bool& flag, unsigned int& extra,
                                 std::string& text) {
  Data& my = *_my;
  if (!my._complete || my._readOffset == my._body.size()) return false;
  const std::size_t left = my._body.size() - my._readOffset;
  if (left < kItemHeaderBytes) {
    throw OMSException("MessageHandler::getNextPart -- body ends inside an item header",
                       static_cast<double>(kItemHeaderBytes), static_cast<double>(left));
  }
  const auto* item = reinterpret_cast<const unsigned char*>(my._body.data() + my._readOffset);
  const std::uint32_t textLength = GetUInt32(item + 9);
  if (textLength > left - kItemHeaderBytes) {
    throw OMSException("MessageHandler::getNextPart -- body ends inside an item text",
                       static_cast<double>(textLength),
                       static_cast<double>(left - kItemHeaderBytes));
  }
  kind = GetUInt32(item);
  flag = item[4] != 0;
  extra = GetUInt32(item + 5);
  text.assign(reinterpret_cast<const char*>(item + kItemHeaderBytes), textLength);
  my._readOffset += kItemHeaderBytes + textLength;
  return true;
}
