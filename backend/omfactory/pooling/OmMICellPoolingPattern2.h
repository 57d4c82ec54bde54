// Pools a table whose statistics are addressed by two dimensions, a statistic and a statistic type
// (such as "Statistics" and "Stat Type"): the estimate and standard error by Rubin's rules, and
// averaged statistics.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmStringCell.h"

class OmMICellPoolingPattern2 : public OmMIPattern {
public:
  // A statistic's address: a label path in dimension A and one in dimension B.
  using Address = std::pair<std::string, std::string>;
  struct Labels {
    std::string dimensionA = {};
    std::string dimensionB = {};
    Address estimate = {};
    Address standardError = {};
    std::vector<Address> averaged = {};
  };

  OmMICellPoolingPattern2(const std::string& procedureName, const std::string& templateName);
  ~OmMICellPoolingPattern2() override;

  void SetLabels(const Labels& labels);

  // Template name equal; Pool checks the dimensions.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Rubin pooling of the estimate (diagnostics join dimension A when estimate and standard error
  // share their category in A, else dimension B), then averaging; true when an averaging
  // succeeded.
  bool Pool(OmPivotTable& table, OmOutputTree* state) const override;

private:
  OmStringCell _dimensionA;
  OmStringCell _dimensionB;
  Address _estimate;
  Address _standardError;
  std::vector<Address> _averaged;
};
