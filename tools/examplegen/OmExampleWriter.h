// What the example procedures' writers share: a pool of 40 cell ids taken in turn (as procedures
// do: every message takes the cells it names, so the slots are free again when the pool wraps),
// and the text and number cells that most messages name.
#pragma once

#include <cstdint>
#include <string>

#include "platform/stream/OmStreamWriter.h"

// Protocol number formats: type F in bits 16-23, width 8 in 8-15, decimals in 0-7.
constexpr std::int32_t OmExampleF(std::int32_t decimals) { return (5 << 16) | (8 << 8) | decimals; }

class OmExampleWriter {
public:
  explicit OmExampleWriter(OmStreamWriter& out) : _out(out) {}

  // Writes a text (literal 1: not translatable) or a number into the next slot; gives its id.
  std::int32_t Text(const std::string& text, std::int32_t literal = 0) {
    _out.String(Next(), text, literal);
    return _id;
  }
  std::int32_t Number(double value, std::int32_t format) {
    _out.Number(Next(), value, format);
    return _id;
  }

protected:
  std::int32_t Next() {
    _id = _id % 40 + 1;
    return _id;
  }

  OmStreamWriter& _out;
  std::int32_t _id = 0;
};
