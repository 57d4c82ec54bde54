#include "platform/outputmodel/OmPivotTable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <exception>
#include <new>
#include <cctype>
#include <unordered_map>
#include <utility>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmHugePages.h"
#include "platform/outputmodel/OmNumber.h"

namespace {

// Sparse cell storage. Each cell's coordinates are packed into a key of one or more 64-bit words
// (a bit field per dimension, just wide enough for the coordinates seen so far). The fast (cell)
// dimension takes the lowest bits and the others follow from the last to the first, so that keys
// compared from their top word down order cells as their coordinates compare, first dimension
// first and the fast one last.
//
// Cells live in a log: keys, entries and tags side by side in dense arrays, in the order they were
// first stored; a cell taken leaves a hole until the log is compacted. An entry is either a cell
// object or, for a plain number (the bulk of every table), the number itself: its tag then names
// one of the table's few (format, tracker) styles, so that such a cell costs its key, eight bytes
// and a tag byte instead of a heap object and a pointer. The object is made when a caller asks
// for a pointer, and kept.
//
// Tables are mostly filled in key order, and while they are the log is sorted: a new cell is
// appended, nothing is hashed and a look-up is a binary search. The first cell out of order, or
// more look-ups than binary searches answer cheaply, add an index: an open-addressing hash table
// of log positions (linear probing, load at most 0.7). Building it moves no cell, so iterators
// stay valid across look-ups. In the index the fast dimension's lowest kRunBits bits are added to
// the hash rather than mixed into it, so that a run of cells lands in neighbouring slots: one
// cache miss per run instead of one per cell.
class CellStore {
public:
  // What a log position holds: see the tags below.
  union Entry {
    double number;
    OmCellText* cell;
  };
  static constexpr std::uint8_t kHole = 0;
  static constexpr std::uint8_t kObject = 1;
  static constexpr std::uint8_t kFirstStyle = 2;  // kFirstStyle + i: a number of style i

  CellStore() = default;
  CellStore(const CellStore&) = delete;
  CellStore& operator=(const CellStore&) = delete;
  ~CellStore() { Clear(); }

  std::size_t Count() const { return _count; }
  std::size_t Bytes() const {
    return _keyRoom * sizeof(std::uint64_t) + _entries.capacity() * sizeof(Entry) +
           _tags.capacity() + _index.capacity() * sizeof(Slot) + _styles.capacity() * sizeof(Style);
  }
  // Positions in the log run from 0 to Capacity(); a hole's tag is kHole.
  std::size_t Capacity() const { return _tags.size(); }
  std::uint8_t TagAt(std::size_t at) const { return _tags[at]; }
  OmCellText* ObjectAt(std::size_t at) const { return _tags[at] == kObject ? _entries[at].cell : nullptr; }

  // The cell object at a position that holds a cell, made first for a plain number.
  OmCellText* MakeObject(std::size_t at) {
    if (_tags[at] >= kFirstStyle) {
      const Style& style = _styles[_tags[at] - kFirstStyle];
      auto number = std::make_unique<OmNumber>(_entries[at].number, style.format);
      number->setICUTracker(style.tracker);
      _entries[at].cell = number.release();
      _tags[at] = kObject;
    }
    return _entries[at].cell;
  }

  // The cell at a position that holds one, for reading: the object, or scratch set to the number.
  const OmCellText* Read(std::size_t at, OmNumber& scratch) const {
    if (_tags[at] == kObject) return _entries[at].cell;
    const Style& style = _styles[_tags[at] - kFirstStyle];
    scratch.setValue(_entries[at].number);
    scratch.setFormat(style.format);
    scratch.setICUTracker(style.tracker);
    return &scratch;
  }

  // The first occupied position at or after at; Capacity() when none.
  std::size_t NextSlot(std::size_t at) const {
    while (at < _tags.size() && _tags[at] == kHole) ++at;
    return at;
  }

  std::vector<int> Decode(std::size_t slot) const {
    std::vector<int> coords(_fields.size(), 0);
    const std::uint64_t* key = KeyAt(slot);
    for (std::size_t d = 0; d < _fields.size(); ++d) coords[d] = Extract(key, _fields[d]);
    return coords;
  }

