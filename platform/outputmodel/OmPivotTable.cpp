#include "platform/outputmodel/OmPivotTable.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#ifdef __linux__
#include <sys/mman.h>
#endif

#include "platform/errors/OMSException.h"

namespace {

// Sparse cell storage: each cell's coordinates are packed into a key of one or more 64-bit words
// (a bit field per dimension, just wide enough for the coordinates seen so far), held in an
// open-addressing hash table with linear probing. Per cell this costs the key words and one
// pointer over a load of at most 0.7: about 23 bytes for tables whose fields fit in one word.
// Tables are mostly filled in order, one dimension (the cell dimension) changing from cell to
// cell: that dimension's field takes the lowest bits, and its lowest kRunBits bits are added to
// the hash rather than mixed into it, so that a run of cells lands in neighbouring slots and
// costs one cache miss instead of one per cell.
class CellStore {
public:
  CellStore() = default;
  CellStore(const CellStore&) = delete;
  CellStore& operator=(const CellStore&) = delete;
  ~CellStore() { Clear(); }

  std::size_t Count() const { return _count; }
  std::size_t Bytes() const {
    return _values.size() * _words * sizeof(std::uint64_t) + _values.capacity() * sizeof(OmCellText*);
  }
  std::size_t Capacity() const { return _values.size(); }
  OmCellText* ValueAt(std::size_t slot) const { return _values[slot]; }

  // The first occupied slot at or after slot; Capacity() when none.
  std::size_t NextSlot(std::size_t slot) const {
    while (slot < _values.size() && _values[slot] == nullptr) ++slot;
    return slot;
  }

  std::vector<int> Decode(std::size_t slot) const {
    std::vector<int> coords(_fields.size(), 0);
    const std::uint64_t* key = &_keys[slot * _words];
    for (std::size_t d = 0; d < _fields.size(); ++d) coords[d] = Extract(key, _fields[d]);
    return coords;
  }

  void SetDimensions(std::size_t n) {
    if (n == _fields.size()) return;
    std::vector<int> widths;
    for (const auto& f : _fields) widths.push_back(f.width);
    // While nothing is stored, the dimensions share one key word evenly, so that a table's
    // categories rarely outgrow their fields and force a repack of every stored key.
    const int share = n == 0 ? 0 : std::min<int>(31, int(64 / n));
    if (_count == 0) widths.assign(n, share);
    widths.resize(n, 0);
    Relayout(widths);
  }

  // Moves dimension d's field to the lowest bits. Only an empty store follows: repacking stored
  // keys on every hint would let a stream that switches cell dimensions cost cells x switches.
  void SetFastDimension(std::size_t d) {
    if (d == _fast || _count != 0) return;
    _fast = d;
    if (_fields.empty()) return;
    std::vector<int> widths;
    for (const auto& f : _fields) widths.push_back(f.width);
    Relayout(widths);
  }

  OmCellText* Find(const std::vector<int>& coords) const {
    if (_count == 0 || !Fits(coords)) return nullptr;
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    std::size_t slot = Locate(key);
    return _values[slot];
  }

  // Stores cell (not null) and returns the cell that was there (or null).
  std::unique_ptr<OmCellText> Put(const std::vector<int>& coords, std::unique_ptr<OmCellText> cell) {
    Widen(coords);
    if ((_count + 1) * 10 > _values.size() * 7) Rehash(std::max<std::size_t>(16, _values.size() * 2));
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    std::size_t slot = Locate(key);
    std::unique_ptr<OmCellText> old(_values[slot]);
    if (!old) {
      std::copy(key, key + _words, &_keys[slot * _words]);
      ++_count;
    }
    _values[slot] = cell.release();
    return old;
  }

  std::unique_ptr<OmCellText> Take(const std::vector<int>& coords) {
    if (_count == 0 || !Fits(coords)) return nullptr;
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    std::size_t slot = Locate(key);
    if (_values[slot] == nullptr) return nullptr;
    std::unique_ptr<OmCellText> cell(_values[slot]);
    EraseSlot(slot);
    return cell;
  }

