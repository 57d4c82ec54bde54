// Puts long texts together from the pieces that several messages carry: the chunks of an
// IPC_STRING text longer than one message allows, and the parts A, B and C that IPC_LONG_STRING and
// IPC_LONG_TEXT collect per cell id. All pending pieces together are capped at kMaxBytes
// (256 MiB), so a stream that never finishes its strings cannot exhaust memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

class OmStringAssembler {
public:
  static constexpr std::size_t kMaxBytes = std::size_t(256) << 20;

  struct Parts {
    std::string a;
    std::string b;
    std::string c;
  };

  // Whether `more` bytes still fit under the cap.
  bool Fits(std::size_t more) const { return more <= kMaxBytes - PendingBytes(); }
  std::size_t PendingBytes() const { return _chunks.size() + _partBytes; }

  // IPC_STRING chunks. Append fails (OMSException) when the text does not fit.
  void AppendChunk(std::string_view text);
  bool HasChunks() const { return !_chunks.empty(); }
  // The buffered chunks followed by last; the buffer is emptied.
  std::string FinishChunks(std::string_view last);
  // Forgets the buffered chunks (a string that cannot be finished).
  void DropChunks();

  // Long-string parts of a cell id: part 0 is A, 1 is B, 2 is C. Fails when the text does not fit.
  void AppendPart(int id, int part, std::string_view text);
  // Hands over the parts of id (empty texts where nothing arrived) and forgets them. Part C only
  // comes with IPC_LONG_TEXT, which finishes its text at once, so no part outlives its message.
  Parts TakeParts(int id);
  // Forgets every part of id.
  void DropParts(int id);

private:
  std::string _chunks;
  std::unordered_map<int, Parts> _parts;
  std::size_t _partBytes = 0;
};