  using Visitor = void (*)(void*, const OmPivotTable::CellView&);
  // Every cell, in log order, to visit.
  void ReadAll(Visitor visit, void* context) const {
    std::vector<int> coords(_fields.size(), 0);
    OmPivotTable::CellView view{coords.data(), nullptr, 0.0};
    const std::size_t n = _fields.size();
    for (std::size_t at = 0; at < _tags.size(); ++at) {
      const std::uint8_t tag = _tags[at];
      if (tag == kHole) continue;
      const std::uint64_t* key = KeyAt(at);
      for (std::size_t d = 0; d < n; ++d) coords[d] = Extract(key, _fields[d]);
      if (tag == kObject) {
        view.object = _entries[at].cell;
      } else {
        view.object = nullptr;
        view.number = _entries[at].number;
      }
      visit(context, view);
    }
  }

  void SetDimensions(std::size_t n) {
    if (n == _fields.size()) return;
    std::vector<int> widths;
    for (const auto& f : _fields) widths.push_back(f.width);
    // While nothing is stored, the dimensions share one key word evenly, so that a table's
    // categories rarely outgrow their fields and force a repack of every stored key.
    const int share = n == 0 ? 0 : std::min<int>(31, int(64 / n));
    if (_tags.empty()) widths.assign(n, share);
    widths.resize(n, 0);
    Relayout(widths);
  }

  // Moves dimension d's field to the lowest bits. Only an empty store follows: repacking stored
  // keys on every hint would let a stream that switches cell dimensions cost cells x switches.
  void SetFastDimension(std::size_t d) {
    if (d == _fast || !_tags.empty()) return;
    _fast = d;
    if (_fields.empty()) return;
    std::vector<int> widths;
    for (const auto& f : _fields) widths.push_back(f.width);
    Relayout(widths);
  }

  // The position holding a cell at coords, or kNowhere. Not const: many look-ups add the index
  // (the cells stay where they are).
  std::size_t Find(const std::vector<int>& coords) {
    if (_count == 0 || !Fits(coords)) return kNowhere;
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    const std::size_t at = Position(key);
    return at == kNowhere || _tags[at] == kHole ? kNowhere : at;
  }

  // Stores cell (not null), destroying what was there.
  void Put(const std::vector<int>& coords, std::unique_ptr<OmCellText> cell) {
    Entry entry;
    entry.cell = cell.get();
    Store(coords, kObject, entry);  // throws before it takes the cell, or takes it
    cell.release();
  }

  // Stores a plain number, destroying what was there; a table with more styles than tags name
  // keeps it as an object.
  void PutNumber(const std::vector<int>& coords, double value, std::uint32_t format, icuTracker* tracker) {
    const std::uint8_t tag = StyleTag(format, tracker);
    if (tag == kObject) {
      auto number = std::make_unique<OmNumber>(value, format);
      number->setICUTracker(tracker);
      return Put(coords, std::move(number));
    }
    Entry entry;
    entry.number = value;
    Store(coords, tag, entry);
  }

  std::unique_ptr<OmCellText> Take(const std::vector<int>& coords) {
    const std::size_t at = Find(coords);
    if (at == kNowhere) return nullptr;
    std::unique_ptr<OmCellText> cell(MakeObject(at));
    _tags[at] = kHole;
    --_count;
    if (_index.empty() && at + 1 == _tags.size()) {
      _tags.pop_back();  // the last cell of a log without index goes without a trace
      _entries.pop_back();
    } else if (_tags.size() - _count > std::max<std::size_t>(kSearches, _count)) {
      try {
        Compact(kNowhere, {});  // more holes than cells
      } catch (const std::bad_alloc&) {  // before anything moved: the holes wait for the next take
      }
    }
    return cell;
  }

