#include "backend/omfactory/pooling/OmMICorrMatrixPoolingPattern.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringDataValue.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

constexpr double kSysMiss = OmPoolingTools::kSysMiss;

// The last number among a composite's arguments, depth first: the N of a listwise-N note.
const OmNumber* LastNumber(const OmComposite::Part& part) {
  const OmNumber* last = nullptr;
  for (const auto& p : part.Parts()) {
    const OmNumber* found = nullptr;
    if (p->IsRepeatList()) {
      found = LastNumber(*p);
    } else if (const auto* number = dynamic_cast<const OmNumber*>(p->Cell())) {
      found = number;
    } else if (const auto* nested = dynamic_cast<const OmComposite*>(p->Cell())) {
      found = LastNumber(nested->Root());
    }
    if (found) last = found;
  }
  return last;
}

void VisitParts(OmComposite::Part& part, OmCellText::Visitor& visitor) {
  for (auto& p : part.Parts()) {
    if (p->IsRepeatList()) {
      VisitParts(*p, visitor);
    } else {
      p->Cell()->Accept(visitor);
    }
  }
}

}  // namespace

// --- CountFootnoteScraper

OmMICorrMatrixPoolingPattern::CountFootnoteScraper::CountFootnoteScraper(const OmPivotTable& table)
    : _table(table) {}

OmMICorrMatrixPoolingPattern::CountFootnoteScraper::~CountFootnoteScraper() = default;

void OmMICorrMatrixPoolingPattern::CountFootnoteScraper::Visit(OmVariable& variable) {
  const int d = _table.FindDimension(variable);
  if (d >= 0) _dimensions.push_back(d);
}

void OmMICorrMatrixPoolingPattern::CountFootnoteScraper::Visit(OmNumDataValue& value) { Value(value); }

void OmMICorrMatrixPoolingPattern::CountFootnoteScraper::Visit(OmStringDataValue& value) { Value(value); }

void OmMICorrMatrixPoolingPattern::CountFootnoteScraper::Visit(OmComposite& composite) {
  VisitParts(composite.Root(), *this);
}

void OmMICorrMatrixPoolingPattern::CountFootnoteScraper::Value(const OmCellText& value) {
  if (_dimensions.size() != _categories.size() + 1) return;
  const OmDimension& dimension = _table.Dimension(_dimensions.back());
  const int at = dimension.FindChild(&dimension.Root(), value, false);
  _categories.push_back(at < 0 ? -1 : dimension.Root().Child(std::size_t(at))->LeafIndex());
}

// --- The pattern

struct OmMICorrMatrixPoolingPattern::Context {
  int statDim = -1;
  int imputationDim = -1;
  int original = -1;
  int pooled = -1;
  int correlation = -1;
  int n = -1;
  int significanceOne = -1;
  int significanceTwo = -1;
  // Footnote indices of the notes: .05 and .01 one-tailed, .05 and .01 two-tailed (-1: none).
  int notes[4] = {-1, -1, -1, -1};
  ListwiseCounts listwise;
  OmPivotTable::Coordinates coords;

  OmPivotTable::Coordinates& At(int statistic, int imputation) {
    coords[std::size_t(statDim)] = statistic;
    coords[std::size_t(imputationDim)] = imputation;
    return coords;
  }
};

OmMICorrMatrixPoolingPattern::OmMICorrMatrixPoolingPattern(const std::string& procedureName,
                                                           const std::string& templateName)
    : OmMIPattern(procedureName, templateName), _statistics("", true) {}

OmMICorrMatrixPoolingPattern::~OmMICorrMatrixPoolingPattern() = default;

void OmMICorrMatrixPoolingPattern::SetLabels(const Labels& labels) {
  _labels = labels;
  _statistics = OmStringCell(labels.statistics, true);
}

bool OmMICorrMatrixPoolingPattern::MatchesTable(const OmPivotTable& table) const {
  return TemplateMatches(table) && OmPoolingTools::FindDim(table, _statistics) >= 0 &&
         OmPoolingTools::FindImputationDim(table) >= 0;
}

