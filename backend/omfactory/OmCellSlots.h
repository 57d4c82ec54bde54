// The session's cell slot table: owned cell texts waiting in numbered slots until a message takes
// them into a table, a heading or another cell. Any non-negative 32-bit id is valid: a sender that
// numbers its cells upward without reusing slots passes millions. Low ids live in a dense table;
// the rest in a hash map, so memory follows the cells waiting, not the highest id seen.
//
// Plain numbers and texts, the bulk of every table, wait in the low slots undecoded into objects:
// a slot keeps the value (and reuses its text buffer) and makes the cell only when a message
// takes or looks at it. A table that OMS excludes discards them without any allocation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class icuTracker;

class OmCellSlots {
public:
  // Ids below this have a slot in the dense table (512 KiB of pointers at most); higher ones wait
  // in the sparse map. Negative ids are refused before they reach the table (OmPayload::CellId).
  static constexpr int kDenseIds = 1 << 16;
  // Ids below this keep numbers and texts as values; above it they are made into cells at once.
  // Procedures cycle through a few dozen ids, so a few kilobytes of values cover them.
  static constexpr int kValueIds = 1 << 10;

  // Puts cell into slot id, destroying what was there; the table grows with empty slots. An id
  // outside the range is an OMSException.
  void Store(int id, std::unique_ptr<OmCellText> cell);
  // The same for an OmNumber of value and format, or an OmStringCell of text, made with tracker
  // when first taken or looked at.
  // (Defined inline: every cell of a table passes through them.)
  void StoreNumber(int id, double value, std::uint32_t format, icuTracker* tracker) {
    if (id < 0 || id >= kValueIds) return MakeNumber(id, value, format, tracker);
    Value& slot = ValueSlot(id);
    slot.kind = Value::kNumber;
    slot.number = value;
    slot.format = format;
    slot.tracker = tracker;
  }
  void StoreText(int id, std::string_view text, bool translatable, icuTracker* tracker) {
    if (id < 0 || id >= kValueIds) return MakeText(id, text, translatable, tracker);
    Value& slot = ValueSlot(id);
    // The buffer of the slot's earlier texts is reused: its length only grows, and the text's
    // own length is kept beside it, so that a shorter text is a plain copy.
    if (text.size() > slot.text.size()) slot.text.resize(text.size());
    if (!text.empty()) std::memcpy(slot.text.data(), text.data(), text.size());
    slot.length = std::uint32_t(text.size());
    slot.kind = Value::kText;
    slot.translatable = translatable;
    slot.tracker = tracker;
  }
  // Empties slot id and hands its cell over; null for an empty slot or one never stored.
  std::unique_ptr<OmCellText> Take(int id) {
    const std::size_t index = std::size_t(id);
    if (id >= kDenseIds) return TakeSparse(id);
    if (id < 0 || index >= _slots.size()) return nullptr;
    if (index < _values.size() && _values[index].kind != Value::kNone) return Make(_values[index]);
    return std::move(_slots[index]);
  }
  // When slot id holds a waiting number: empties the slot and gives true with the number's value,
  // format and tracker; otherwise false and nothing changes.
  bool TakeNumber(int id, double& value, std::uint32_t& format, icuTracker*& tracker) {
    const std::size_t index = std::size_t(id);
    if (id < 0 || index >= _values.size() || _values[index].kind != Value::kNumber) return false;
    Value& waiting = _values[index];
    waiting.kind = Value::kNone;
    value = waiting.number;
    format = waiting.format;
    tracker = waiting.tracker;
    return true;
  }
  // When slot id holds a waiting text: empties the slot and gives true with the text, which
  // stays readable in the slot's buffer until the slot is next stored or cleared, and its
  // translatable flag; otherwise false and nothing changes.
  bool TakeText(int id, std::string_view& text, bool& translatable) {
    const std::size_t index = std::size_t(id);
    if (id < 0 || index >= _values.size() || _values[index].kind != Value::kText) return false;
    Value& value = _values[index];
    value.kind = Value::kNone;
    text = std::string_view(value.text.data(), value.length);
    translatable = value.translatable;
    return true;
  }
  // The cell in slot id, or null; the slot keeps it.
  OmCellText* Peek(int id) const;
  // Empties slot id, if it holds anything, without making its cell. A waiting value (every cell
  // of a dropped table) is emptied here; a cell object out of line.
  [[gnu::always_inline]] void Discard(int id) {
    const std::size_t index = std::size_t(id);
    // A waiting value's slot holds no cell (taking or peeking a value empties it first).
    if (index < _values.size() && _values[index].kind != Value::kNone) {
      Value& value = _values[index];
      value.kind = Value::kNone;
      if (value.text.capacity() > kKeptTextCapacity) ReleaseText(value);
      return;
    }
    DiscardCell(id);
  }
  // Destroys every cell and shrinks the table to nothing.
  void Clear();
  // Dense slots plus the sparse cells waiting.
  std::size_t Size() const { return _slots.size() + _sparse.size(); }

private:
  // A number or text waiting in a low slot; kNone once made into a cell or discarded.
  struct Value {
    enum Kind : std::uint8_t { kNone, kNumber, kText };
    Kind kind = kNone;
    bool translatable = false;
    std::uint32_t format = 0;
    double number = 0.0;
    icuTracker* tracker = nullptr;
    std::string text;  // a waiting text's first `length` bytes; the rest is room
    std::uint32_t length = 0;
  };

  // A waiting text buffer grown beyond this is given back when the slot is emptied.
  static constexpr std::size_t kKeptTextCapacity = 256;

  // Slot id (below kValueIds) ready for a new value: its cell destroyed, the tables long enough.
  Value& ValueSlot(int id) {
    const std::size_t index = std::size_t(id);
    if (index >= _values.size()) Grow(index + 1);
    _slots[index].reset();
    return _values[index];
  }
  void Grow(std::size_t size);
  // Stores the cell of a value at once (ids at or above kValueIds).
  void MakeNumber(int id, double value, std::uint32_t format, icuTracker* tracker);
  void MakeText(int id, std::string_view text, bool translatable, icuTracker* tracker);
  std::unique_ptr<OmCellText> Make(Value& value) const;
  std::unique_ptr<OmCellText> TakeSparse(int id);
  // Discard for a slot without a waiting value.
  void DiscardCell(int id);
  static void ReleaseText(Value& value);

  // Peek makes a waiting cell, which changes how a slot holds its content but not the content.
  mutable std::vector<std::unique_ptr<OmCellText>> _slots;
  mutable std::vector<Value> _values;
  std::unordered_map<int, std::unique_ptr<OmCellText>> _sparse;
};
