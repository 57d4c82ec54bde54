#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "platform/mipool/MPCompAlgorithm.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/PoolingErrors.h"

namespace {

constexpr double kSysmis = -1.7976931348623157e308;
constexpr double kTight = 1e-9; // estimates and variances
constexpr double kLoose = 1e-6; // degrees of freedom, significances, intervals

struct Imputation {
  std::vector<double> estimates;
  std::vector<double> standardErrors;
  std::vector<double> covariances; // row-major k x k, optional
};

void ExpectRelNear(double actual, double expected, double relative) {
  EXPECT_NEAR(actual, expected, relative * std::fabs(expected)) << "expected " << expected;
}

// Feeds the imputations as the pooling patterns do: one container, emptied and refilled before
// each imputation, then combined.
std::unique_ptr<MPCompAlgorithm> Pool(const std::vector<Imputation>& imputations,
                                      MPParamContainer& params, double completeDf = 0.0) {
  std::unique_ptr<MPCompAlgorithm> algorithm = MPFactory::CreateMPCompAlgorithm();
  for (const Imputation& imputation : imputations) {
    params.Estimates() = imputation.estimates;
    params.StandardErrors() = imputation.standardErrors;
    params.Covariances() = imputation.covariances;
    EXPECT_EQ(algorithm->AddImputation(params).GetErrorCode(), 0);
  }
  params.SetCompleteDataDf(completeDf);
  EXPECT_EQ(algorithm->Combine(params).GetErrorCode(), 0);
  return algorithm;
}

// Every result operation of a combined algorithm, each with its status: per-term tests and the
// joint test against `nulls`, intervals at `level`, diagnostics and the test statistic.
struct Results {
  long dfStatus, intervalStatus, diagnosticsStatus, statisticStatus, waldStatus;
  std::vector<double> df, wald, p, lower, upper, t, r, fmi, re, sig, statistic;
  std::vector<double> d1, d1Df, d1P, riv;
};

Results RunAll(MPCompAlgorithm& algorithm, const std::vector<double>& nulls = {0.0},
               double level = 0.95) {
  Results x;
  x.dfStatus = algorithm.DfAndSignificance(nulls, x.df, x.wald, x.p).GetErrorCode();
  x.intervalStatus = algorithm.ConfidenceInterval(level, x.lower, x.upper).GetErrorCode();
  x.diagnosticsStatus = algorithm.Diagnostics(x.t, x.r, x.fmi, x.re, x.sig).GetErrorCode();
  x.statisticStatus = algorithm.TestStatistic(x.statistic).GetErrorCode();
  x.waldStatus = algorithm.WaldTest(nulls, x.d1, x.d1Df, x.d1P, x.riv).GetErrorCode();
  return x;
}

// --- One estimate: five imputations, reference values from R 4.2.2, mice 3.15.0
// pool.scalar(Q, U = se^2) and pool.scalar(Q, U, n = 30, k = 3); t, p and intervals from R's pt
// and qt with pool.scalar's df and t.
TEST(MPRubinAlgorithm, ScalarMatchesRubinAndBarnardRubin) {
  const std::vector<Imputation> imputations = {{{1.25}, {0.5}, {}}, {{0.875}, {0.45}, {}},
      {{1.5}, {0.55}, {}}, {{1.0625}, {0.48}, {}}, {{1.375}, {0.52}, {}}};
  const struct {
    const char* what;
    double completeDf, df, fmi, p, lower95, upper95, lower90, upper90, relativeEfficiency;
  } cases[] = {
      {"no complete-data df", 0.0, 77.130194017625357, 0.24700412179364492,
       0.036690861783279544, 0.07695240824059324, 2.3480475917594066, 0.26306446011697548,
       2.1619355398830242, 0.95292473265502065},
      {"complete-data df 27", 27.0, 15.540187585670495, 0.31103652730936215,
       0.049893124055631927, 0.00064068528488436804, 2.4243593147151152, 0.21504254504816978,
       2.2099574549518302, 0.94143581470208093},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MPParamContainer params;
    std::unique_ptr<MPCompAlgorithm> algorithm = Pool(imputations, params, c.completeDf);
    ExpectRelNear(params.Estimates().at(0), 1.2124999999999999, kTight);
    ExpectRelNear(params.WithinVariances().at(0), 0.25115999999999999, kTight);
    ExpectRelNear(params.BetweenVariances().at(0), 0.061718750000000003, kTight);
    ExpectRelNear(params.TotalVariances().at(0), 0.32522249999999997, kTight);
    ExpectRelNear(params.PooledStandardErrors().at(0), std::sqrt(0.32522249999999997), kTight);

    const Results x = RunAll(*algorithm);
    ASSERT_EQ(x.dfStatus + x.intervalStatus + x.diagnosticsStatus + x.statisticStatus, 0);
    ExpectRelNear(x.r.at(0), 0.29488174868609651, kTight);
    ExpectRelNear(x.fmi.at(0), c.fmi, kLoose);
    ExpectRelNear(x.re.at(0), c.relativeEfficiency, kLoose);
    ExpectRelNear(x.sig.at(0), c.p, kLoose);
    ExpectRelNear(x.statistic.at(0), 2.1261380279396929, kTight);
    ExpectRelNear(x.df.at(0), c.df, kLoose);
    ExpectRelNear(x.wald.at(0), 2.1261380279396929 * 2.1261380279396929, kTight);
    ExpectRelNear(x.p.at(0), c.p, kLoose);
    ExpectRelNear(x.lower.at(0), c.lower95, kLoose);
    ExpectRelNear(x.upper.at(0), c.upper95, kLoose);
    const Results at90 = RunAll(*algorithm, {0.0}, 0.9);
    ASSERT_EQ(at90.intervalStatus, 0);
    ExpectRelNear(at90.lower.at(0), c.lower90, kLoose);
    ExpectRelNear(at90.upper.at(0), c.upper90, kLoose);
  }
}

// --- A model of three terms: lm(chl ~ age + bmi) fitted to mice(nhanes, m = 5,
// seed = 20240607) in R 4.2.2, mice 3.15.0. One row per imputation: the fit's coefficients,
// then the upper triangle of its vcov() (v00 v01 v02 v11 v12 v22). Complete-data df = 22 (the
// fits' residual df).
const double kModelFits[5][9] = {
    {30.497850281282105, 25.359823074506416, 4.171430890678101, 2716.3691145022299,
     -209.37057015950379, -87.471007046701189, 68.825851653632256, 3.3489096420643314,
     3.0961335234806424},
    {-77.453888237131451, 42.721534252301609, 7.2024049557451111, 3058.1484869929041,
     -322.50754494595537, -89.957563171183992, 73.745427889370021, 7.0664268062725206,
     2.8424997063707971},
    {-22.232748683999581, 42.377762984331255, 5.2340831761529634, 2334.7958639362141,
     -231.79158886261348, -71.302509390510721, 62.928216026927316, 4.5640244590958297,
     2.3857400581637282},
    {-9.5219056712298986, 30.447403530105277, 5.7562841963483464, 2662.3267236839697,
     -272.3291151734345, -81.220334500746901, 76.835105353041484, 5.2065672851314568,
     2.7364718243549886},
    {31.574777452658964, 32.389394773835761, 3.8956648216025491, 2673.5340792780021,
     -282.93619326917326, -79.357999756737954, 76.325177273959397, 5.5292410056185712,
     2.5906584159417045},
};

// The chosen terms (indices into the three) of the first `count` imputations, with standard
// errors from the vcov diagonal, and with the covariance sub-matrix when asked for.
std::vector<Imputation> ModelImputations(const std::vector<std::size_t>& terms, bool covariances,
                                         std::size_t count = 5) {
  constexpr std::size_t kVcovAt[3][3] = {{3, 4, 5}, {4, 6, 7}, {5, 7, 8}}; // in a row
  std::vector<Imputation> imputations(count);
  for (std::size_t l = 0; l < count; ++l) {
    for (std::size_t i : terms) {
      imputations[l].estimates.push_back(kModelFits[l][i]);
      imputations[l].standardErrors.push_back(std::sqrt(kModelFits[l][kVcovAt[i][i]]));
      for (std::size_t j : terms)
        if (covariances) imputations[l].covariances.push_back(kModelFits[l][kVcovAt[i][j]]);
    }
  }
  return imputations;
}

// --- Joint Wald test of the slopes (age, bmi) = 0. References: R 4.2.2, mice 3.15.0 D1(fit),
// which takes dfcom = 22 from the fits; mitml 0.4-4 testModels(fit, lm(chl ~ 1) fits,
// method = "D1") without df.com, the routine that D1 calls; mitml:::.D1 (that routine's core)
// for the other inputs. Each row ends in F, df1, df2, p, relative increase in variance.
// Against the pooled values themselves the statistic is 0 and p is 1.
TEST(MPRubinAlgorithm, JointWaldTestMatchesMiceAndMitml) {
  const struct {
    const char* what; std::vector<std::size_t> terms; bool covariances; std::size_t imputations;
    double completeDf, statistic, df1, df2, p, riv;
  } cases[] = {
      {"mice D1", {1, 2}, true, 5, 22.0,
       5.6393724188911705, 2, 6.5981929404170634, 0.037318684008712515, 0.77222794974799358},
      {"Li-Raghunathan-Rubin df without complete-data df", {1, 2}, true, 5, 0.0,
       5.6393724188911705, 2, 19.542767206637816, 0.011656200896659299, 0.77222794974799358},
      {"diagonal covariance from standard errors", {1, 2}, false, 5, 22.0,
       7.150581783322119, 2, 6.103674715688749, 0.02514227345625145, 0.87740883216878784},
      {"diagonal covariance, no complete-data df", {1, 2}, false, 5, 0.0,
       7.150581783322119, 2, 17.760978776516033, 0.0052714094813085931, 0.87740883216878784},
      // Tiny significances must stay accurate.
      {"all terms", {0, 1, 2}, true, 5, 0.0,
       181.97974102503724, 3, 43.732270643514688, 1.0213308253542913e-24, 0.67829417501033396},
      {"all terms with complete-data df", {0, 1, 2}, true, 5, 22.0,
       181.97974102503724, 3, 9.721081579179657, 7.6483356517005762e-09, 0.67829417501033396},
      // k = 2 terms, m = 3 imputations: k(m - 1) = 4 takes the small-sample df.
      {"few imputations", {1, 2}, true, 3, 0.0,
       5.0844734597845083, 2, 9.5313559009025841, 0.031426421639022623, 1.2780412279448661},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MPParamContainer params;
    std::unique_ptr<MPCompAlgorithm> algorithm =
        Pool(ModelImputations(c.terms, c.covariances, c.imputations), params, c.completeDf);
    const Results x = RunAll(*algorithm);
    ASSERT_EQ(x.waldStatus, 0);
    ExpectRelNear(x.d1.at(0), c.statistic, kTight);
    EXPECT_EQ(x.d1Df.at(0), c.df1);
    ExpectRelNear(x.d1Df.at(1), c.df2, kLoose);
    ExpectRelNear(x.d1P.at(0), c.p, kLoose);
    ExpectRelNear(x.riv.at(0), c.riv, kTight);
    const Results atPooled = RunAll(*algorithm, params.Estimates());
    ASSERT_EQ(atPooled.waldStatus, 0);
    EXPECT_NEAR(atPooled.d1.at(0), 0.0, 1e-20);
    EXPECT_NEAR(atPooled.d1P.at(0), 1.0, 1e-12);
  }
}

// --- Degenerate variances.
TEST(MPRubinAlgorithm, ZeroBetweenVarianceWithoutCompleteDfUsesNormalReference) {
  // t = 1.959963984540054 is the normal 97.5% point: p = 0.05 and the 95% interval is [0, 2t].
  const double z = 1.959963984540054;
  MPParamContainer params;
  std::unique_ptr<MPCompAlgorithm> algorithm =
      Pool(std::vector<Imputation>(3, {{z}, {1.0}, {}}), params);
  EXPECT_EQ(params.BetweenVariances().at(0), 0.0);
  ExpectRelNear(params.TotalVariances().at(0), 1.0, kTight);
  const Results x = RunAll(*algorithm);
  ASSERT_EQ(x.dfStatus + x.intervalStatus + x.diagnosticsStatus + x.waldStatus, 0);
  EXPECT_EQ(x.df.at(0), kSysmis); // infinite
  ExpectRelNear(x.p.at(0), 0.05, 1e-9);
  EXPECT_NEAR(x.lower.at(0), 0.0, 1e-12);
  ExpectRelNear(x.upper.at(0), 2 * z, 1e-12);
  EXPECT_EQ(x.r.at(0), 0.0);
  EXPECT_EQ(x.fmi.at(0), 0.0);
  EXPECT_EQ(x.re.at(0), 1.0);
  // All information is complete: the joint test is chi-square(k)/k, here z^2 on 1 df.
  ExpectRelNear(x.d1.at(0), z * z, kTight);
  EXPECT_EQ(x.d1Df.at(1), kSysmis);
  ExpectRelNear(x.d1P.at(0), 0.05, 1e-9);
}

TEST(MPRubinAlgorithm, ZeroTotalVarianceGivesSystemMissingResultsWithoutFailing) {
  MPParamContainer params;
  const Results x = RunAll(*Pool(std::vector<Imputation>(3, {{4.0}, {0.0}, {}}), params));
  EXPECT_EQ(params.Estimates().at(0), 4.0);
  EXPECT_EQ(params.BetweenVariances().at(0), 0.0);
  EXPECT_EQ(params.PooledStandardErrors().at(0), 0.0);
  // The callers footnote a system-missing significance when the between variance is 0.
  EXPECT_EQ(x.dfStatus + x.intervalStatus + x.diagnosticsStatus + x.statisticStatus, 0);
  for (const std::vector<double>* result :
       {&x.df, &x.wald, &x.p, &x.statistic, &x.lower, &x.upper, &x.r, &x.fmi, &x.re, &x.sig,
        &x.d1, &x.d1P})
    EXPECT_EQ(result->at(0), kSysmis);
  EXPECT_EQ(x.t.at(0), 0.0);
  EXPECT_EQ(x.waldStatus, MPError::kNoVariance);
}

TEST(MPRubinAlgorithm, ZeroWithinVarianceMeansAllInformationMissing) {
  MPParamContainer params;
  std::unique_ptr<MPCompAlgorithm> algorithm =
      Pool({{{1.0}, {0}, {}}, {{2.0}, {0}, {}}, {{3.0}, {0}, {}}, {{4.0}, {0}, {}}}, params);
  ExpectRelNear(params.BetweenVariances().at(0), 5.0 / 3.0, kTight);
  ExpectRelNear(params.TotalVariances().at(0), 1.25 * 5.0 / 3.0, kTight);
  const Results x = RunAll(*algorithm);
  ASSERT_EQ(x.dfStatus + x.diagnosticsStatus, 0);
  EXPECT_EQ(x.r.at(0), kSysmis); // infinite
  EXPECT_EQ(x.fmi.at(0), 1.0);
  ExpectRelNear(x.re.at(0), 1.0 / 1.25, kTight);
  ExpectRelNear(x.df.at(0), 3.0, kTight); // m - 1
  EXPECT_EQ(x.waldStatus, MPError::kSingularMatrix);

  // Nothing is observed within the imputations: the observed-data df, and so the df, vanish.
  params.SetCompleteDataDf(20.0);
  ASSERT_TRUE(algorithm->Combine(params).IsOK());
  const Results withDf = RunAll(*algorithm);
  ASSERT_EQ(withDf.dfStatus, 0);
  EXPECT_EQ(withDf.df.at(0), kSysmis);
  EXPECT_EQ(withDf.p.at(0), kSysmis);
}

TEST(MPRubinAlgorithm, MalformedImputationsAreRejectedAndNotRecorded) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    const char* what; int count; std::vector<double> estimates, standardErrors, covariances;
    long code;
  } cases[] = {
      {"the first, which sets the shape", 2, {1, 2}, {1, 1}, {}, 0},
      {"system-missing estimate", 2, {1, kSysmis}, {0.5, 0.5}, {}, MPError::kSystemMissingInput},
      // A missing standard error counts too, and takes precedence over other faults.
      {"system-missing standard error", 2, {1, std::nan("")}, {kSysmis, -1.0}, {},
       MPError::kSystemMissingInput},
      {"no estimates", 2, {}, {}, {}, MPError::kNoEstimates},
      {"more terms than the first", 2, {1, 2, 3}, {1, 1, 1}, {}, MPError::kTermCountMismatch},
      {"standard error missing", 2, {1, 2}, {1}, {}, MPError::kStandardErrorCountMismatch},
      {"estimates only after standard errors", 1, {1, 2}, {}, {},
       MPError::kStandardErrorCountMismatch},
      {"count field 3", 3, {1, 2}, {1, 1}, {}, MPError::kBadCountField},
      {"infinite estimate", 2, {inf, 2}, {1, 1}, {}, MPError::kNonFiniteInput},
      {"NaN standard error", 2, {1, 2}, {1, std::nan("")}, {}, MPError::kNonFiniteInput},
      {"negative standard error", 2, {1, 2}, {1, -0.5}, {}, MPError::kNegativeStandardError},
      {"covariances after standard errors", 2, {1, 2}, {}, {1, 0, 0, 1},
       MPError::kCovarianceMismatch},
  };
  std::unique_ptr<MPCompAlgorithm> algorithm = MPFactory::CreateMPCompAlgorithm();
  MPParamContainer params;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    params.SetCount(c.count);
    params.Estimates() = c.estimates;
    params.StandardErrors() = c.standardErrors;
    params.Covariances() = c.covariances;
    EXPECT_EQ(algorithm->AddImputation(params).GetErrorCode(), c.code);
  }
  EXPECT_EQ(algorithm->ImputationCount(), 1);
  EXPECT_EQ(algorithm->TermCount(), 2);
}

