// Pools a table of coefficients that have no standard errors by averaging every cell over the
// imputations (the discriminant function tables).
#pragma once

#include <string>

#include "backend/omfactory/pooling/OmMIPattern.h"

class OmMICellPoolingPattern0 : public OmMIPattern {
public:
  OmMICellPoolingPattern0(const std::string& procedureName, const std::string& templateName);

  // Template name equal and an imputation dimension.
  bool MatchesTable(const OmPivotTable& table) const override;
  // For every combination of the other dimensions' categories, the mean of the imputations'
  // number cells (divided by the imputations visited) goes to the "Pooled" category.
  bool Pool(OmPivotTable& table, OmOutputTree* state) const override;
};
