// The session's cell slot table: owned cell texts waiting in numbered slots until a message takes
// them into a table, a heading or another cell. Ids are bounded (kIdLimit) so that a stray id from
// a stream can never make the table allocate more than a few megabytes of slots.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class OmCellSlots {
public:
  // Valid ids are 0 .. kIdLimit - 1 (4 Mi slots, 32 MiB of pointers at most). Callers check ids
  // against it before they reach the table (OmPayload::CellId).
  static constexpr int kIdLimit = 1 << 22;

  // Puts cell into slot id, destroying what was there; the table grows with empty slots. An id
  // outside the range is an OMSException.
  void Store(int id, std::unique_ptr<OmCellText> cell);
  // Empties slot id and hands its cell over; null for an empty slot or one never stored.
  std::unique_ptr<OmCellText> Take(int id);
  // The cell in slot id, or null; the slot keeps it.
  OmCellText* Peek(int id) const;
  // Destroys the cell in slot id, if any.
  void Discard(int id) { Take(id); }
  // Destroys every cell and shrinks the table to nothing.
  void Clear();
  std::size_t Size() const { return _slots.size(); }

private:
  std::vector<std::unique_ptr<OmCellText>> _slots;
};