  // Destroys the cells whose coordinate on d is in leaves; with visit, shows every cell to it
  // first.
  void Drop(std::size_t d, const std::vector<int>& leaves, Visitor visit = nullptr,
            void* context = nullptr) {
    if (d >= _fields.size() || _count == 0) {
      if (visit != nullptr) ReadAll(visit, context);
      return;
    }
    // Marked by coordinate, so that each cell costs a bit test rather than a hash look-up; no
    // stored coordinate reaches past its field.
    const std::size_t room = std::size_t(1) << _fields[d].width;
    std::vector<bool> marked;
    for (int leaf : leaves) {
      if (leaf < 0 || std::size_t(leaf) >= room) continue;
      if (std::size_t(leaf) >= marked.size()) marked.resize(std::size_t(leaf) + 1, false);
      marked[std::size_t(leaf)] = true;
    }
    Compact(d, marked, visit, context);
  }

  // Destroys every cell; the store starts again as an empty sorted log.
  void Clear() {
    for (std::size_t at = 0; at < _tags.size(); ++at) {
      if (_tags[at] == kObject) delete _entries[at].cell;
    }
    _entries = {};
    _tags = {};
    _index = {};
    _styles = {};
    _styleCache.fill(0);
    _keys.reset();
    _keyRoom = 0;
    _count = 0;
    _sorted = true;
    _searches = 0;
  }

  static constexpr std::size_t kNowhere = std::size_t(-1);

private:
  static constexpr std::size_t kMaxWords = 64;
  // Position i's key is words i * _words ...; keys beyond the log are left unset.
  using Keys = std::unique_ptr<std::uint64_t[]>;
  static constexpr std::uint32_t kFree = 0xFFFFFFFFu;  // the position of an unused index slot
  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t at = kFree;
  };
  // A plain number's format word and the tracker its object is made with.
  struct Style {
    std::uint32_t format;
    icuTracker* tracker;
  };
  static constexpr std::size_t kMaxStyles = 256 - kFirstStyle;
  // Cells differing only in these low bits of the fast dimension's coordinate are neighbours
  // in the index: 16 slots, two cache lines.
  static constexpr int kRunBits = 4;
  // Binary searches a sorted log answers before it adds an index: a few, plus one in 32 of its
  // cells, so that searching never costs much more than building the index would have.
  static constexpr std::size_t kSearches = 16;
  struct Field {
    int width = 0;
    int word = 0;
    int shift = 0;
  };

  // The tag of the style (format, tracker), added when new; kObject when every tag is taken.
  // A table has a handful of styles, met in turn cell after cell: a small cache by format finds
  // them without a search.
  std::uint8_t StyleTag(std::uint32_t format, icuTracker* tracker) {
    std::uint8_t& cached = _styleCache[(format * 0x9E3779B1u) >> (32 - kStyleCacheBits)];
    if (cached >= kFirstStyle) {
      const Style& style = _styles[cached - kFirstStyle];
      if (style.format == format && style.tracker == tracker) return cached;
    }
    std::size_t i = 0;
    while (i < _styles.size() && (_styles[i].format != format || _styles[i].tracker != tracker)) ++i;
    if (i == _styles.size()) {
      if (i == kMaxStyles) return kObject;
      _styles.push_back(Style{format, tracker});
    }
    cached = std::uint8_t(kFirstStyle + i);
    return cached;
  }

  // Puts entry of tag at coords, destroying what was there. Everything that allocates comes
  // first: when it throws, the store is as it was and an object entry is still the caller's.
  void Store(const std::vector<int>& coords, std::uint8_t tag, Entry entry) {
    // Nearly every cell of a table built in coordinate order: a one-word key above the last one,
    // appended to a log without an index that has room for it. Checked, encoded and stored in
    // one pass over the coordinates; anything else takes the general way below.
    const std::size_t at = _tags.size();
    if (_words == 1 && _sorted && _index.empty() && at > 0 && at < _keyRoom &&
        at < _entries.capacity() && at < _tags.capacity() && coords.size() == _fields.size()) {
      std::uint64_t word = 0;
      std::uint32_t beyond = 0;  // bits of a negative coordinate or one past its field
      for (std::size_t d = 0; d < _fields.size(); ++d) {
        const std::uint32_t c = std::uint32_t(coords[d]);
        beyond |= c >> _fields[d].width;  // widths stay below 32
        word |= std::uint64_t(c) << _fields[d].shift;
      }
      if (beyond == 0 && _keys[at - 1] < word) {
        _keys[at] = word;
        _entries.push_back(entry);
        _tags.push_back(tag);
        ++_count;
        return;
      }
    }
    Widen(coords);
    std::uint64_t key[kMaxWords];
    Encode(coords, key);
    if (!_sorted || !_tags.empty()) {
      const bool after = _sorted && Less(KeyAt(_tags.size() - 1), key);
      if (!after) {
        const std::size_t at = Position(key);
        if (at != kNowhere) {
          if (_tags[at] == kHole) ++_count;
          if (_tags[at] == kObject) delete _entries[at].cell;
          _entries[at] = entry;
          _tags[at] = tag;
          return;
        }
        if (_index.empty()) BuildIndex(IndexSizeFor(_tags.size() + 1));
        _sorted = false;
      }
    }
    Append(key, tag, entry);
  }

