// The message streams that the benchmarks replay, written with OmStreamWriter and kept in memory
// as stream-file bytes: one procedure whose one pivot table holds a chosen number of numeric
// cells, laid out as a procedure would send it.
#pragma once

#include <cstdint>
#include <vector>

class OmBenchStreams {
public:
  // Rows: variables, then groups within each variable; columns: the statistics, the cell
  // dimension. Every combination holds one number.
  struct TableShape {
    int variables = 0;
    int groups = 0;
    int statistics = 0;
    std::int64_t Cells() const { return std::int64_t(variables) * groups * statistics; }
  };

  struct TableOptions {
    // The procedure's settings ask for fast tables.
    bool fastTables = false;
    // Every tenth row's first cell carries one of three footnotes (deduplicated by the table),
    // the group dimension is marked for sorting, and an empty heading is left to be pruned.
    bool decorated = false;
  };

  // 100 groups and 10 statistics per variable; cells must be a multiple of 1,000.
  static TableShape ShapeFor(std::int64_t cells);

  // The whole stream file: byte-order probe, the procedure with its heading and table, the end
  // of the procedure. The procedure is named "Descriptives", the table's subtype is
  // "Descriptive Statistics".
  static std::vector<std::uint8_t> NumericTable(const TableShape& shape,
                                                const TableOptions& options);
};
