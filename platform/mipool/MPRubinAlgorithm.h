// The pooling computation by Rubin's rules that MPFactory hands out: per-term pooled estimates,
// variances, degrees of freedom, diagnostics, intervals and tests, and the joint D1 Wald test.
// The formulas and which degrees of freedom apply when are documented in MPCompAlgorithm.h.
#pragma once

#include <memory>
#include <vector>

#include "platform/mipool/MPCompAlgorithm.h"

class MPRubinAlgorithm final : public MPCompAlgorithm {
public:
  MPRubinAlgorithm();
  ~MPRubinAlgorithm() override;
  MPRubinAlgorithm(const MPRubinAlgorithm& other);
  MPRubinAlgorithm& operator=(const MPRubinAlgorithm& other);

  MCCommon::MCStatus AddImputation(const MPParamContainer& params) override;
  MCCommon::MCStatus Combine(MPParamContainer& params) override;
  MCCommon::MCStatus Diagnostics(std::vector<double>& totalVariance,
                                 std::vector<double>& relativeIncrease,
                                 std::vector<double>& fractionMissingInfo,
                                 std::vector<double>& relativeEfficiency,
                                 std::vector<double>& significance) override;
  MCCommon::MCStatus ConfidenceInterval(double level, std::vector<double>& lower,
                                        std::vector<double>& upper) override;
  MCCommon::MCStatus TestStatistic(std::vector<double>& statistic) override;
  MCCommon::MCStatus DfAndSignificance(const std::vector<double>& nullValues,
                                       std::vector<double>& df,
                                       std::vector<double>& waldStatistic,
                                       std::vector<double>& significance) override;
  MCCommon::MCStatus WaldTest(const std::vector<double>& nullValues,
                              std::vector<double>& statistic, std::vector<double>& df,
                              std::vector<double>& significance,
                              std::vector<double>& relativeIncrease) override;
  int ImputationCount() const override;
  int TermCount() const override;

private:
  struct Data;
  std::unique_ptr<Data> _my;

  MCCommon::MCStatus CheckResultsReady() const;
};