  static int Extract(const std::uint64_t* key, const Field& f) {
    if (f.width == 0) return 0;
    return int((key[f.word] >> f.shift) & ((std::uint64_t(1) << f.width) - 1));
  }

  static int BitsFor(int c) { return c <= 0 ? 0 : std::bit_width(unsigned(c)); }

  const std::uint64_t* KeyAt(std::size_t at) const { return &_keys[at * _words]; }

  bool Equal(const std::uint64_t* a, const std::uint64_t* b) const {
    return _words == 1 ? a[0] == b[0] : std::equal(a, a + _words, b);
  }

  // Key order: the top word first.
  bool Less(const std::uint64_t* a, const std::uint64_t* b) const {
    for (std::size_t w = _words; w-- > 0;) {
      if (a[w] != b[w]) return a[w] < b[w];
    }
    return false;
  }

  bool Fits(const std::vector<int>& coords) const {
    for (std::size_t d = 0; d < _fields.size(); ++d) {
      if (coords[d] < 0 || BitsFor(coords[d]) > _fields[d].width) return false;
    }
    return true;
  }

  void Encode(const std::vector<int>& coords, std::uint64_t* key) const {
    if (_words == 1) {  // built in a register: storing into the key field by field stalls
      std::uint64_t word = 0;
      for (std::size_t d = 0; d < _fields.size(); ++d) word |= std::uint64_t(coords[d]) << _fields[d].shift;
      key[0] = word;
      return;
    }
    std::fill(key, key + _words, 0);
    for (std::size_t d = 0; d < _fields.size(); ++d) {
      if (_fields[d].width > 0) key[_fields[d].word] |= std::uint64_t(coords[d]) << _fields[d].shift;
    }
  }

  // Where key's probe sequence starts, and a tag that tells most other keys from it without
  // reading their keys in the log.
  struct Hash {
    std::size_t home;
    std::uint32_t tag;
  };
  Hash HashOf(const std::uint64_t* key) const {
    std::uint64_t h = 0x243f6a8885a308d3ULL;
    for (std::size_t w = 0; w < _words; ++w) {
      std::uint64_t z = (w == 0 ? key[0] & ~_runMask : key[w]) + h + 0x9e3779b97f4a7c15ULL;
      z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
      z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
      h = z ^ (z >> 31);
    }
    const std::uint64_t run = key[0] & _runMask;
    return Hash{std::size_t(h + run), std::uint32_t(h >> 32) + std::uint32_t(run)};
  }

  // The index slot holding key's position, or the free slot where it would go. The index is
  // never full.
  std::size_t Probe(const std::uint64_t* key, const Hash& hash) const {
    const std::size_t mask = _index.size() - 1;
    for (std::size_t slot = hash.home & mask;; slot = (slot + 1) & mask) {
      const Slot& entry = _index[slot];
      if (entry.at == kFree || (entry.tag == hash.tag && Equal(KeyAt(entry.at), key))) return slot;
    }
  }

  void IndexPosition(std::size_t at) {
    const Hash hash = HashOf(KeyAt(at));
    _index[Probe(KeyAt(at), hash)] = Slot{hash.tag, std::uint32_t(at)};
  }