  // Destroys the cells whose coordinate on d is in leaves.
  void Drop(std::size_t d, const std::unordered_set<int>& leaves) {
    if (d >= _fields.size() || _count == 0) return;
    for (std::size_t slot = 0; slot < _values.size(); ++slot) {
      if (_values[slot] == nullptr) continue;
      if (leaves.count(Extract(&_keys[slot * _words], _fields[d]))) {
        delete _values[slot];
        _values[slot] = nullptr;
        --_count;
      }
    }
    // Closes the gaps the probing sequences rely on, in an index sized for the cells left.
    std::size_t capacity = 16;
    while (_count * 10 > capacity * 7) capacity *= 2;
    Rehash(std::min(capacity, _values.size()));
  }

  void Clear() {
    for (OmCellText*& v : _values) {
      delete v;
      v = nullptr;
    }
    _count = 0;
  }

private:
  static constexpr std::size_t kMaxWords = 64;
  // Slot i's key is words i * _words ...; only the keys of occupied slots are ever read, so the
  // words are left unset (zero-filling them cost a tenth of building a large table).
  using Keys = std::unique_ptr<std::uint64_t[]>;
  // Cells differing only in these low bits of the fast dimension's coordinate are neighbours:
  // 16 slots, two cache lines of cell pointers.
  static constexpr int kRunBits = 4;
  struct Field {
    int width = 0;
    int word = 0;
    int shift = 0;
  };

  static int Extract(const std::uint64_t* key, const Field& f) {
    if (f.width == 0) return 0;
    return int((key[f.word] >> f.shift) & ((std::uint64_t(1) << f.width) - 1));
  }

  static int BitsFor(int c) { return c <= 0 ? 0 : std::bit_width(unsigned(c)); }

  bool Fits(const std::vector<int>& coords) const {
    for (std::size_t d = 0; d < _fields.size(); ++d) {
      if (coords[d] < 0 || BitsFor(coords[d]) > _fields[d].width) return false;
    }
    return true;
  }

  void Encode(const std::vector<int>& coords, std::uint64_t* key) const {
    std::fill(key, key + _words, 0);
    for (std::size_t d = 0; d < _fields.size(); ++d) {
      if (_fields[d].width > 0) key[_fields[d].word] |= std::uint64_t(coords[d]) << _fields[d].shift;
    }
  }

  std::size_t HashKey(const std::uint64_t* key) const {
    std::uint64_t h = 0x243f6a8885a308d3ULL;
    for (std::size_t w = 0; w < _words; ++w) {
      std::uint64_t z = (w == 0 ? key[0] & ~_runMask : key[w]) + h + 0x9e3779b97f4a7c15ULL;
      z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
      z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
      h = z ^ (z >> 31);
    }
    return std::size_t(h + (key[0] & _runMask));
  }

  // The slot holding key, or the empty slot where it would go. The table is never full.
  std::size_t Locate(const std::uint64_t* key) const {
    const std::size_t mask = _values.size() - 1;
    std::size_t slot = HashKey(key) & mask;
    if (_words == 1) {  // the common case, without a call to compare one word
      while (_values[slot] != nullptr && _keys[slot] != key[0]) slot = (slot + 1) & mask;
      return slot;
    }
    while (_values[slot] != nullptr && !std::equal(key, key + _words, &_keys[slot * _words])) {
      slot = (slot + 1) & mask;
    }
    return slot;
  }