TEST(MPRubinAlgorithm, MalformedCovarianceMatricesAreRejected) {
  const struct { const char* what; std::vector<double> covariances; long code; } cases[] = {
      {"wrong size", {1, 0, 0}, MPError::kCovarianceMismatch},
      {"not symmetric", {1, 0.5, 0.4, 1}, MPError::kCovarianceMismatch},
      {"negative variance", {1, 0, 0, -1}, MPError::kNegativeStandardError},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MPParamContainer params;
    params.Estimates() = {1, 2};
    params.Covariances() = c.covariances;
    EXPECT_EQ(MPFactory::CreateMPCompAlgorithm()->AddImputation(params).GetErrorCode(), c.code);
  }
}

TEST(MPRubinAlgorithm, EstimatesOnlyPoolMeanAndBetweenVarianceButNoVarianceStatistics) {
  MPParamContainer params;
  params.SetCount(MPParamContainer::kEstimatesOnly);
  // The standard error list is not read: stale values in it do no harm.
  std::unique_ptr<MPCompAlgorithm> algorithm =
      Pool({{{0.2, 1.0}, {kSysmis, -1.0}, {}}, {{0.4, 1.0}, {}, {}}, {{0.9, 1.0}, {}, {}}}, params);
  ExpectRelNear(params.Estimates().at(0), 0.5, kTight);
  ExpectRelNear(params.Estimates().at(1), 1.0, kTight);
  ExpectRelNear(params.BetweenVariances().at(0), 0.13, kTight);
  EXPECT_EQ(params.BetweenVariances().at(1), 0.0);
  EXPECT_TRUE(params.PooledStandardErrors().empty());
  EXPECT_TRUE(params.TotalVariances().empty());

  const Results x = RunAll(*algorithm);
  EXPECT_EQ(x.diagnosticsStatus, MPError::kNoStandardErrors);
  EXPECT_EQ(x.fmi, std::vector<double>(2, kSysmis));
  EXPECT_EQ(x.dfStatus, MPError::kNoStandardErrors);
  EXPECT_EQ(x.waldStatus, MPError::kNoStandardErrors);
}

TEST(MPRubinAlgorithm, BadArgumentsOfResultOperationsFailWithSystemMissingResults) {
  MPParamContainer params;
  std::unique_ptr<MPCompAlgorithm> algorithm = Pool(ModelImputations({0, 1, 2}, false), params, 22);
  for (double level : {0.0, 1.0, 95.0, -0.5, std::nan("")}) {
    SCOPED_TRACE(level);
    const Results x = RunAll(*algorithm, {0.0}, level);
    EXPECT_EQ(x.intervalStatus, MPError::kBadConfidenceLevel);
    EXPECT_EQ(x.lower, std::vector<double>(3, kSysmis));
  }
  for (const std::vector<double>& nulls :
       {std::vector<double>{}, std::vector<double>{0, 0}, std::vector<double>{kSysmis}}) {
    const Results x = RunAll(*algorithm, nulls);
    EXPECT_EQ(x.dfStatus, MPError::kBadNullValues);
    EXPECT_EQ(x.p, std::vector<double>(3, kSysmis));
    EXPECT_EQ(x.waldStatus, MPError::kBadNullValues);
  }
}

} // namespace
