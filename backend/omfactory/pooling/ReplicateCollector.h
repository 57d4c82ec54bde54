// Reads, for one statistic's cell of a bootstrapped table, the original sample's value and its
// replicates: the same address with the bootstrap split coordinate set to 1 ... B (bootstrap
// samples) and to B + 1 + j for the jackknife samples j of the cell's jackknife range. Owned by
// BootstrapCellCalculator.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "backend/omfactory/pooling/ReplicateValues.h"
#include "platform/outputmodel/OmPivotTable.h"

class ReplicateCollector {
public:
  // table (the source) is borrowed and must outlive the collector; the boundaries are copied, a
  // short list that callers often build on the spot.
  // splitDim is the table's bootstrap split dimension, sampleCount B its number of bootstrap
  // samples, jackknifeCount J the length of the jackknife list (samples B + 1 ... B + J);
  // jackknifeBoundaries end the ranges of that list (positions 0 ... J; empty: one range of all
  // J). requiredDims are the pattern's required dimensions, which decide the replicate mask.
  // The samples' values are read from values (borrowed; gathered from table for splitDim before
  // the sample cells left it), or, when that is null or for another dimension, from a gathering
  // of the collector's own at the first collection. The original sample's cells are read from
  // the table.
  ReplicateCollector(const OmPivotTable& table, int splitDim, unsigned sampleCount,
                     unsigned jackknifeCount, std::vector<std::uint32_t> jackknifeBoundaries,
                     std::vector<int> requiredDims, const ReplicateValues* values = nullptr);

  // Gathers the values for the statistic at estimate (its bootstrap split coordinate is
  // replaced) and, when stdError is not empty, its standard errors at stdError. False, with
  // every list empty, when the cell at estimate is not a number. Replicates that are missing,
  // not numbers or system-missing are left out, as are those the replicate mask rules out.
  bool Collect(const OmPivotTable::Coordinates& estimate,
               const OmPivotTable::Coordinates& stdError);

  // The replicate standard errors are test statistics (t): turn each into the standard error
  // replicate / t, and the estimate's into estimate / t. A t of 0 or a missing value gives a
  // missing standard error.
  void TestStatisticsToStdErrors();

  double Estimate() const { return _estimate; }
  double EstimateStdError() const { return _estimateStdError; }
  std::vector<double>& Replicates() { return _replicates; }
  const std::vector<double>& Replicates() const { return _replicates; }
  const std::vector<double>& JackknifeValues() const { return _jackknifeValues; }
  const std::vector<double>& ReplicateStdErrors() const { return _replicateStdErrors; }
  // The moments of Replicates() as gathered, when every replicate was open to the statistic (no
  // replicate mask); empty otherwise.
  const std::optional<ReplicateValues::Moments>& ReplicateMoments() const { return _moments; }
  // The statistic's range of the jackknife list, [start, end); jackknife value k belongs to entry
  // start + k. Both 0 when there is no complete range.
  std::uint32_t JackknifeStart() const { return _jackknifeStart; }
  std::uint32_t JackknifeEnd() const { return _jackknifeEnd; }
  // False when the specifications ask for jackknife samples but this statistic has no range
  // whose every sample holds a number (a boundary outside the table, a missing cell).
  bool JackknifeComplete() const { return _jackknifeComplete; }

  // The usable flags of replicates 0 ... B for estimate (empty without required dimensions:
  // every replicate is usable). Replicate k is usable when, across every combination of the
  // required dimensions' categories, its cells exist exactly where the original sample's do and
  // are system-missing exactly where those are. Reused while only the bootstrap split and
  // required coordinates change.
  const std::vector<bool>& ReplicateMask(const OmPivotTable::Coordinates& estimate);

private:
  // The samples' values, gathered now if need be.
  const ReplicateValues& Values();
  // True when replicate k's cells match the original sample's over the required dimensions,
  // from required dimension r on (the earlier ones set in address).
  bool Matches(OmPivotTable::Coordinates& address, std::size_t r, int k) const;
  // Appends the present numbers of samples 1 ... B of row that the mask allows.
  void Gather(const ReplicateValues::Row& row, const std::vector<bool>& mask,
              std::vector<double>& into) const;
  bool SameBlock(const OmPivotTable::Coordinates& estimate) const;
  // Finds the range of the statistic whose samples are row and gathers its values.
  void CollectJackknife(const ReplicateValues::Row& row);

  const OmPivotTable* _table;
  const ReplicateValues* _values;
  std::unique_ptr<ReplicateValues> _ownValues;
  int _splitDim;
  unsigned _sampleCount;
  unsigned _jackknifeCount;
  std::vector<std::uint32_t> _jackknifeBoundaries;
  std::vector<int> _requiredDims;
  std::vector<bool> _mask;
  OmPivotTable::Coordinates _maskAddress;
  bool _maskValid = false;
  double _estimate;
  double _estimateStdError;
  std::vector<double> _replicates;
  std::vector<double> _jackknifeValues;
  std::vector<double> _replicateStdErrors;
  std::optional<ReplicateValues::Moments> _moments;
  std::uint32_t _jackknifeStart = 0;
  std::uint32_t _jackknifeEnd = 0;
  bool _jackknifeComplete = true;
};
