// The pooling steps that the cell-wise imputation patterns share, on one table: Rubin pooling of an
// estimate with its standard error (and test statistic, degrees of freedom, significance and
// interval), and averaging of a statistic over the imputations, for every combination of the
// categories of the dimensions that are neither the imputation nor a statistics dimension.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/outputmodel/OmPivotTable.h"

class OmNumber;

class OmMICellSteps {
public:
  // A statistic's place: its category in each statistics dimension, in their order. Empty when
  // the statistic is not configured or not found.
  using Address = std::vector<int>;

  struct RubinAddresses {
    Address estimate;
    Address standardError;
    Address test;
    Address df;
    Address significance;
    // The label (pattern text) of the confidence-interval group of the first statistics
    // dimension; empty for none.
    std::string interval;
  };
  // The address of a diagnostic's category, found or added, given the diagnostic's label.
  using DiagnosticPlace = std::function<Address(const std::string& label)>;

  // Format of the diagnostic values: three decimals.
  static constexpr std::uint32_t kDiagnosticFormat = 0x3050028;

  // statDims: one or two dimensions; original: the original-data category or -1; pooled: the
  // pooled category, the imputation dimension's last.
  OmMICellSteps(OmPivotTable& table, int imputationDim, std::vector<int> statDims, int original,
                int pooled);

  // The address of one label path per statistics dimension; empty when a path is empty or not
  // found.
  Address Find(const std::vector<std::string>& paths) const;
  // m: the imputation categories other than the original data and the pooled category.
  int NImputations() const { return _m; }

  // Pools the estimate at each combination; false when there is no estimate or no combination
  // was pooled. diagnosticPlace is called only when diagnostics are on.
  bool Rubin(const RubinAddresses& addresses, const DiagnosticPlace& diagnosticPlace);
  // Averages the statistic over the imputations (dividing by m); false when there is no such
  // statistic, no imputation, or nothing was written.
  bool Average(const Address& statistic);

  // True when every imputation with an estimate at this combination (coords: the walk's
  // position) has a usable t (a number, not missing, not 0), so that estimate / t is its
  // standard error. coords is used as scratch.
  bool DerivableStdErrors(OmPivotTable::Coordinates& coords, const RubinAddresses& a) const;
  // The number cell at coords, or null.
  const OmNumber* NumberAt(const OmPivotTable::Coordinates& coords, OmNumber& scratch) const;
  // Stores a number cell; the stored cell, or null when the table refused it.
  OmCellText* Put(const OmPivotTable::Coordinates& coords, double value, std::uint32_t format);

private:
  // coords with the statistic's categories and imputation category i set.
  void At(OmPivotTable::Coordinates& coords, const Address& statistic, int i) const;
  bool IsImputation(int i) const { return i != _original && i != _pooled; }

  OmPivotTable& _table;
  int _imputationDim;
  std::vector<int> _statDims;
  int _original;
  int _pooled;
  int _m;
  SliceIndex _walk;
};