  // Backward-shift deletion keeps every probe sequence unbroken without tombstones.
  void EraseSlot(std::size_t slot) {
    const std::size_t mask = _values.size() - 1;
    _values[slot] = nullptr;
    --_count;
    std::size_t hole = slot;
    for (std::size_t next = (hole + 1) & mask; _values[next] != nullptr; next = (next + 1) & mask) {
      const std::size_t home = HashKey(&_keys[next * _words]) & mask;
      // Move the entry into the hole unless its home lies cyclically in (hole, next].
      const bool stays = (hole <= next) ? (hole < home && home <= next) : (hole < home || home <= next);
      if (stays) continue;
      _values[hole] = _values[next];
      std::copy(&_keys[next * _words], &_keys[next * _words] + _words, &_keys[hole * _words]);
      _values[next] = nullptr;
      hole = next;
    }
  }

  void Widen(const std::vector<int>& coords) {
    if (Fits(coords)) return;  // the common case allocates nothing
    std::vector<int> widths;
    for (std::size_t d = 0; d < _fields.size(); ++d) {
      const int need = BitsFor(coords[d]);
      // One spare bit halves how often a growing dimension forces a repack.
      widths.push_back(need > _fields[d].width ? std::min(31, need + 1) : _fields[d].width);
    }
    Relayout(widths);
  }

  // Assigns fields to words (no field straddles a word) and repacks every stored key.
  void Relayout(const std::vector<int>& widths) {
    std::vector<Field> fields(widths.size());
    int word = 0, used = 0;
    // The fast dimension first, at bit 0 of word 0; the others in order after it.
    const std::size_t n = widths.size();
    const std::size_t first = _fast < n ? _fast : 0;
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t d = i == 0 ? first : (i <= first ? i - 1 : i);
      if (used + widths[d] > 64) {
        ++word;
        used = 0;
      }
      fields[d] = Field{widths[d], word, used};
      used += widths[d];
    }
    const int runBits = n == 0 ? 0 : std::min(kRunBits, widths[first]);
    const std::uint64_t runMask = (std::uint64_t(1) << runBits) - 1;
    const std::size_t words = std::size_t(word) + 1;
    if (words > kMaxWords) {
      throw OMSException("OmPivotTable::Cell -- coordinate key too wide", double(words));
    }
    // Every buffer is allocated before the store changes: running out of memory here leaves
    // the cells where they were, owned by the store.
    Keys keys = NewKeys(_values.size() * words);
    std::vector<OmCellText*> values = NewValues(_values.size());
    std::vector<int> coords(fields.size(), 0);
    // Every key is decoded with the old layout into one reused buffer and inserted afresh.
    _runMask = runMask;
    const std::vector<Field> oldFields = std::exchange(_fields, std::move(fields));
    const std::size_t oldWords = std::exchange(_words, words);
    const Keys oldKeys = std::exchange(_keys, std::move(keys));
    const std::vector<OmCellText*> oldValues = std::exchange(_values, std::move(values));
    _count = 0;
    for (std::size_t slot = 0; slot < oldValues.size(); ++slot) {
      if (oldValues[slot] == nullptr) continue;
      for (std::size_t d = 0; d < oldFields.size() && d < coords.size(); ++d) {
        coords[d] = Extract(&oldKeys[slot * oldWords], oldFields[d]);
      }
      Insert(coords, oldValues[slot]);
    }
  }

  void Rehash(std::size_t capacity) {
    Keys keys = NewKeys(capacity * _words);
    std::vector<OmCellText*> values = NewValues(capacity);
    keys.swap(_keys);
    values.swap(_values);
    _count = 0;
    for (std::size_t slot = 0; slot < values.size(); ++slot) {
      if (values[slot] == nullptr) continue;
      const std::uint64_t* key = &keys[slot * _words];
      std::size_t to = Locate(key);
      std::copy(key, key + _words, &_keys[to * _words]);
      _values[to] = values[slot];
      ++_count;
    }
  }

