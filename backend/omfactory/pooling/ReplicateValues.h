// The sample cells of a bootstrapped table (bootstrap split coordinates 1 and up), read in one
// pass over the table's cells and filed by statistic: one row per statistic address, one entry per
// split coordinate. Pooling then reads a statistic's B values from one array instead of looking up
// B cells in a table of (B + 1) times its size. The bootstrap pooler gathers once per table before
// any pattern writes results; a replicate collector without one gathers its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/outputmodel/OmPivotTable.h"

class ReplicateValues {
public:
  // What a sample's cell held when it was gathered.
  enum class Held : std::uint8_t {
    kNothing,  // no cell
    kText,     // a cell that is not a number
    kNumber,   // a number (its value may be the system-missing value)
  };

  // One statistic's samples, indexed by split coordinate (entry 0, the original sample, is
  // never gathered: it stays in the table).
  struct Row {
    const double* values = nullptr;
    const Held* held = nullptr;
    std::uint32_t index = 0;
  };

  // The running mean and sum of squared deviations of a row's numbers (the system-missing value
  // left out) among samples 1 ... last, taken in sample order: what accumulating them one by one
  // in MCBSStdErrorBias gives, to the last bit.
  struct Moments {
    std::size_t count = 0;
    double mean = 0.0;
    double sumSquares = 0.0;
  };

  // Reads every cell of table whose coordinate on splitDim is above 0. A splitDim outside the
  // table is an OMSException.
  ReplicateValues(const OmPivotTable& table, int splitDim);
  // The same, and drops from table the cells whose coordinate on splitDim is in drop, in the
  // same pass (OmPivotTable::ReadAndDropCells).
  ReplicateValues(OmPivotTable& table, int splitDim, const std::vector<int>& drop);
  ReplicateValues(const ReplicateValues&) = delete;
  ReplicateValues& operator=(const ReplicateValues&) = delete;

  int SplitDim() const { return _splitDim; }
  // Entries per row: the split dimension's coordinate range when gathered (more when a cell lay
  // beyond it).
  std::size_t Width() const { return _width; }

  // The row of the statistic at address (its split coordinate is ignored); a row of nulls when
  // no sample cell had that address. Dimensions added to the table since (beyond the gathered
  // count) hold every gathered cell at coordinate 0. Valid until the object goes.
  Row Find(const OmPivotTable::Coordinates& address) const;

  // What sample k (0 < k < Width()) of the statistic at address held; *value is its number.
  Held At(const OmPivotTable::Coordinates& address, int k, double* value) const;

  // The moments of row (found here, not null) over samples 1 ... last (at most Width() - 1).
  // Each step of an accumulation waits for the division of the step before; four rows
  // accumulated side by side overlap their divisions, so the row and the three after it (the
  // statistics pooled next, as a rule) are done at once and kept.
  const Moments& MomentsOf(const Row& row, std::size_t last) const;

private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  // Checks the split dimension and sizes the arrays for table's cells.
  void Start(const OmPivotTable& table);
  // Files one cell of the table.
  void Add(const OmPivotTable::CellView& cell);
  // Makes every row width entries long (more than now), keeping the entries.
  void Widen(std::size_t width);
  // Hash and comparison of the gathered dimensions of coords, the split coordinate left out.
  std::uint64_t HashOf(const int* coords) const;
  bool SameKey(std::uint32_t row, const int* coords) const;
  // The row of coords, or kNone.
  std::uint32_t Lookup(const int* coords, std::uint64_t hash) const;
  // Adds a row for coords (not there yet).
  std::uint32_t AddRow(const int* coords, std::uint64_t hash);
  // Puts row into the index at the first free slot of its probe sequence.
  void Place(std::uint32_t row);
  void Reindex(std::size_t slots);

  int _splitDim;
  std::size_t _dimensions = 0;  // the table's dimension count when gathered
  std::size_t _width = 0;
  std::uint32_t _rows = 0;
  std::uint32_t _lastRow = kNone;  // the row of the cell filed last
  std::vector<int> _keys;             // row r's coordinates, split one left out, at r * (n - 1)
  std::vector<std::uint64_t> _hashes; // row r's key's hash
  std::vector<std::uint32_t> _index;  // open addressing (linear probing) over row numbers
  std::vector<double> _values;        // row r's entries at r * _width
  std::vector<Held> _held;
  // Rows' moments over samples 1 ... _momentsLast, valid where _momentsReady is set.
  mutable std::vector<Moments> _moments;
  mutable std::vector<bool> _momentsReady;
  mutable std::size_t _momentsLast = 0;
};
