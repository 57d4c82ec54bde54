#include "backend/omfactory/pooling/OmMIColumnPoolingPattern.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "backend/omfactory/pooling/DespookDimension.h"
#include "backend/omfactory/pooling/OmMICellSteps.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/errors/OMSException.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/MiOutputSettings.h"
#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"

namespace {

constexpr double kSysMiss = OmPoolingTools::kSysMiss;
// The computed degrees of freedom of a "^1, ^2" cell: two decimals.
constexpr std::uint32_t kComputedDfFormat = 0x2050028;

// A statistics column: its category and the number format of its cells.
struct Column {
  int category = -1;
  std::uint32_t format = OmNumber::kDefaultFormat;
  bool Has() const { return category >= 0; }
};

// The two bounds of an interval group and its confidence level.
struct Interval {
  Column lower;  // the group's first category
  Column upper;  // its second
  double level = 0.95;
  bool found = false;
};

double At(const std::vector<double>& values, std::size_t i) {
  return i < values.size() ? values[i] : kSysMiss;
}

// e raised to a value; a missing value stays missing.
double ExpOf(double value) { return value == kSysMiss ? kSysMiss : std::exp(value); }

bool HasFootnote(const OmCellText& cell, int index) {
  for (std::int16_t f : cell.Footnotes()) {
    if (f == index) return true;
  }
  return false;
}

}  // namespace

struct OmMIColumnPoolingPattern::Context {
  int imputationDim = -1;
  int statDim = -1;
  int keyDim = -1;
  Column correlation, estimate, standardError, wald, test, df, significance, expB;
  Column diagnostics[3];
  Interval interval, expBInterval;
  int original = -1;
  int pooled = -1;
  bool pooledExisted = false;
  int redundancyNote = -1;
  bool diagnosticsOn = false;
  std::vector<int> terms;  // the key dimension's categories in tree order

  // One combination.
  OmPivotTable::Coordinates coords;
  Column* key = nullptr;  // the estimate column, else the correlation column
  std::vector<std::size_t> present;       // indices into terms of the terms of this model
  std::vector<std::size_t> unpooled;      // terms of the model without standard errors
  std::vector<char> inModel;              // per term: pooled with the model
  std::vector<char> notRedundant;         // per term, from the first imputation read
  std::vector<double> ownDf;              // per present term, the first imputation's own df
  bool firstExpBMissing = false;
  MPParamContainer params;
  std::unique_ptr<MPCompAlgorithm> computation;
  bool marked = false;
  bool pooledAny = false;

  OmPivotTable::Coordinates& Cell(const Column& column, int term, int imputation) {
    coords[std::size_t(statDim)] = column.category;
    coords[std::size_t(keyDim)] = term;
    coords[std::size_t(imputationDim)] = imputation;
    return coords;
  }
  bool IsImputation(int i) const { return i != original && i != pooled; }
  bool Redundant(std::size_t termIndex) const {
    return termIndex < notRedundant.size() && !notRedundant[termIndex];
  }
};

OmMIColumnPoolingPattern::OmMIColumnPoolingPattern(const std::string& procedureName,
                                                   const std::string& templateName)
    : OmMIPattern(procedureName, templateName), _statistics("", true), _key("", true) {}

OmMIColumnPoolingPattern::~OmMIColumnPoolingPattern() = default;

void OmMIColumnPoolingPattern::SetLabels(const Labels& labels) {
  _labels = labels;
  _statistics = OmStringCell(labels.statistics, true);
  _key = OmStringCell(labels.key, true);
}

bool OmMIColumnPoolingPattern::MatchesTable(const OmPivotTable& table) const {
  return TemplateMatches(table);
}