OmMICorrMatrixPoolingPattern::ListwiseCounts OmMICorrMatrixPoolingPattern::ReadListwiseCounts(
    OmPivotTable& table, const std::string& noteTemplate) {
  ListwiseCounts counts;
  for (std::size_t f = 0; f < table.Footnotes().size(); ++f) {
    auto* note = dynamic_cast<OmComposite*>(&table.FootnoteAt(int(f)).Text());
    if (!note || note->Pattern().Text() != noteTemplate) continue;
    const OmNumber* n = LastNumber(note->Root());
    if (!n) continue;
    CountFootnoteScraper scraper(table);
    note->Accept(scraper);
    std::vector<int> coords(std::size_t(table.NDimensions()), -1);
    const std::size_t named = std::min(scraper.Dimensions().size(), scraper.Categories().size());
    for (std::size_t j = 0; j < named; ++j) {
      coords[std::size_t(scraper.Dimensions()[j])] = scraper.Categories()[j];
    }
    counts.emplace(std::move(coords), n->Value());
  }
  return counts;
}

bool OmMICorrMatrixPoolingPattern::Pool(OmPivotTable& table, OmOutputTree*) const {
  Context c;
  c.imputationDim = OmPoolingTools::FindImputationDim(table);
  c.statDim = OmPoolingTools::FindDim(table, _statistics);
  c.original = OmPoolingTools::FindOriginalDataImputation(table, c.imputationDim);
  if (!_labels.correlation.empty()) {
    const std::string* texts[4] = {&_labels.note05OneTailed, &_labels.note01OneTailed,
                                   &_labels.note05TwoTailed, &_labels.note01TwoTailed};
    for (int k = 0; k < 4; ++k) {
      // A row without note texts has nothing to mark coefficients with.
      if (texts[k]->empty()) continue;
      const OmStringCell marker(k % 2 == 0 ? "*" : "**");
      c.notes[k] = table.Footnote(OmFootnote(OmStringCell(*texts[k], true), &marker), false);
    }
  }
  if (c.imputationDim < 0 || c.statDim < 0) return false;
  c.pooled = OmPoolingTools::MakePooledCategory(table, c.imputationDim);
  const OmDimensionNode* stats = &table.Dimension(c.statDim).Root();
  auto find = [stats](const std::string& path) {
    return path.empty() ? -1 : OmPoolingTools::FindMatchingCategory(path, stats);
  };
  c.correlation = find(_labels.correlation);
  if (c.correlation < 0) return false;
  c.n = find(_labels.n);
  c.significanceOne = find(_labels.significanceOneTailed);
  c.significanceTwo = find(_labels.significanceTwoTailed);
  if (!_labels.listwiseN.empty()) c.listwise = ReadListwiseCounts(table, _labels.listwiseN);

  const SliceIndex walk(table, {c.statDim, c.imputationDim});
  for (std::uint64_t p = 0; p < walk.Count(); ++p) {
    walk.Position(p, c.coords);
    PoolCoefficient(table, c);
  }
  return true;
}

