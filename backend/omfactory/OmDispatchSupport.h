// What the message handlers share: the protocol's limits and the field readers that more than one
// family uses. Internal to the dispatcher's files (OmDispatcher*.cpp).
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "backend/omfactory/OmPayload.h"
#include "platform/outputmodel/OmCellText.h"

namespace omdispatch {

// IPC_STRING texts longer than this come in several messages.
constexpr std::int32_t kChunkLimit = 32766;
// IPC_LONG_TEXT drops a third part of this many bytes or more.
constexpr std::int32_t kLongTextThirdLimit = 99;
// Empty lines one line-skip count may ask for; more is taken for a corrupt field.
constexpr std::int32_t kMaxLineSkip = 1000;
// Axis positions are 1-based indices into lists of 16-bit dimension numbers.
constexpr std::int32_t kMaxAxisPosition = 32767;
// The output messages; codes in this range without a handler are ignored.
constexpr short kFirstOutputCode = 255;
constexpr short kLastOutputCode = 322;

// The cell a handler goes on to use; an empty slot there is a protocol error.
inline OmCellText& Required(const OmPayload& payload, const std::unique_ptr<OmCellText>& cell, int id,
                     const char* field) {
  if (!cell) payload.Fail(std::string(field) + " empty", id);
  return *cell;
}

// The zero-terminated text at offset; its terminator must lie inside the payload.
inline std::string_view TerminatedText(const OmPayload& payload, unsigned offset, const char* field) {
  payload.Need(std::uint64_t(offset) + 1);
  const char* begin = payload.Bytes() + offset;
  const void* end = std::memchr(begin, 0, payload.Length() - offset);
  if (end == nullptr) payload.Fail(std::string(field) + " not terminated", offset);
  return std::string_view(begin, std::size_t(static_cast<const char*>(end) - begin));
}

// Display mode of IPC_VARIABLE and IPC_DATA_VALUE: 2 leaves it unset (the session's mode
// applies), 0 asks for names or values, anything else for labels.
inline unsigned VariableDisplay(std::int32_t display) {
  if (display == 2) return 0;
  if (display == 0) return 1;
  return 2;
}

}  // namespace omdispatch