void OmMIColumnPoolingPattern::BuildContext(OmPivotTable& table, Context& c) const {
  c.imputationDim = OmPoolingTools::FindImputationDim(table);
  c.statDim = OmPoolingTools::FindDim(table, _statistics);
  c.keyDim = OmPoolingTools::FindDim(table, _key);
  // Only imputed tables are touched: a table of the same template from a run on ordinary data
  // keeps its columns as they are.
  if (c.statDim >= 0 && c.imputationDim >= 0) {
    const OmDimension& stats = table.Dimension(c.statDim);
    auto find = [&stats](const std::string& path) {
      return path.empty() ? -1 : OmPoolingTools::FindMatchingCategory(path, &stats.Root());
    };
    c.correlation.category = find(_labels.correlation);
    c.estimate.category = find(_labels.estimate);
    c.standardError.category = find(_labels.standardError);
    c.wald.category = find(_labels.wald);
    c.test.category = find(_labels.test);
    c.df.category = find(_labels.df);
    c.significance.category = find(_labels.significance);
    c.expB.category = find(_labels.expB);
    const char* diagnostics[3] = {"Fraction Missing Info.", "Relative Increase Variance",
                                  "Relative Efficiency"};
    for (int d = 0; d < 3; ++d) {
      c.diagnostics[d].category = OmPoolingTools::AddCategory(table, c.statDim, diagnostics[d]);
      c.diagnostics[d].format = OmMICellSteps::kDiagnosticFormat;
    }
    const std::pair<const std::string*, Interval*> intervals[] = {
        {&_labels.interval, &c.interval}, {&_labels.expBInterval, &c.expBInterval}};
    for (const auto& [label, interval] : intervals) {
      if (label->empty()) continue;
      int second = -1, first = -1;
      interval->found = OmPoolingTools::FindCI(table.Dimension(c.statDim), *label, second, first,
                                               interval->level);
      interval->lower.category = first;
      interval->upper.category = second;
    }
  }
  if (c.imputationDim >= 0) {
    c.original = OmPoolingTools::FindOriginalDataImputation(table, c.imputationDim);
    OmDimension& imputations = table.Dimension(c.imputationDim);
    const int at = imputations.FindChild(&imputations.Root(),
                                         OmStringCell(OmPoolingTools::kPooledLabel, true), false);
    c.pooledExisted = at >= 0;
    if (c.pooledExisted) c.pooled = imputations.Root().Child(std::size_t(at))->LeafIndex();
  }
  if (!_labels.redundancy.empty()) {
    c.redundancyNote = OmPoolingTools::FindFootnote(table, OmStringCell(_labels.redundancy, true));
  }
  bool pooled = false, observed = false, imputed = false;
  MiOutputSettings(pooled, observed, imputed, c.diagnosticsOn);
}

bool OmMIColumnPoolingPattern::Pool(OmPivotTable& table, OmOutputTree*) const {
  Context c;
  BuildContext(table, c);
  if (c.imputationDim < 0 || c.statDim < 0 || c.keyDim < 0) return false;

  DespookDimension()(table, c.keyDim, c.statDim);
  for (OmDimension::ConstNode leaf : table.Dimension(c.keyDim).Leaves()) c.terms.push_back(leaf->LeafIndex());

  c.key = c.estimate.Has() ? &c.estimate : c.correlation.Has() ? &c.correlation : nullptr;
  if (c.key) {
    const SliceIndex walk(table, {c.statDim, c.keyDim, c.imputationDim});
    for (std::uint64_t p = 0; p < walk.Count(); ++p) {
      walk.Position(p, c.coords);
      PoolCombination(table, c);
    }
  }
  if (c.marked) {
    OmCellText* title = table.TableTitle() ? table.TableTitle() : table.Label();
    if (title) OmPoolingTools::FootnoteCell(kTermsVary, table, *title);
  }
  return c.pooledAny;
}

