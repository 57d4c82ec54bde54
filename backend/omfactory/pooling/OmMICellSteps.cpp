#include "backend/omfactory/pooling/OmMICellSteps.h"

#include <cmath>
#include <memory>
#include <utility>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/MiOutputSettings.h"
#include "platform/outputmodel/OmNumber.h"

namespace {

std::vector<int> WalkFixed(int imputationDim, const std::vector<int>& statDims) {
  std::vector<int> fixed{imputationDim};
  fixed.insert(fixed.end(), statDims.begin(), statDims.end());
  return fixed;
}

bool DiagnosticsOn() {
  bool pooled = false, observed = false, imputed = false, diagnostics = false;
  MiOutputSettings(pooled, observed, imputed, diagnostics);
  return diagnostics;
}

std::uint32_t WithDecimals(std::uint32_t format, int decimals) {
  return (format & 0x00FFFFFFu) | (std::uint32_t(decimals & 0xFF) << 24);
}

double First(const std::vector<double>& values) {
  return values.empty() ? OmPoolingTools::kSysMiss : values.front();
}

}  // namespace

OmMICellSteps::OmMICellSteps(OmPivotTable& table, int imputationDim, std::vector<int> statDims,
                             int original, int pooled)
    : _table(table),
      _imputationDim(imputationDim),
      _statDims(std::move(statDims)),
      _original(original),
      _pooled(pooled),
      _m(table.Size(imputationDim) - 1 - (original >= 0 ? 1 : 0)),
      _walk(table, WalkFixed(imputationDim, _statDims)) {}

OmMICellSteps::Address OmMICellSteps::Find(const std::vector<std::string>& paths) const {
  if (paths.size() != _statDims.size()) return {};
  Address address;
  for (std::size_t j = 0; j < paths.size(); ++j) {
    if (paths[j].empty()) return {};
    const int category =
        OmPoolingTools::FindMatchingCategory(paths[j], &_table.Dimension(_statDims[j]).Root());
    if (category < 0) return {};
    address.push_back(category);
  }
  return address;
}

void OmMICellSteps::At(OmPivotTable::Coordinates& coords, const Address& statistic, int i) const {
  coords[std::size_t(_imputationDim)] = i;
  for (std::size_t j = 0; j < _statDims.size(); ++j) coords[std::size_t(_statDims[j])] = statistic[j];
}

const OmNumber* OmMICellSteps::NumberAt(const OmPivotTable::Coordinates& coords,
                                        OmNumber& scratch) const {
  return OmPoolingTools::ReadNumber(_table, coords, scratch);
}

OmCellText* OmMICellSteps::Put(const OmPivotTable::Coordinates& coords, double value,
                               std::uint32_t format) {
  _table.Cell(coords, std::make_unique<OmNumber>(value, format));
  return _table.Cell(coords);
}

