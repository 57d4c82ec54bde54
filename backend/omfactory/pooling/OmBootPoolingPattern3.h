// Bootstrap results in a table of their own: for each named estimate of a table (coefficients,
// mean differences, measures), a table "Bootstrap for ^1" with the estimate's values and their
// bias, standard error, significance and interval, placed right after the source table.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "backend/omfactory/pooling/OmBootPattern.h"

class OmBootPoolingPattern3 : public OmBootPattern {
public:
  // (estimate label, second label): the second is empty, the estimate's standard error label, or
  // kTestStatistic.
  using Statistic = std::pair<std::string, std::string>;
  // Second label naming a test statistic (estimate / standard error) in place of a standard
  // error.
  static constexpr const char* kTestStatistic = "t";
  // The template name and the table ID offset of the tables made here.
  static constexpr const char* kTemplateName = "Bootstrap";
  static constexpr long kTableIdOffset = 500000;

  OmBootPoolingPattern3(const std::string& procedureName, const std::string& templateName);

  // Also: the statistics dimension is present.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Makes one bootstrap table per estimate and places them after table in list, in the order of
  // the estimates. True when at least one was made.
  bool PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list, const SvrBootstrapSpecs* specs,
                const ReplicateValues* values) const override;

  void SetStatisticsDimension(const std::string& label);
  void AddStatistic(const std::string& estimate, const std::string& second = std::string());

  const OmStringCell& StatisticsDimension() const { return _statisticsDimension; }
  const OmStringCell& GroupLabel() const { return _groupLabel; }
  const std::vector<Statistic>& Statistics() const { return _statistics; }

private:
  OmStringCell _statisticsDimension;
  OmStringCell _groupLabel;
  std::vector<Statistic> _statistics;
};
