#include "backend/omfactory/OmCellSlots.h"

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {
// A table cleared at the end of a procedure keeps this many slots' room for the next one.
constexpr std::size_t kKeptCapacity = 1 << 16;
}  // namespace

void OmCellSlots::Store(int id, std::unique_ptr<OmCellText> cell) {
  if (id < 0) throw OMSException("OmCellSlots::Store -- id out of range", id);
  if (id >= kDenseIds) {
    // An empty cell leaves the slot empty: a map entry would only hold a null.
    if (cell) {
      _sparse[id] = std::move(cell);
    } else {
      _sparse.erase(id);
    }
    return;
  }
  const std::size_t index = std::size_t(id);
  if (index >= _slots.size()) _slots.resize(index + 1);
  if (index < _values.size()) _values[index].kind = Value::kNone;
  _slots[index] = std::move(cell);
}

void OmCellSlots::Grow(std::size_t size) {
  if (_slots.size() < size) _slots.resize(size);
  _values.resize(size);
}

void OmCellSlots::MakeNumber(int id, double value, std::uint32_t format, icuTracker* tracker) {
  auto cell = std::make_unique<OmNumber>(value, format);
  cell->setICUTracker(tracker);
  Store(id, std::move(cell));
}

void OmCellSlots::MakeText(int id, std::string_view text, bool translatable,
                           icuTracker* tracker) {
  auto cell = std::make_unique<OmStringCell>(std::string(text), translatable);
  cell->setICUTracker(tracker);
  Store(id, std::move(cell));
}

std::unique_ptr<OmCellText> OmCellSlots::Make(Value& value) const {
  std::unique_ptr<OmCellText> cell;
  if (value.kind == Value::kNumber) {
    cell = std::make_unique<OmNumber>(value.number, value.format);
  } else {
    cell = std::make_unique<OmStringCell>(value.text.substr(0, value.length), value.translatable);
  }
  cell->setICUTracker(value.tracker);
  value.kind = Value::kNone;
  return cell;
}

std::unique_ptr<OmCellText> OmCellSlots::TakeSparse(int id) {
  const auto it = _sparse.find(id);
  if (it == _sparse.end()) return nullptr;
  std::unique_ptr<OmCellText> cell = std::move(it->second);
  _sparse.erase(it);
  return cell;
}

void OmCellSlots::ReleaseText(Value& value) { std::string().swap(value.text); }

void OmCellSlots::DiscardCell(int id) {
  if (id >= kDenseIds) return void(_sparse.erase(id));
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return;
  // A text buffer grown large is given back with the slot's cell.
  if (index < _values.size() && _values[index].text.capacity() > kKeptTextCapacity) {
    ReleaseText(_values[index]);
  }
  _slots[index].reset();
}

OmCellText* OmCellSlots::Peek(int id) const {
  if (id >= kDenseIds) {
    const auto it = _sparse.find(id);
    return it == _sparse.end() ? nullptr : it->second.get();
  }
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return nullptr;
  if (index < _values.size() && _values[index].kind != Value::kNone) {
    _slots[index] = Make(_values[index]);
  }
  return _slots[index].get();
}

void OmCellSlots::Clear() {
  _values.clear();
  std::unordered_map<int, std::unique_ptr<OmCellText>>().swap(_sparse);
  if (_slots.capacity() > kKeptCapacity) {
    std::vector<std::unique_ptr<OmCellText>>().swap(_slots);
  } else {
    _slots.clear();
  }
}