bool OmMICellSteps::Rubin(const RubinAddresses& a, const DiagnosticPlace& diagnosticPlace) {
  if (a.estimate.empty() || _walk.Count() == 0) return false;
  const bool hasSE = !a.standardError.empty();
  const bool diagnostics = DiagnosticsOn();
  const int lastImputation = _table.Size(_imputationDim) - 1;  // the pooled category

  int lower = -1, upper = -1;
  double level = 0.95;
  bool hasInterval = false;
  if (!a.interval.empty() && _statDims.size() == 1) {
    int second = -1, first = -1;
    hasInterval = OmPoolingTools::FindCI(_table.Dimension(_statDims[0]), a.interval, second, first, level);
    // The group's first category holds the lower bound, its second the upper.
    lower = first;
    upper = second;
  }
  Address diagnosticAt[3];
  bool diagnosticsPlaced = false;

  MPParamContainer params;
  OmPivotTable::Coordinates coords;
  // Each imputation's numbers are read without making cell objects: the estimate's stays in use
  // while the others are read.
  OmNumber estimateScratch(0.0), scratch(0.0);
  bool pooledAny = false;
  for (std::uint64_t p = 0; p < _walk.Count(); ++p) {
    _walk.Position(p, coords);
    std::unique_ptr<MPCompAlgorithm> computation = MPFactory::CreateMPCompAlgorithm();
    std::uint32_t estimateFormat = OmNumber::kDefaultFormat, seFormat = OmNumber::kDefaultFormat;
    std::uint32_t testFormat = OmNumber::kDefaultFormat, dfFormat = OmNumber::kDefaultFormat;
    std::uint32_t sigFormat = OmNumber::kDefaultFormat;
    long error = 0;
    int counted = 0;
    // Each imputation's df cell states the complete-data df of its test; their mean lets the
    // computation use the small-sample df instead of treating the data as endless.
    double dfSum = 0.0;
    int dfCount = 0;
    // A table that shows t but no standard error (a one-sample t test) still gives each
    // imputation's standard error as estimate / t, when every t allows it.
    const bool fromTest = !hasSE && DerivableStdErrors(coords, a);
    const bool withSE = hasSE || fromTest;
    params.SetCount(withSE ? MPParamContainer::kWithStandardErrors : MPParamContainer::kEstimatesOnly);
    for (int i = 0; i < lastImputation && error == 0; ++i) {
      if (!IsImputation(i)) continue;
      At(coords, a.estimate, i);
      const OmNumber* estimate = NumberAt(coords, estimateScratch);
      if (!estimate) continue;
      params.Estimates().clear();
      params.StandardErrors().clear();
      params.Estimates().push_back(estimate->Value());
      estimateFormat = estimate->Format();
      if (hasSE) {
        At(coords, a.standardError, i);
        if (const OmNumber* se = NumberAt(coords, scratch)) {
          params.StandardErrors().push_back(se->Value());
          seFormat = se->Format();
        }
      } else if (fromTest) {
        At(coords, a.test, i);
        params.StandardErrors().push_back(std::fabs(estimate->Value() / NumberAt(coords, scratch)->Value()));
      }
      const std::pair<const Address*, std::uint32_t*> remembered[] = {
          {&a.df, &dfFormat}, {&a.test, &testFormat}, {&a.significance, &sigFormat}};
      for (const auto& [address, format] : remembered) {
        if (address->empty()) continue;
        At(coords, *address, i);
        if (const OmNumber* cell = NumberAt(coords, scratch)) {
          *format = cell->Format();
          if (address == &a.df && std::isfinite(cell->Value()) && cell->Value() > 0.0) {
            dfSum += cell->Value();
            ++dfCount;
          }
        }
      }
      const MCCommon::MCStatus added = computation->AddImputation(params);
      if (!added.IsOK()) error = added.GetErrorCode();
      ++counted;
    }
    if (counted == 0) continue;
    params.SetCompleteDataDf(dfCount > 0 ? dfSum / dfCount : 0.0);
    if (error == 0) {
      const MCCommon::MCStatus combined = computation->Combine(params);
      if (!combined.IsOK()) error = combined.GetErrorCode();
    }
    if (error != 0) {
      At(coords, a.estimate, _pooled);
      OmPoolingTools::CompErrorFootnote(_table, coords, error);
      continue;
    }
    At(coords, a.estimate, _pooled);
    Put(coords, First(params.Estimates()), estimateFormat);
    if (hasSE && !params.PooledStandardErrors().empty()) {  // a derived one has no cell
      At(coords, a.standardError, _pooled);
      Put(coords, params.PooledStandardErrors().front(), seFormat);
    }
    if (diagnostics) {
      if (!diagnosticsPlaced) {
        diagnosticAt[0] = diagnosticPlace("Fraction Missing Info.");
        diagnosticAt[1] = diagnosticPlace("Relative Increase Variance");
        diagnosticAt[2] = diagnosticPlace("Relative Efficiency");
        diagnosticsPlaced = true;
      }
      std::vector<double> total, increase, fraction, efficiency, significance;
      computation->Diagnostics(total, increase, fraction, efficiency, significance);
      const double values[3] = {First(fraction), First(increase), First(efficiency)};
      for (int d = 0; d < 3; ++d) {
        if (diagnosticAt[d].empty()) continue;
        At(coords, diagnosticAt[d], _pooled);
        Put(coords, values[d], kDiagnosticFormat);
      }
    }
    if (!a.test.empty() && withSE) {
      std::vector<double> statistic;
      if (computation->TestStatistic(statistic).IsOK()) {
        At(coords, a.test, _pooled);
        Put(coords, First(statistic), testFormat);
      }
    }
    if (!a.df.empty() || !a.significance.empty()) {
      std::vector<double> df, wald, significance;
      if (computation->DfAndSignificance({0.0}, df, wald, significance).IsOK()) {
        if (!a.df.empty() && !df.empty()) {
          At(coords, a.df, _pooled);
          Put(coords, df.front(), dfFormat);
        }
        if (!a.significance.empty() && !significance.empty()) {
          At(coords, a.significance, _pooled);
          OmCellText* cell = Put(coords, significance.front(), sigFormat);
          if (cell && significance.front() == OmPoolingTools::kSysMiss &&
              First(params.BetweenVariances()) == 0.0) {
            OmPoolingTools::FootnoteCell("No variance among imputations.", _table, *cell);
          }
        }
      }
    }
    if (hasInterval) {
      std::vector<double> low, high;
      computation->ConfidenceInterval(level, low, high);
      if (lower >= 0) {
        At(coords, {lower}, _pooled);
        Put(coords, First(low), estimateFormat);
      }
      if (upper >= 0) {
        At(coords, {upper}, _pooled);
        Put(coords, First(high), estimateFormat);
      }
    }
    pooledAny = true;
  }
  return pooledAny;
}

