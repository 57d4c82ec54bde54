#include "backend/omfactory/pooling/OmMICellPoolingPattern2.h"

#include "backend/omfactory/pooling/OmMICellSteps.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/outputmodel/OmPivotTable.h"

OmMICellPoolingPattern2::OmMICellPoolingPattern2(const std::string& procedureName,
                                                 const std::string& templateName)
    : OmMIPattern(procedureName, templateName), _dimensionA("", true), _dimensionB("", true) {}

OmMICellPoolingPattern2::~OmMICellPoolingPattern2() = default;

void OmMICellPoolingPattern2::SetLabels(const Labels& labels) {
  _dimensionA = OmStringCell(labels.dimensionA, true);
  _dimensionB = OmStringCell(labels.dimensionB, true);
  _estimate = labels.estimate;
  _standardError = labels.standardError;
  _averaged = labels.averaged;
}

bool OmMICellPoolingPattern2::MatchesTable(const OmPivotTable& table) const {
  return TemplateMatches(table);
}

bool OmMICellPoolingPattern2::Pool(OmPivotTable& table, OmOutputTree*) const {
  const int imputationDim = OmPoolingTools::FindImputationDim(table);
  const int dimA = OmPoolingTools::FindDim(table, _dimensionA);
  const int dimB = OmPoolingTools::FindDim(table, _dimensionB);
  if (imputationDim < 0 || dimA < 0 || dimB < 0) return false;
  const int original = OmPoolingTools::FindOriginalDataImputation(table, imputationDim);
  const int pooled = OmPoolingTools::MakePooledCategory(table, imputationDim);
  OmMICellSteps steps(table, imputationDim, {dimA, dimB}, original, pooled);

  if (!_estimate.first.empty()) {
    OmMICellSteps::RubinAddresses addresses;
    addresses.estimate = steps.Find({_estimate.first, _estimate.second});
    addresses.standardError = steps.Find({_standardError.first, _standardError.second});
    const OmMICellSteps::Address estimate = addresses.estimate;
    const OmMICellSteps::Address se = addresses.standardError;
    // Diagnostics become statistics beside the estimate: of A when estimate and standard error
    // differ only in B ("Mean" / "Statistic" and "Mean" / "Std. Error"), else of B.
    auto place = [&table, dimA, dimB, estimate, se](const std::string& label) -> OmMICellSteps::Address {
      if (estimate.empty()) return {};
      if (!se.empty() && se[0] == estimate[0]) {
        return {OmPoolingTools::AddCategory(table, dimA, label), estimate[1]};
      }
      return {estimate[0], OmPoolingTools::AddCategory(table, dimB, label)};
    };
    steps.Rubin(addresses, place);
  }
  bool averagedAny = false;
  for (const Address& statistic : _averaged) {
    if (steps.Average(steps.Find({statistic.first, statistic.second}))) averagedAny = true;
  }
  return averagedAny;
}