void OmMIColumnPoolingPattern::PoolCombination(OmPivotTable& table, Context& c) const {
  // Terms check: which terms each imputation's model has; they must not change.
  std::vector<char> reference;
  bool first = true;
  OmNumber scratch(0.0);
  const int categories = table.Size(c.imputationDim);
  for (int i = 0; i < categories; ++i) {
    if (!c.IsImputation(i)) continue;
    std::vector<char> presence(c.terms.size(), 0);
    for (std::size_t t = 0; t < c.terms.size(); ++t) {
      const OmNumber* cell = OmPoolingTools::ReadNumber(table, c.Cell(*c.key, c.terms[t], i), scratch);
      presence[t] = cell != nullptr && !cell->IsSysMiss();
    }
    if (first) {
      reference = std::move(presence);
      first = false;
    } else if (presence != reference) {
      c.marked = true;
      return;
    }
  }
  // A term without a standard error in some imputation (a redundant parameter: B 0, its
  // standard error blank) cannot be pooled; it is left out of the model so that the other terms
  // still pool, and gets an empty estimate.
  c.present.clear();
  c.unpooled.clear();
  for (std::size_t t = 0; t < reference.size(); ++t) {
    if (!reference[t]) continue;
    (HasStandardErrors(table, c, c.terms[t]) ? c.present : c.unpooled).push_back(t);
  }
  reference.assign(reference.size(), 0);
  for (std::size_t t : c.present) reference[t] = 1;
  c.inModel = std::move(reference);
  if (c.present.empty()) {
    WriteUnpooled(table, c);
    return;
  }

  c.computation = MPFactory::CreateMPCompAlgorithm();
  c.params = MPParamContainer();
  c.notRedundant.clear();
  c.ownDf.clear();
  c.firstExpBMissing = false;
  const long error = ReadImputations(table, c);
  WritePooled(table, c, error);
  c.computation.reset();
}

long OmMIColumnPoolingPattern::ReadImputations(OmPivotTable& table, Context& c) const {
  const bool hasSE = c.standardError.Has();
  c.params.SetCount(hasSE ? MPParamContainer::kWithStandardErrors : MPParamContainer::kEstimatesOnly);
  if (!c.key) throw OMSException("MIColumnPoolingPattern::GetImpValues -- keyCatNum == -1");
  // Numbers are read without making cell objects; the estimate's scratch stays apart from the
  // one that the other columns share.
  OmNumber keyScratch(0.0), scratch(0.0);
  auto number = [&table, &c](Column& column, int term, int i, OmNumber& into) -> const OmNumber* {
    if (!column.Has()) return nullptr;
    const OmNumber* cell = OmPoolingTools::ReadNumber(table, c.Cell(column, term, i), into);
    if (cell) column.format = cell->Format();
    return cell;
  };
  Column* remembered[] = {&c.wald, &c.test, &c.significance, &c.expB, &c.interval.lower,
                          &c.interval.upper, &c.expBInterval.lower, &c.expBInterval.upper};
  bool firstRead = true;
  const int categories = table.Size(c.imputationDim);
  for (int i = 0; i < categories; ++i) {
    if (!c.IsImputation(i)) continue;
    std::vector<double>& estimates = c.params.Estimates();
    std::vector<double>& errors = c.params.StandardErrors();
    estimates.clear();
    errors.clear();
    std::vector<char> marks;
    for (std::size_t t = 0; t < c.terms.size(); ++t) {
      const int term = c.terms[t];
      const OmNumber* key = c.inModel[t] ? number(*c.key, term, i, keyScratch) : nullptr;
      if (key && !key->IsSysMiss()) {
        estimates.push_back(key->Value());
        if (hasSE && errors.size() + 1 == estimates.size()) {
          const OmNumber* se = number(c.standardError, term, i, scratch);
          errors.push_back(se ? se->Value() : kSysMiss);
        }
        for (Column* column : remembered) number(*column, term, i, scratch);
        if (firstRead) {
          const OmNumber* df = number(c.df, term, i, scratch);
          c.ownDf.push_back(df ? df->Value() : kSysMiss);
          if (c.ownDf.size() == 1) c.firstExpBMissing = c.expB.Has() && number(c.expB, term, i, scratch) == nullptr;
        } else {
          number(c.df, term, i, scratch);
        }
      }
      if (c.redundancyNote >= 0) {
        const OmCellText* cell = table.ReadCell(c.Cell(*c.key, term, i), scratch);
        marks.push_back(!(cell && HasFootnote(*cell, c.redundancyNote)));
      }
    }
    if (estimates.empty()) continue;
    if (c.key == &c.correlation) OmPoolingTools::FisherZ(estimates);
    const MCCommon::MCStatus added = c.computation->AddImputation(c.params);
    if (firstRead) {
      c.notRedundant = std::move(marks);
      firstRead = false;
    }
    if (!added.IsOK()) return added.GetErrorCode();
  }
  return 0;
}