  // Index arrays of large tables ask for transparent huge pages before their memory is first
  // touched: filling a fresh index of many megabytes otherwise takes a page fault every 4 KiB,
  // which cost more than the reinsertion itself.
  static void PreferHugePages(const void* block, std::size_t bytes) {
#ifdef __linux__
    constexpr std::uintptr_t kPage = 4096;
    if (bytes < (std::size_t(4) << 20)) return;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) & ~(kPage - 1);
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + bytes) & ~(kPage - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // advice only
#else
    (void)block;
    (void)bytes;
#endif
  }
  static Keys NewKeys(std::size_t words) {
    Keys keys = std::make_unique_for_overwrite<std::uint64_t[]>(words);
    PreferHugePages(keys.get(), words * sizeof(std::uint64_t));
    return keys;
  }
  static std::vector<OmCellText*> NewValues(std::size_t slots) {
    std::vector<OmCellText*> values;
    values.reserve(slots);
    PreferHugePages(values.data(), slots * sizeof(OmCellText*));
    values.assign(slots, nullptr);
    return values;
  }

  void Insert(const std::vector<int>& coords, OmCellText* cell) {
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    std::size_t slot = Locate(key);
    std::copy(key, key + _words, &_keys[slot * _words]);
    _values[slot] = cell;
    ++_count;
  }

  std::vector<Field> _fields;
  std::size_t _fast = 0;
  std::uint64_t _runMask = 0;
  std::size_t _words = 1;
  Keys _keys = std::make_unique<std::uint64_t[]>(0);
  std::vector<OmCellText*> _values;
  std::size_t _count = 0;
};

bool EqualsNoCase(const std::string& a, const char* b) {
  std::size_t i = 0;
  for (; i < a.size() && b[i] != '\0'; ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return i == a.size() && b[i] == '\0';
}

}  // namespace

struct OmPivotTable::Data {
  std::unique_ptr<OmCellText> templateName;
  std::int64_t tableId = 0;
  bool split = false;
  std::unique_ptr<OmCellText> title;
  std::unique_ptr<OmCellText> caption;
  std::unique_ptr<OmCellText> corner;

  std::vector<std::unique_ptr<OmDimension>> dimensions;
  std::vector<short> rows, columns, layers;

  CellStore cells;
  std::uint64_t maxCells = 0;
  bool scratched = false;
  bool ended = false;

  std::vector<OmFootnote> footnotes;
  std::unordered_multimap<std::size_t, int> footnoteIndex;
  bool removedFootnotes = false;
  bool hasMarkers = false;

  int startColor = 0;
  int endColor = 0;
  bool rotateRows = false;
  bool rotateColumns = false;
  int option = 0;
  int minWidth = 0;
  int maxWidth = 0;
  bool fast = false;
  bool labelsOnly = false;
  bool imputed = false;
  bool backendOwns = false;
  int lang = 0;
  unsigned variableMode = 2;
  unsigned valueMode = 2;
  std::string locale;
  std::vector<std::string> misc;
  std::shared_ptr<const BackendSettings> settings;
  icuTracker* tracker = nullptr;
};

// ---- iterator ----

OmCellText* OmPivotTable::Iterator::Cell() const {
  return AtEnd() ? nullptr : _table->_my->cells.ValueAt(_slot);
}

OmPivotTable::Coordinates OmPivotTable::Iterator::Coord() const {
  if (AtEnd()) throw OMSException("OmPivotTable::Iterator::Coord -- !AtEnd()");
  return _table->_my->cells.Decode(_slot);
}

bool OmPivotTable::Iterator::AtEnd() const { return _slot >= _table->_my->cells.Capacity(); }

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
  if (!AtEnd()) _slot = _table->_my->cells.NextSlot(_slot + 1);
  return *this;
}

// ---- table ----

OmPivotTable::OmPivotTable(const OmCellText& label, const OmCellText& templateName, bool split)
    : OmOutputPart(&label), _my(std::make_unique<Data>()) {
  _my->templateName = templateName.Clone();
  _my->split = split;
}

OmPivotTable::~OmPivotTable() {
  // The builder may look at the table while it goes; release it before the table's state.
  ReleaseBuilder().reset();
}