bool OmMICellSteps::DerivableStdErrors(OmPivotTable::Coordinates& coords,
                                       const RubinAddresses& a) const {
  if (a.test.empty()) return false;
  const int lastImputation = _table.Size(_imputationDim) - 1;
  OmNumber estimateScratch(0.0), scratch(0.0);
  bool any = false;
  for (int i = 0; i < lastImputation; ++i) {
    if (!IsImputation(i)) continue;
    At(coords, a.estimate, i);
    const OmNumber* estimate = NumberAt(coords, estimateScratch);
    if (!estimate) continue;
    At(coords, a.test, i);
    const OmNumber* t = NumberAt(coords, scratch);
    if (!t || t->IsSysMiss() || !std::isfinite(t->Value()) || t->Value() == 0.0 ||
        estimate->IsSysMiss()) {
      return false;
    }
    any = true;
  }
  return any;
}

bool OmMICellSteps::Average(const Address& statistic) {
  if (statistic.empty() || _m < 1) return false;
  const int lastImputation = _table.Size(_imputationDim) - 1;
  OmPivotTable::Coordinates coords;
  OmNumber scratch(0.0);
  bool wrote = false;
  for (std::uint64_t p = 0; p < _walk.Count(); ++p) {
    _walk.Position(p, coords);
    double sum = 0.0;
    int found = 0;
    std::uint32_t format = 0;
    for (int i = 0; i < lastImputation; ++i) {
      if (!IsImputation(i)) continue;
      At(coords, statistic, i);
      const OmNumber* cell = NumberAt(coords, scratch);
      if (!cell || cell->IsSysMiss()) continue;
      sum += cell->Value();
      format = cell->Format();
      ++found;
    }
    double value = OmPoolingTools::kSysMiss;
    if (found > 0) {
      value = sum / double(_m);
    } else {
      format = 0;
    }
    if (value != std::floor(value) && OmNumber::Decimals(format) == 0) format = WithDecimals(format, 1);
    At(coords, statistic, _pooled);
    if (!Put(coords, value, format)) break;
    wrote = true;
  }
  return wrote;
}
