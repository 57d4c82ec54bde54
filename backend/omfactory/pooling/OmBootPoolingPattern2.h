// Bootstrap results beside a table's "Statistic" column: a group "Bootstrap" in a second
// statistics dimension (such as "Stat Type") holds, for each named statistic (Mean, Std.
// Deviation, N...), its bias, standard error and confidence interval. Descriptive tables.
#pragma once

#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmBootPattern.h"

class OmBootPoolingPattern2 : public OmBootPattern {
public:
  OmBootPoolingPattern2(const std::string& procedureName, const std::string& templateName);

  // Also: the statistics dimension is present.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Adds the "Bootstrap" group to the bootstrap dimension (adding that dimension when absent)
  // and fills it for every named statistic. False.
  bool PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list, const SvrBootstrapSpecs* specs,
                const ReplicateValues* values) const override;

  void SetStatisticsDimension(const std::string& label);
  void SetBootstrapDimension(const std::string& label);
  void AddStatistic(const std::string& label);

  const OmStringCell& StatisticsDimension() const { return _statisticsDimension; }
  const OmStringCell& BootstrapDimension() const { return _bootstrapDimension; }
  const OmStringCell& GroupLabel() const { return _groupLabel; }
  // The category of the bootstrap dimension that holds the statistics' own values.
  const std::string& StatisticCategory() const { return _statisticCategory; }
  const std::vector<std::string>& Statistics() const { return _statistics; }

private:
  OmStringCell _statisticsDimension;
  OmStringCell _bootstrapDimension;
  OmStringCell _groupLabel;
  std::string _statisticCategory = "Statistic";
  std::vector<std::string> _statistics;
};
