// Reassembles one multi-part message (IPC_END_PROCEDURE, IPC_MODEL_PMML) from its payloads and
// yields the items of its body. The factory session and the procedure factory feed it payloads
// until it reports the message complete, then read the items in order.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

class MessageHandler {
public:
  MessageHandler();
  ~MessageHandler();
  MessageHandler(const MessageHandler&) = delete;
  MessageHandler& operator=(const MessageHandler&) = delete;

  // Takes one part: uint32 message id, uint32 part index, uint32 part count, then the part's share
  // of the body (all little-endian). Returns true when the last part of a message whose parts
  // 0 .. count - 1 arrived in order under one id has arrived; the items are then readable. A part
  // out of order, of another message, with count 0, with another count than its predecessors, or
  // shorter than its 12-byte header throws OMSException; the handler then starts afresh. A part 0
  // after a complete message starts the next message.
  bool receiveMessage(const void* payload, unsigned int length);

  // Yields the next item of the complete message (uint32 kind, uint8 flag, uint32 extra, uint32
  // text length, text) and returns true; returns false after the last item or while no message is
  // complete. A body that ends inside an item throws OMSException.
  bool getNextPart(unsigned int& kind, bool& flag, unsigned int& extra, std::string& text);

  // The most body bytes one message may gather; a larger one is refused with OMSException.
  static constexpr std::size_t kMaxBodyBytes = std::size_t{256} << 20;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
