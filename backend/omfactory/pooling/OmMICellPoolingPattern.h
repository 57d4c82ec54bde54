// Pools a table whose statistics are the categories of one statistics dimension: an estimate and its
// standard error by Rubin's rules (alone, or with test statistic, degrees of freedom, significance
// and interval), and averaged statistics such as counts. Most registry rows are of this kind.
#pragma once

#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmStringCell.h"

class OmMICellPoolingPattern : public OmMIPattern {
public:
  // The full form; any label but the estimate may be empty.
  struct Full {
    std::string estimate = {};
    std::string standardError = {};
    std::string test = {};
    std::string df = {};
    std::string significance = {};
    std::string interval = {};  // the interval group's label with its "^1" placeholder
  };
  // What a registry row sets. Category labels are "#"-separated label paths.
  struct Labels {
    std::string statistics = {};         // the statistics dimension's label
    std::string excluded = {};           // a dimension whose presence rules the table out
    std::vector<std::string> pair = {};  // estimate and standard error, or empty
    Full full = {};
    std::vector<std::string> averaged = {};
  };

  OmMICellPoolingPattern(const std::string& procedureName, const std::string& templateName);
  ~OmMICellPoolingPattern() override;

  void SetLabels(const Labels& labels);

  // Template name equal, no dimension labelled with the excluded label, a statistics dimension
  // and an imputation dimension.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Rubin pooling of the pair form (result ignored), then of the full form, then averaging of
  // each averaged statistic; see OmMICellSteps.
  bool Pool(OmPivotTable& table, OmOutputTree* state) const override;

private:
  OmStringCell _statistics;
  OmStringCell _excluded;
  std::vector<std::string> _pair;
  Full _full;
  std::vector<std::string> _averaged;
};