void OmMICorrMatrixPoolingPattern::PoolCoefficient(OmPivotTable& table, Context& c) const {
  enum Style { kNone, kOneTailed, kTwoTailed } style = kNone;
  std::vector<double> rs, ns;
  bool nComplete = true;
  std::uint32_t rFormat = OmNumber::kDefaultFormat, nFormat = OmNumber::kDefaultFormat;
  const int categories = table.Size(c.imputationDim);
  for (int i = 0; i < categories; ++i) {
    if (i == c.original || i == c.pooled) continue;
    const auto* r = dynamic_cast<const OmNumber*>(table.Cell(c.At(c.correlation, i)));
    if (!r) continue;
    rs.push_back(r->Value());
    rFormat = r->Format();
    for (std::int16_t f : r->Footnotes()) {
      if (style != kNone) break;
      if (f < 0 || std::size_t(f) >= table.Footnotes().size()) continue;
      const OmFootnote& on = table.Footnotes()[std::size_t(f)];
      for (int k = 0; k < 4; ++k) {
        if (c.notes[k] < 0) continue;
        const OmFootnote& note = table.Footnotes()[std::size_t(c.notes[k])];
        // The cell's note matches by marker and text, whichever footnote entry it uses.
        if (on.Marker() && note.Marker() && on.Marker()->Text() == note.Marker()->Text() &&
            on.Text().Text() == note.Text().Text()) {
          style = k < 2 ? kOneTailed : kTwoTailed;
          break;
        }
      }
    }
    // N of this imputation: its N cell, else the listwise N its footnotes state.
    bool haveN = false;
    double n = 0.0;
    if (c.n >= 0) {
      if (const auto* cell = dynamic_cast<const OmNumber*>(table.Cell(c.At(c.n, i)))) {
        n = cell->Value();
        nFormat = cell->Format();
        haveN = true;
      }
    } else {
      c.At(c.correlation, i);
      for (const auto& [where, count] : c.listwise) {
        bool match = true;
        for (std::size_t d = 0; d < where.size() && match; ++d) {
          match = where[d] < 0 || int(d) == c.statDim || where[d] == c.coords[d];
        }
        if (match) {
          n = count;
          haveN = true;
          break;
        }
      }
    }
    if (!haveN) nComplete = false;
    if (nComplete) ns.push_back(n);
  }
  if (!nComplete) ns.clear();
  // An empty position of the matrix has nothing to pool.
  if (rs.empty()) return;
  const double pooledN = OmPoolingTools::Mean(ns);

  double coefficient = kSysMiss;
  double p = kSysMiss;
  bool noVariance = true;
  long error = 0;
  const auto ones = std::count(rs.begin(), rs.end(), 1.0);
  const auto extremes = ones + std::count(rs.begin(), rs.end(), -1.0);
  if (ones == std::ptrdiff_t(rs.size())) {
    coefficient = 1.0;  // the diagonal
  } else if (extremes > 0 && extremes < std::ptrdiff_t(rs.size())) {
    coefficient = kSysMiss;
  } else {
    std::unique_ptr<MPCompAlgorithm> computation = MPFactory::CreateMPCompAlgorithm();
    const bool useSE = !ns.empty() && *std::min_element(ns.begin(), ns.end()) > 3.0;
    MPParamContainer params;
    for (std::size_t j = 0; j < rs.size() && error == 0; ++j) {
      if (rs[j] == kSysMiss) {
        error = MPError::kSystemMissingInput;
        break;
      }
      params = MPParamContainer();
      params.Estimates().push_back(rs[j]);
      OmPoolingTools::FisherZ(params.Estimates());
      if (useSE) params.StandardErrors().push_back(1.0 / std::sqrt(ns[j] - 3.0));
      params.SetCount(params.StandardErrors().empty() ? MPParamContainer::kEstimatesOnly
                                                      : MPParamContainer::kWithStandardErrors);
      const MCCommon::MCStatus added = computation->AddImputation(params);
      if (!added.IsOK()) error = added.GetErrorCode();
    }
    bool combined = false;
    if (error == 0) {
      const MCCommon::MCStatus status = computation->Combine(params);
      if (status.IsOK()) {
        std::vector<double> z{params.Estimates().empty() ? kSysMiss : params.Estimates().front()};
        OmPoolingTools::InverseFisherZ(z);
        coefficient = z.front();
        combined = true;
      } else {
        error = status.GetErrorCode();
      }
    }
    if (useSE && combined) {
      std::vector<double> df, wald, significance;
      computation->DfAndSignificance({0.0}, df, wald, significance);
      p = significance.empty() ? kSysMiss : significance.front();
      noVariance = !params.BetweenVariances().empty() && params.BetweenVariances().front() == 0.0;
    }
  }
  if (error != 0) {
    OmPoolingTools::CompErrorFootnote(table, c.At(c.correlation, c.pooled), error);
    return;
  }

  if (c.n >= 0) {
    table.Cell(c.At(c.n, c.pooled), std::make_unique<OmNumber>(pooledN, nFormat));
  }
  const bool hasSignificance = c.significanceOne >= 0 || c.significanceTwo >= 0;
  if (hasSignificance && !(coefficient == 1.0 && noVariance)) {
    const bool oneTailed = c.significanceOne >= 0;
    const double shown = oneTailed ? (p == kSysMiss ? kSysMiss : p * 0.5) : p;
    auto& at = c.At(oneTailed ? c.significanceOne : c.significanceTwo, c.pooled);
    table.Cell(at, std::make_unique<OmNumber>(shown, kSignificanceFormat));
    if (OmCellText* cell = table.Cell(at)) {
      if (ns.empty()) {
        OmPoolingTools::FootnoteCell(kNeedsN, table, *cell);
      } else if (noVariance && p == kSysMiss) {
        OmPoolingTools::FootnoteCell(kNoVariance, table, *cell);
      }
    }
  }
  auto& at = c.At(c.correlation, c.pooled);
  table.Cell(at, std::make_unique<OmNumber>(coefficient, rFormat));
  OmCellText* cell = table.Cell(at);
  if (!cell || p < 0.0 || p > 0.1) return;
  int note = -1;
  if (style == kTwoTailed) {
    note = p <= 0.01 ? c.notes[3] : p <= 0.05 ? c.notes[2] : -1;
  } else if (style == kOneTailed) {
    note = p <= 0.02 ? c.notes[1] : c.notes[0];
  }
  if (note >= 0) {
    cell->Footnote(std::int16_t(note));
    table.FootnoteAt(note).AddReference();
  }
}