// Asked only of terms whose estimate every imputation has (the terms check comes first).
bool OmMIColumnPoolingPattern::HasStandardErrors(const OmPivotTable& table, Context& c, int term) const {
  if (!c.standardError.Has()) return true;
  const int categories = table.Size(c.imputationDim);
  OmNumber scratch(0.0);
  for (int i = 0; i < categories; ++i) {
    if (!c.IsImputation(i)) continue;
    const OmNumber* se = OmPoolingTools::ReadNumber(table, c.Cell(c.standardError, term, i), scratch);
    if (!se || se->IsSysMiss()) return false;
  }
  return true;
}

void OmMIColumnPoolingPattern::WriteUnpooled(OmPivotTable& table, Context& c) const {
  if (c.unpooled.empty()) return;
  c.pooled = OmPoolingTools::MakePooledCategory(table, c.imputationDim);
  for (std::size_t t : c.unpooled) {
    const int term = c.terms[t];
    const OmCellText* first = nullptr;
    for (int i = 0; i < table.Size(c.imputationDim) && !first; ++i) {
      if (c.IsImputation(i)) first = table.Cell(c.Cell(*c.key, term, i));
    }
    const auto* firstNumber = dynamic_cast<const OmNumber*>(first);
    const auto& at = c.Cell(*c.key, term, c.pooled);
    table.Cell(at, std::make_unique<OmNumber>(
                       kSysMiss, firstNumber ? firstNumber->Format() : OmNumber::kDefaultFormat));
    OmCellText* cell = table.Cell(at);
    if (cell && first && c.redundancyNote >= 0 && HasFootnote(*first, c.redundancyNote)) {
      OmPoolingTools::FootnoteCell(_labels.redundancy, table, *cell);
    }
  }
  c.pooledAny = true;
}