const OmCellText& OmPivotTable::TemplateName() const { return *_my->templateName; }
std::int64_t OmPivotTable::TableId() const { return _my->tableId; }
void OmPivotTable::TableId(std::int64_t id) { _my->tableId = id; }
bool OmPivotTable::HasSplits() const { return _my->split; }
bool OmPivotTable::IsNotes() const { return EqualsNoCase(_my->templateName->Text(), "Notes"); }
bool OmPivotTable::IsWarnings() const { return EqualsNoCase(_my->templateName->Text(), "Warnings"); }

void OmPivotTable::SetTableTitle(const OmCellText& title) { _my->title = title.Clone(); }
OmCellText* OmPivotTable::TableTitle() const { return _my->title.get(); }
void OmPivotTable::Caption(const OmCellText& caption) { _my->caption = caption.Clone(); }
OmCellText* OmPivotTable::Caption() const { return _my->caption.get(); }
void OmPivotTable::CornerText(const OmCellText& corner) { _my->corner = corner.Clone(); }
OmCellText* OmPivotTable::CornerText() const { return _my->corner.get(); }

int OmPivotTable::AddDimension(const OmCellText& label) {
  const int d = int(_my->dimensions.size());
  if (d >= 0x7FFF) throw OMSException("OmPivotTable::AddDimension -- too many dimensions", d);
  _my->dimensions.push_back(std::make_unique<OmDimension>(label));
  _my->dimensions.back()->setTable(this, d);
  _my->cells.SetDimensions(_my->dimensions.size());
  return d;
}

int OmPivotTable::FindDimension(const OmCellText& label) const {
  for (std::size_t d = 0; d < _my->dimensions.size(); ++d) {
    const OmCellText* l = _my->dimensions[d]->Label();
    if (l && l->Equals(label)) return int(d);
  }
  return -1;
}

OmDimension& OmPivotTable::Dimension(int d) {
  return const_cast<OmDimension&>(static_cast<const OmPivotTable*>(this)->Dimension(d));
}

const OmDimension& OmPivotTable::Dimension(int d) const {
  if (d < 0 || std::size_t(d) >= _my->dimensions.size()) {
    throw OMSException("OmPivotTable::Dimension -- d < NDimensions()", d,
                       double(_my->dimensions.size()));
  }
  return *_my->dimensions[std::size_t(d)];
}

int OmPivotTable::NDimensions() const { return int(_my->dimensions.size()); }
int OmPivotTable::Size(int d) const { return Dimension(d).Size(); }

std::vector<int> OmPivotTable::SizeVector() const {
  std::vector<int> sizes;
  sizes.reserve(_my->dimensions.size());
  for (const auto& dim : _my->dimensions) sizes.push_back(dim->Size());
  return sizes;
}

void OmPivotTable::CopyDimensions(const OmPivotTable& other) {
  if (&other == this) return;
  _my->cells.Clear();
  std::vector<std::unique_ptr<OmDimension>> dims;
  for (const auto& dim : other._my->dimensions) dims.push_back(std::make_unique<OmDimension>(*dim));
  _my->dimensions = std::move(dims);
  for (std::size_t d = 0; d < _my->dimensions.size(); ++d) _my->dimensions[d]->setTable(this, int(d));
  _my->cells.SetDimensions(_my->dimensions.size());
}

PuppetVector<short> OmPivotTable::Rows() { return PuppetVector<short>(_my->rows, kAxisFill); }
PuppetVector<short> OmPivotTable::Columns() { return PuppetVector<short>(_my->columns, kAxisFill); }
PuppetVector<short> OmPivotTable::Layers() { return PuppetVector<short>(_my->layers, kAxisFill); }

PuppetVector<short> OmPivotTable::Axis(int axis) {
  switch (axis) {
    case 0: return Rows();
    case 1: return Columns();
    case 2: return Layers();
    default: throw OMSException("OmPivotTable::Axis -- axis 0, 1 or 2", axis);
  }
}