  // Key's position in the log (its cell may be a hole), or kNowhere.
  std::size_t Position(const std::uint64_t* key) {
    if (_tags.empty()) return kNowhere;
    if (_index.empty()) {
      const std::size_t last = _tags.size() - 1;
      if (Equal(KeyAt(last), key)) return last;  // the cell just stored, looked at most often
      if (++_searches <= kSearches + _tags.size() / 32) return Search(key);
      BuildIndex(IndexSizeFor(_tags.size() + 1));
    }
    const std::uint32_t at = _index[Probe(key, HashOf(key))].at;
    return at == kFree ? kNowhere : at;
  }

  std::size_t Search(const std::uint64_t* key) const {
    std::size_t low = 0, high = _tags.size();
    while (low < high) {
      const std::size_t mid = low + (high - low) / 2;
      if (Less(KeyAt(mid), key)) {
        low = mid + 1;
      } else {
        high = mid;
      }
    }
    return low < _tags.size() && Equal(KeyAt(low), key) ? low : kNowhere;
  }

  static std::size_t IndexSizeFor(std::size_t entries) {
    std::size_t size = 16;
    while (entries * 10 > size * 7) size *= 2;
    return size;
  }

  // A fresh index of every position in the log, of size slots (a power of two).
  void BuildIndex(std::size_t size) {
    std::vector<Slot> index;
    index.reserve(size);
    OmPreferHugePages(index.data(), index.capacity() * sizeof(Slot));
    Refill(index, size);
  }

  // Makes slots, reserved beforehand for size entries (nothing allocates here), the index of
  // every position in the log.
  void Refill(std::vector<Slot>& slots, std::size_t size) {
    slots.assign(size, Slot{});
    _index.swap(slots);
    for (std::size_t at = 0; at < _tags.size(); ++at) IndexPosition(at);
  }

  // Grows an array of the log to room entries, keeping its contents.
  template <typename T>
  static void Regrow(std::vector<T>& array, std::size_t room) {
    std::vector<T> grown;
    grown.reserve(room);
    OmPreferHugePages(grown.data(), grown.capacity() * sizeof(T));
    grown.assign(array.begin(), array.end());
    array.swap(grown);
  }

  void Append(const std::uint64_t* key, std::uint8_t tag, Entry entry) {
    const std::size_t at = _tags.size();
    if (at + 1 >= kFree) throw OMSException("OmPivotTable::Cell -- too many cells", double(at));
    // Everything that allocates comes before anything changes.
    // The arrays grow by half, so that their room is at most half again the log (and 16).
    const std::size_t grown = 16 + at + at / 2;
    if ((at + 1) * _words > _keyRoom) {
      const std::size_t room = grown * _words;
      Keys keys = NewKeys(room);
      std::copy(_keys.get(), _keys.get() + at * _words, keys.get());
      _keys = std::move(keys);
      _keyRoom = room;
    }
    if (at == _entries.capacity()) Regrow(_entries, grown);
    if (at == _tags.capacity()) Regrow(_tags, grown);
    if (!_index.empty() && (at + 1) * 10 > _index.size() * 7) BuildIndex(2 * _index.size());
    if (_words == 1) {  // nearly every table: a store, not a call to copy a run of unknown length
      _keys[at] = key[0];
    } else {
      std::copy(key, key + _words, &_keys[at * _words]);
    }
    _entries.push_back(entry);
    _tags.push_back(tag);
    ++_count;
    if (!_index.empty()) IndexPosition(at);
  }

