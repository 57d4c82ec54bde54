#include "backend/omfactory/OmCellSlots.h"

#include "platform/errors/OMSException.h"

namespace {
// A table cleared at the end of a procedure keeps this many slots' room for the next one.
constexpr std::size_t kKeptCapacity = 1 << 16;
}  // namespace

void OmCellSlots::Store(int id, std::unique_ptr<OmCellText> cell) {
  if (id < 0 || id >= kIdLimit) throw OMSException("OmCellSlots::Store -- id out of range", id);
  const std::size_t index = std::size_t(id);
  if (index >= _slots.size()) _slots.resize(index + 1);
  _slots[index] = std::move(cell);
}

std::unique_ptr<OmCellText> OmCellSlots::Take(int id) {
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return nullptr;
  return std::move(_slots[index]);
}

OmCellText* OmCellSlots::Peek(int id) const {
  const std::size_t index = std::size_t(id);
  if (id < 0 || index >= _slots.size()) return nullptr;
  return _slots[index].get();
}

void OmCellSlots::Clear() {
  if (_slots.capacity() > kKeptCapacity) {
    std::vector<std::unique_ptr<OmCellText>>().swap(_slots);
  } else {
    _slots.clear();
  }
}