const std::vector<short>& OmPivotTable::Rows() const { return _my->rows; }
const std::vector<short>& OmPivotTable::Columns() const { return _my->columns; }
const std::vector<short>& OmPivotTable::Layers() const { return _my->layers; }

namespace {

void CheckCoordinates(const char* operation, const std::vector<int>& coords, int nDims) {
  if (int(coords.size()) != nDims) {
    throw OMSException(std::string("OmPivotTable::") + operation +
                           " -- coordinates.size() == NDimensions()",
                       double(coords.size()), nDims);
  }
}

}  // namespace

OmCellText* OmPivotTable::Cell(const Coordinates& coords) const {
  CheckCoordinates("Cell", coords, NDimensions());
  return _my->cells.Find(coords);
}

void OmPivotTable::Cell(const Coordinates& coords, const OmCellText& cell) {
  Cell(coords, cell.Clone());
}

void OmPivotTable::Cell(const Coordinates& coords, std::unique_ptr<OmCellText> cell) {
  CheckCoordinates("Cell", coords, NDimensions());
  for (std::size_t d = 0; d < coords.size(); ++d) {
    if (coords[d] < 0) throw OMSException("OmPivotTable::Cell -- coordinate >= 0", double(d), coords[d]);
  }
  if (!cell) {
    _my->cells.Take(coords);
    return;
  }
  if (_my->maxCells != 0 && _my->cells.Count() >= _my->maxCells && !_my->cells.Find(coords)) {
    _my->scratched = true;  // over the limit: the table shows what it holds and is marked
    return;
  }
  _my->cells.Put(coords, std::move(cell));
}

std::unique_ptr<OmCellText> OmPivotTable::TakeCell(const Coordinates& coords) {
  CheckCoordinates("TakeCell", coords, NDimensions());
  return _my->cells.Take(coords);
}

std::size_t OmPivotTable::NCells() const { return _my->cells.Count(); }
std::size_t OmPivotTable::CellIndexBytes() const { return _my->cells.Bytes(); }
void OmPivotTable::CellOrderHint(int d) {
  if (d >= 0) _my->cells.SetFastDimension(std::size_t(d));
}
OmPivotTable::Iterator OmPivotTable::FirstCell() const { return Iterator(this, _my->cells.NextSlot(0)); }
OmPivotTable::Iterator OmPivotTable::EndCell() const { return Iterator(this, _my->cells.Capacity()); }
void OmPivotTable::MaxCells(std::uint64_t maxCells) { _my->maxCells = maxCells; }
std::uint64_t OmPivotTable::MaxCells() const { return _my->maxCells; }
void OmPivotTable::Scratch(bool scratched) { _my->scratched = scratched; }
bool OmPivotTable::IsScratched() const { return _my->scratched; }
void OmPivotTable::EndTable() { _my->ended = true; }
bool OmPivotTable::IsEnded() const { return _my->ended; }

void OmPivotTable::DropCells(int d, const std::vector<int>& leaves) {
  _my->cells.Drop(std::size_t(d), std::unordered_set<int>(leaves.begin(), leaves.end()));
}

int OmPivotTable::Footnote(const OmFootnote& footnote, bool alwaysAdd) {
  const std::size_t h = footnote.Hash();
  if (!alwaysAdd) {
    auto [first, last] = _my->footnoteIndex.equal_range(h);
    int found = -1;
    for (auto it = first; it != last; ++it) {
      if (_my->footnotes[std::size_t(it->second)] == footnote && (found < 0 || it->second < found)) {
        found = it->second;
      }
    }
    if (found >= 0) return found;
  }
  const int index = int(_my->footnotes.size());
  if (index >= 0x7FFF) throw OMSException("OmPivotTable::Footnote -- too many footnotes", index);
  _my->footnotes.push_back(footnote);
  _my->footnotes.back().setRefCount(0);
  _my->footnoteIndex.emplace(h, index);
  return index;
}

