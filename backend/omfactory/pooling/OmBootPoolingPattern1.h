// Bootstrap results as new groups of the table's own statistics dimension: one group per named
// estimate ("Bootstrap for Percent", or "Bootstrap"), holding the estimate's bias, standard
// error, significance and confidence interval beside it. Frequencies, correlations, contrasts...
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "backend/omfactory/pooling/OmBootPattern.h"

class OmBootPoolingPattern1 : public OmBootPattern {
public:
  // (estimate label, second label): the second is empty, the estimate's standard error label, or
  // kZeroFill.
  using Statistic = std::pair<std::string, std::string>;
  // Second label that counts missing replicates of the estimate as 0 (a percentage of a value
  // that a sample did not draw).
  static constexpr const char* kZeroFill = " zero fill";

  OmBootPoolingPattern1(const std::string& procedureName, const std::string& templateName);

  // Also: the excluded dimension, when named, is absent.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Adds one result group per estimate and fills it for every position of the table. False.
  bool PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list, const SvrBootstrapSpecs* specs,
                const ReplicateValues* values) const override;

  void SetStatisticsDimension(const std::string& label);
  void SetExcludedDimension(const std::string& label);
  // "Bootstrap for ^1" (^1 is the estimate label) or "Bootstrap".
  void SetGroupLabel(const std::string& labelTemplate);
  void AddStatistic(const std::string& estimate, const std::string& second = std::string());
  // Only the significance is written (Sig. (2-tailed) in the group, no bias or interval).
  void SetSignificanceOnly(bool on);

  const OmStringCell& StatisticsDimension() const { return _statisticsDimension; }
  const OmStringCell& ExcludedDimension() const { return _excludedDimension; }
  const std::string& GroupLabel() const { return _groupLabel; }
  const std::vector<Statistic>& Statistics() const { return _statistics; }
  bool SignificanceOnly() const { return _significanceOnly; }

private:
  OmStringCell _statisticsDimension;
  OmStringCell _excludedDimension;
  std::string _groupLabel = "Bootstrap for ^1";
  std::vector<Statistic> _statistics;
  bool _significanceOnly = false;
};
