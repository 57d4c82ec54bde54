#include "backend/omfactory/OmCellSlots.h"

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {
// A table cleared at the end of a procedure keeps this many slots' room for the next one.
constexpr std::size_t kKeptCapacity = 1 << 16;
// A waiting text buffer grown beyond this is given back when the slot is emptied.
constexpr std::size_t kKeptTextCapacity = 256;
}  // namespace

void OmCellSlots::Store(int id, std::unique_ptr<OmCellText> cell) {
  if (id < 0 || id >= kIdLimit) throw OMSException("OmCellSlots::Store -- id out of range", id);
  const std::size_t index = std::size_t(id);
  if (index >= _slots.size()) _slots.resize(index + 1);
  if (index < _values.size()) _values[index].kind = Value::kNone;
  _slots[index] = std::move(cell);
}

OmCellSlots::Value& OmCellSlots::ValueSlot(int id) {
  const std::size_t index = std::size_t(id);
  if (index >= _slots.size()) _slots.resize(index + 1);
  if (index >= _values.size()) _values.resize(index + 1);
  _slots[index].reset();
  return _values[index];
}

void OmCellSlots::StoreNumber(int id, double value, std::uint32_t format, icuTracker* tracker) {
  if (id < 0 || id >= kValueIds) {
    auto cell = std::make_unique<OmNumber>(value, format);
    cell->setICUTracker(tracker);
    Store(id, std::move(cell));
    return;
  }
  Value& slot = ValueSlot(id);
  slot.kind = Value::kNumber;
  slot.number = value;
  slot.format = format;
  slot.tracker = tracker;
}

void OmCellSlots::StoreText(int id, std::string_view text, bool translatable, icuTracker* tracker) {
  if (id < 0 || id >= kValueIds) {
    auto cell = std::make_unique<OmStringCell>(std::string(text), translatable);
    cell->setICUTracker(tracker);
    Store(id, std::move(cell));
    return;
  }
  Value& slot = ValueSlot(id);
  slot.text.assign(text);  // reuses the buffer of the slot's earlier texts
  slot.kind = Value::kText;
  slot.translatable = translatable;
  slot.tracker = tracker;
}

std::unique_ptr<OmCellText> OmCellSlots::Make(Value& value) const {
  std::unique_ptr<OmCellText> cell;
  if (value.kind == Value::kNumber) {
    cell = std::make_unique<OmNumber>(value.number, value.format);
  } else {
    cell = std::make_unique<OmStringCell>(value.text, value.translatable);
  }
  cell->setICUTracker(value.tracker);
  value.kind = Value::kNone;
  return cell;
}

std::unique_ptr<OmCellText> OmCellSlots::Take(int id) {
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return nullptr;
  if (index < _values.size() && _values[index].kind != Value::kNone) return Make(_values[index]);
  return std::move(_slots[index]);
}

OmCellText* OmCellSlots::Peek(int id) const {
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return nullptr;
  if (index < _values.size() && _values[index].kind != Value::kNone) {
    _slots[index] = Make(_values[index]);
  }
  return _slots[index].get();
}

void OmCellSlots::Discard(int id) {
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return;
  if (index < _values.size()) {
    Value& value = _values[index];
    value.kind = Value::kNone;
    if (value.text.capacity() > kKeptTextCapacity) std::string().swap(value.text);
  }
  _slots[index].reset();
}

void OmCellSlots::Clear() {
  _values.clear();
  if (_slots.capacity() > kKeptCapacity) {
    std::vector<std::unique_ptr<OmCellText>>().swap(_slots);
  } else {
    _slots.clear();
  }
}
