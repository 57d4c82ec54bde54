// Turns one statistic's cell of a bootstrapped table into bootstrap results: collects the
// original and replicate values (ReplicateCollector), computes them (OmBootCalculator) and hands
// them to the result writer. The bootstrap patterns make one per result group they add.
#pragma once

#include <memory>
#include <vector>

#include "backend/omfactory/pooling/BootstrapResultWriter.h"
#include "backend/omfactory/pooling/ReplicateCollector.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmPivotTable.h"

class BootstrapCellCalculator {
public:
  // specs and source (the table whose replicate cells are read) are borrowed and must outlive
  // the calculator; it owns the writer (not null). splitDim is the source's bootstrap split
  // dimension, requiredDims the pattern's required dimensions; values, when not null, the
  // source's sample values gathered beforehand (see ReplicateCollector).
  BootstrapCellCalculator(const SvrBootstrapSpecs& specs, const OmPivotTable& source,
                          std::unique_ptr<BootstrapResultWriter> writer, int splitDim,
                          std::vector<int> requiredDims, const ReplicateValues* values = nullptr);
  BootstrapCellCalculator(const BootstrapCellCalculator&) = delete;
  BootstrapCellCalculator& operator=(const BootstrapCellCalculator&) = delete;
  ~BootstrapCellCalculator();

  // Computes the results of the statistic at estimate (standard error at stdError, which may be
  // empty) and writes them at estimate. Nothing happens when that cell is not a number. With
  // zeroFill, replicates that are missing count as 0.
  void ComputeCell(const OmPivotTable::Coordinates& estimate,
                   const OmPivotTable::Coordinates& stdError, bool zeroFill);

  // The two halves of ComputeCell for a caller that adjusts the values in between or writes
  // elsewhere: Collector().Collect(...), then ComputeCollected at the writer's address.
  ReplicateCollector& Collector();
  void ComputeCollected(const OmPivotTable::Coordinates& target, bool zeroFill);

  BootstrapResultWriter& Writer();

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