void OmMIColumnPoolingPattern::WritePooled(OmPivotTable& table, Context& c, long error) const {
  WriteUnpooled(table, c);
  c.pooled = OmPoolingTools::MakePooledCategory(table, c.imputationDim);
  const int pooled = c.pooled;
  if (error == 0) {
    const MCCommon::MCStatus combined = c.computation->Combine(c.params);
    if (!combined.IsOK()) error = combined.GetErrorCode();
  }
  if (error != 0) {
    const int note = table.Footnote(OmFootnote(*OmPoolingTools::PoolingErrorText(error)), false);
    for (std::size_t t : c.present) {
      OmPoolingTools::ErrorFootnote(table, c.Cell(*c.key, c.terms[t], pooled), note);
    }
    return;
  }
  const std::vector<double> estimates = c.params.Estimates();
  const std::vector<double>& errors = c.params.PooledStandardErrors();
  const std::vector<double>& between = c.params.BetweenVariances();
  if (estimates.size() != c.present.size()) {
    throw OMSException("MIColumnPoolingPattern::AddPooled -- keyCatNum == -1",
                       double(c.present.size()), double(estimates.size()));
  }
  auto put = [&table, &c, pooled](const Column& column, std::size_t j, double value,
                                  std::uint32_t format) -> OmCellText* {
    if (!column.Has()) return nullptr;
    const auto& coords = c.Cell(column, c.terms[c.present[j]], pooled);
    table.Cell(coords, std::make_unique<OmNumber>(value, format));
    return table.Cell(coords);
  };
  const std::size_t k = estimates.size();

  for (std::size_t j = 0; j < k; ++j) {
    OmCellText* cell = put(c.estimate, j, estimates[j], c.estimate.format);
    if (cell && c.Redundant(c.present[j])) {
      OmPoolingTools::FootnoteCell(_labels.redundancy, table, *cell);
    }
    put(c.standardError, j, At(errors, j), c.standardError.format);
  }
  if (c.correlation.Has()) {
    std::vector<double> correlations = estimates;
    OmPoolingTools::InverseFisherZ(correlations);
    for (std::size_t j = 0; j < k; ++j) put(c.correlation, j, correlations[j], c.correlation.format);
  }
  for (std::size_t j = 0; j < k && c.test.Has(); ++j) {
    const double se = At(errors, j);
    const double t = (se == 0.0 || se == kSysMiss) ? kSysMiss : estimates[j] / se;
    put(c.test, j, t, c.test.format);
  }
  for (std::size_t j = (c.firstExpBMissing ? 1 : 0); j < k && c.expB.Has(); ++j) {
    put(c.expB, j, c.Redundant(c.present[j]) ? kSysMiss : ExpOf(estimates[j]), c.expB.format);
  }
  if (c.interval.found) {
    std::vector<double> lower, upper;
    c.computation->ConfidenceInterval(c.interval.level, lower, upper);
    for (std::size_t j = 0; j < k; ++j) {
      put(c.interval.lower, j, At(lower, j), c.interval.lower.format);
      put(c.interval.upper, j, At(upper, j), c.interval.upper.format);
    }
  }

  std::vector<double> significance;
  if (c.diagnosticsOn || c.significance.Has()) {
    std::vector<double> total, increase, fraction, efficiency;
    c.computation->Diagnostics(total, increase, fraction, efficiency, significance);
    // The diagnostics belong to the estimate's pooling with its standard errors; a pooled
    // correlation column of the same terms has none to give and must not overwrite them.
    const bool writeDiagnostics = c.diagnosticsOn && c.key == &c.estimate;
    for (std::size_t j = 0; j < k && writeDiagnostics; ++j) {
      put(c.diagnostics[0], j, At(fraction, j), c.diagnostics[0].format);
      put(c.diagnostics[1], j, At(increase, j), c.diagnostics[1].format);
      put(c.diagnostics[2], j, At(efficiency, j), c.diagnostics[2].format);
    }
  }
  if (c.wald.Has()) {
    std::vector<double> df, wald;
    c.computation->DfAndSignificance({0.0}, df, wald, significance);
    for (std::size_t j = 0; j < k; ++j) {
      if (c.df.Has()) {
        // The table's own degrees of freedom beside those of the pooled test.
        OmComposite both("^1, ^2", true);
        both.Add(OmNumber(At(c.ownDf, j), c.df.format));
        both.Add(OmNumber(At(df, j), kComputedDfFormat));
        both.Substitute();
        table.Cell(c.Cell(c.df, c.terms[c.present[j]], pooled), both);
      }
      if (OmCellText* cell = put(c.wald, j, At(wald, j), c.wald.format)) {
        OmPoolingTools::FootnoteCell(kFDistribution, table, *cell);
      }
    }
  }
  for (std::size_t j = 0; j < k && c.significance.Has(); ++j) {
    const double p = At(significance, j);
    OmCellText* cell = put(c.significance, j, p, c.significance.format);
    if (cell && p == kSysMiss && At(between, j) == 0.0 && !c.Redundant(c.present[j])) {
      OmPoolingTools::FootnoteCell("No variance among imputations.", table, *cell);
    }
  }
  if (c.expBInterval.found) {
    std::vector<double> lower, upper;
    c.computation->ConfidenceInterval(c.expBInterval.level, lower, upper);
    for (std::size_t j = 0; j < k; ++j) {
      put(c.expBInterval.lower, j, ExpOf(At(lower, j)), c.expBInterval.lower.format);
      put(c.expBInterval.upper, j, ExpOf(At(upper, j)), c.expBInterval.upper.format);
    }
  }
  c.pooledAny = true;
}