const std::vector<OmFootnote>& OmPivotTable::Footnotes() const { return _my->footnotes; }

OmFootnote& OmPivotTable::FootnoteAt(int index) {
  if (index < 0 || std::size_t(index) >= _my->footnotes.size()) {
    throw OMSException("OmPivotTable::FootnoteAt -- index < Footnotes().size()", index,
                       double(_my->footnotes.size()));
  }
  return _my->footnotes[std::size_t(index)];
}

void OmPivotTable::RemovedFootnotes(bool removed) { _my->removedFootnotes = removed; }
bool OmPivotTable::RemovedFootnotes() const { return _my->removedFootnotes; }
void OmPivotTable::setHasMarkers() { _my->hasMarkers = true; }
bool OmPivotTable::HasMarkers() const { return _my->hasMarkers; }

void OmPivotTable::setStartColor(int colour) { _my->startColor = colour; }
void OmPivotTable::setEndColor(int colour) { _my->endColor = colour; }
int OmPivotTable::StartColor() const { return _my->startColor; }
int OmPivotTable::EndColor() const { return _my->endColor; }
void OmPivotTable::RotateRowLabels(bool rotate) { _my->rotateRows = rotate; }
bool OmPivotTable::RotateRowLabels() const { return _my->rotateRows; }
void OmPivotTable::RotateColumnLabels(bool rotate) { _my->rotateColumns = rotate; }
bool OmPivotTable::RotateColumnLabels() const { return _my->rotateColumns; }
void OmPivotTable::OptionNumber(int option) { _my->option = option; }
int OmPivotTable::OptionNumber() const { return _my->option; }
void OmPivotTable::MinColumnWidth(int width) { _my->minWidth = width; }
int OmPivotTable::MinColumnWidth() const { return _my->minWidth; }
void OmPivotTable::MaxColumnWidth(int width) { _my->maxWidth = width; }
int OmPivotTable::MaxColumnWidth() const { return _my->maxWidth; }
void OmPivotTable::setFastTable(bool fast) { _my->fast = fast; }
bool OmPivotTable::fastTable() const { return _my->fast; }
void OmPivotTable::setLabelsOnly(bool labelsOnly) { _my->labelsOnly = labelsOnly; }
bool OmPivotTable::LabelsOnly() const { return _my->labelsOnly; }
void OmPivotTable::setImputed(bool imputed) { _my->imputed = imputed; }
bool OmPivotTable::IsImputed() const { return _my->imputed; }
void OmPivotTable::setBackendOwns(bool owns) { _my->backendOwns = owns; }
bool OmPivotTable::BackendOwns() const { return _my->backendOwns; }
void OmPivotTable::setLang(int lang) { _my->lang = lang; }
int OmPivotTable::Lang() const { return _my->lang; }
void OmPivotTable::setVariableMode(unsigned mode) { _my->variableMode = mode; }
unsigned OmPivotTable::VariableMode() const { return _my->variableMode; }
void OmPivotTable::setValueMode(unsigned mode) { _my->valueMode = mode; }
unsigned OmPivotTable::ValueMode() const { return _my->valueMode; }
void OmPivotTable::TableLocale(const std::string& locale) { _my->locale = locale; }
const std::string& OmPivotTable::TableLocale() const { return _my->locale; }
void OmPivotTable::addMiscProperty(const std::string& property) { _my->misc.push_back(property); }
const std::vector<std::string>& OmPivotTable::MiscProperties() const { return _my->misc; }

void OmPivotTable::setBackendSettings(std::shared_ptr<const BackendSettings> settings) {
  _my->settings = std::move(settings);
}
const std::shared_ptr<const BackendSettings>& OmPivotTable::getBackendSettings() const {
  return _my->settings;
}
void OmPivotTable::setICUTracker(icuTracker* tracker) { _my->tracker = tracker; }
icuTracker* OmPivotTable::getICUTracker() const { return _my->tracker; }