  // Closes the holes (and destroys the cells whose coordinate on d is in leaves, when d is a
  // dimension), keeping the log's order; the index is rebuilt, and memory given back when the
  // log has shrunk to a quarter. Running out of memory here leaves a consistent store: the new
  // index's slots are allocated first, and the smaller arrays are only attempted.
  void Compact(std::size_t d, const std::vector<bool>& leaves, Visitor visit = nullptr,
               void* context = nullptr) {
    std::vector<Slot> index;
    index.reserve(_index.size());
    std::vector<int> coords(visit != nullptr ? _fields.size() : 0, 0);
    OmPivotTable::CellView view{coords.data(), nullptr, 0.0};
    std::exception_ptr failure;
    std::size_t kept = 0;
    for (std::size_t at = 0; at < _tags.size(); ++at) {
      const std::uint8_t tag = _tags[at];
      if (tag == kHole) continue;
      if (visit != nullptr) {
        const std::uint64_t* key = KeyAt(at);
        for (std::size_t f = 0; f < coords.size(); ++f) coords[f] = Extract(key, _fields[f]);
        view.object = tag == kObject ? _entries[at].cell : nullptr;
        view.number = tag == kObject ? 0.0 : _entries[at].number;
        try {
          visit(context, view);
        } catch (...) {  // the pass goes on without the visitor, so that the store stays whole
          failure = std::current_exception();
          visit = nullptr;
        }
      }
      if (d < _fields.size()) {
        const std::size_t c = std::size_t(Extract(KeyAt(at), _fields[d]));
        if (c < leaves.size() && leaves[c]) {
          if (tag == kObject) delete _entries[at].cell;
          continue;
        }
      }
      std::copy(KeyAt(at), KeyAt(at) + _words, &_keys[kept * _words]);
      _entries[kept] = _entries[at];
      _tags[kept++] = tag;
    }
    _count = kept;
    _entries.resize(kept);
    _tags.resize(kept);
    // The new index is sized for the cells kept (its slots were reserved for all of them, but
    // filling all would touch memory that the shrink below gives back at once).
    if (!_index.empty()) Refill(index, std::min(_index.size(), IndexSizeFor(kept + 1)));
    try {
      if (kept * 4 < _tags.capacity()) {
        Keys keys = NewKeys(kept * _words);
        std::copy(_keys.get(), _keys.get() + kept * _words, keys.get());
        _entries.shrink_to_fit();
        _tags.shrink_to_fit();
        _keys = std::move(keys);
        _keyRoom = kept * _words;
      }
      // Slots in use: a fresh index of that size gives the reserved room back.
      if (!_index.empty() && _index.size() < _index.capacity()) BuildIndex(_index.size());
    } catch (const std::bad_alloc&) {  // the larger arrays serve as well
    }
    if (failure) std::rethrow_exception(failure);
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

  // Assigns fields to words (no field straddles a word) and repacks every stored key where it
  // is; wider fields keep the keys' order.
  void Relayout(const std::vector<int>& widths) {
    std::vector<Field> fields(widths.size());
    int word = 0, used = 0;
    // The fast dimension at bit 0 of word 0, then the others from the last to the first.
    const std::size_t n = widths.size();
    const std::size_t first = _fast < n ? _fast : 0;
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t d = i == 0 ? first : (n - i > first ? n - i : n - i - 1);
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
    const std::size_t length = _tags.size();
    Keys keys = NewKeys(length * words);
    std::vector<int> coords(fields.size(), 0);
    std::vector<Slot> index;
    index.reserve(_index.size());
    _runMask = runMask;
    const std::vector<Field> oldFields = std::exchange(_fields, std::move(fields));
    const std::size_t oldWords = std::exchange(_words, words);
    const Keys oldKeys = std::exchange(_keys, std::move(keys));
    _keyRoom = length * words;
    for (std::size_t at = 0; at < length; ++at) {
      for (std::size_t d = 0; d < oldFields.size() && d < coords.size(); ++d) {
        coords[d] = Extract(&oldKeys[at * oldWords], oldFields[d]);
      }
      Encode(coords, &_keys[at * _words]);
    }
    if (!_index.empty()) Refill(index, _index.size());  // the hashes changed with the keys
  }

  static Keys NewKeys(std::size_t words) {
    Keys keys = std::make_unique_for_overwrite<std::uint64_t[]>(words);
    OmPreferHugePages(keys.get(), words * sizeof(std::uint64_t));
    return keys;
  }

  std::vector<Field> _fields;
  std::size_t _fast = 0;
  std::uint64_t _runMask = 0;
  std::size_t _words = 1;
  Keys _keys;
  std::size_t _keyRoom = 0;  // words allocated in _keys
  std::vector<Entry> _entries;  // the log: one entry per key
  std::vector<std::uint8_t> _tags;  // what each entry holds: kHole, kObject or a style's tag
  std::vector<Style> _styles;  // the plain numbers' styles, kFirstStyle's first
  static constexpr int kStyleCacheBits = 6;
  std::array<std::uint8_t, std::size_t(1) << kStyleCacheBits> _styleCache{};  // tags by format hash
  std::size_t _count = 0;  // cells, the log without its holes
  bool _sorted = true;  // the log's keys ascend
  std::size_t _searches = 0;  // binary searches answered without an index
  std::vector<Slot> _index;  // log positions by key hash; empty while the log is sorted
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

  bool Admits(const Coordinates& coords, int nDims);
};

// ---- iterator ----

OmCellText* OmPivotTable::Iterator::Cell() const {
  return AtEnd() ? nullptr : _table->_my->cells.MakeObject(_slot);
}

const OmCellText* OmPivotTable::Iterator::Read(OmNumber& scratch) const {
  return AtEnd() ? nullptr : _table->_my->cells.Read(_slot, scratch);
}

OmCellText* OmPivotTable::Iterator::Object() const {
  return AtEnd() ? nullptr : _table->_my->cells.ObjectAt(_slot);
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
  const std::size_t at = _my->cells.Find(coords);
  return at == CellStore::kNowhere ? nullptr : _my->cells.MakeObject(at);
}

const OmCellText* OmPivotTable::ReadCell(const Coordinates& coords, OmNumber& scratch) const {
  CheckCoordinates("ReadCell", coords, NDimensions());
  const std::size_t at = _my->cells.Find(coords);
  return at == CellStore::kNowhere ? nullptr : _my->cells.Read(at, scratch);
}

bool OmPivotTable::HasCell(const Coordinates& coords) const {
  CheckCoordinates("HasCell", coords, NDimensions());
  return _my->cells.Find(coords) != CellStore::kNowhere;
}

void OmPivotTable::Cell(const Coordinates& coords, const OmCellText& cell) {
  Cell(coords, cell.Clone());
}

// Checks coords for storing; false when the table is full and has no cell there, so that the
// new one is dropped and the table marked.
bool OmPivotTable::Data::Admits(const Coordinates& coords, int nDims) {
  CheckCoordinates("Cell", coords, nDims);
  for (std::size_t d = 0; d < coords.size(); ++d) {
    if (coords[d] < 0) throw OMSException("OmPivotTable::Cell -- coordinate >= 0", double(d), coords[d]);
  }
  if (maxCells != 0 && cells.Count() >= maxCells && cells.Find(coords) == CellStore::kNowhere) {
    scratched = true;  // over the limit: the table shows what it holds and is marked
    return false;
  }
  return true;
}

void OmPivotTable::Cell(const Coordinates& coords, std::unique_ptr<OmCellText> cell) {
  if (!cell) {
    CheckCoordinates("Cell", coords, NDimensions());
    for (std::size_t d = 0; d < coords.size(); ++d) {
      if (coords[d] < 0) throw OMSException("OmPivotTable::Cell -- coordinate >= 0", double(d), coords[d]);
    }
    _my->cells.Take(coords);
    return;
  }
  if (_my->Admits(coords, NDimensions())) _my->cells.Put(coords, std::move(cell));
}

void OmPivotTable::Number(const Coordinates& coords, double value, std::uint32_t format,
                          icuTracker* tracker) {
  if (_my->Admits(coords, NDimensions())) _my->cells.PutNumber(coords, value, format, tracker);
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
void OmPivotTable::ReadCells(void (*visit)(void*, const CellView&), void* context) const {
  _my->cells.ReadAll(visit, context);
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
  _my->cells.Drop(std::size_t(d), leaves);
}

void OmPivotTable::ReadAndDropCells(int d, const std::vector<int>& leaves,
                                    void (*visit)(void*, const CellView&), void* context) {
  _my->cells.Drop(std::size_t(d), leaves, visit, context);
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

void DropCellsOfLeaves(OmPivotTable& table, int d, const std::vector<int>& leaves) {
  table.DropCells(d, leaves);
}
