#include "backend/omfactory/pooling/BootstrapResultWriter.h"

#include <cmath>
#include <limits>
#include <optional>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/outputmodel/OmCellText.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

OmStringCell Label(const char* text) { return OmStringCell(text, true); }

// A composite of a translatable pattern and number arguments, substituted so that its text
// reads right before translation too.
OmComposite PatternWithNumbers(const char* pattern, std::initializer_list<OmNumber> numbers) {
  OmComposite composite(pattern, true);
  for (const OmNumber& n : numbers) composite.Add(n);
  composite.Substitute();
  return composite;
}

unsigned CoverageFor(double levelPct) {
  // The margin keeps exact levels (95: 39) from rounding up to the next count.
  const double count = std::ceil(200.0 / (100.0 - levelPct) - 1.0 - 1e-9);
  // A level outside (0, 100) comes only from a caller's mistake; keep the count representable.
  if (std::isnan(count) || count < 0.0) return 0;
  if (count > double(std::numeric_limits<unsigned>::max())) return std::numeric_limits<unsigned>::max();
  return unsigned(count);
}

}  // namespace

struct BootstrapResultWriter::Data {
  double _levelPct = 95.0;
  OmPivotTable* _table = nullptr;
  int _dim = 0;
  int _bias = 0;
  int _standardError = 0;
  int _significance = 0;
  int _lower = 0;
  int _upper = 0;
  unsigned _sampleCount = 0;
  unsigned _coverageCount = 0;
  bool _hasStandardError = false;
  bool _hasJackknife = false;
  bool _significanceOnly = false;
  bool _incompleteMarked = false;

  // Adds footnote text to the table (an equal one is reused) and gives its index.
  int AddFootnote(const OmCellText& text) const { return _table->Footnote(OmFootnote(text), false); }

  // Stores a number at address with its result category on the result dimension, referring to
  // the given footnotes.
  void Store(OmPivotTable::Coordinates address, int category, double value, std::uint32_t format,
             std::initializer_list<std::optional<int>> notes) const {
    address[std::size_t(_dim)] = category;
    auto number = std::make_unique<OmNumber>(value, format);
    for (const std::optional<int>& note : notes) {
      if (!note) continue;
      number->Footnote(std::int16_t(*note));
      _table->FootnoteAt(*note).AddReference();
    }
    _table->Cell(address, std::move(number));
  }
};

BootstrapResultWriter::BootstrapResultWriter(double levelPct, OmPivotTable& table, int dim,
                                             const OmCellText& groupLabel,
                                             const std::string& sampleText, unsigned sampleCount,
                                             bool hasStandardError, bool hasJackknife,
                                             bool significanceOnly)
    : _my(std::make_unique<Data>()) {
  Data& my = *_my;
  OmDimension& dimension = table.Dimension(dim);  // checks dim
  const int n = dimension.Size();
  my._levelPct = levelPct;
  my._table = &table;
  my._dim = dim;
  if (significanceOnly) {
    my._significance = n;
  } else {
    my._bias = n;
    my._standardError = n + 1;
    my._lower = n + 2;
    my._upper = n + 3;
    my._significance = n + 4;
  }
  my._sampleCount = sampleCount;
  my._coverageCount = CoverageFor(levelPct);
  my._hasStandardError = hasStandardError;
  my._hasJackknife = hasJackknife;
  my._significanceOnly = significanceOnly;

  OmComposite note("Unless otherwise noted, bootstrap results are based on ^1 ^2", true);
  note.Add(OmNumber(double(sampleCount), kCountFormat));
  note.Add(OmStringCell(sampleText, true));
  note.Substitute();
  const int noteIndex = my.AddFootnote(note);

  OmDimension::Node group = dimension.Child(&dimension.Root(), -1, groupLabel, true);
  group->Label()->Footnote(std::int16_t(noteIndex));
  table.FootnoteAt(noteIndex).AddReference();

  if (!significanceOnly) {
    dimension.Child(group, my._bias, Label("Bias"), false);
    dimension.Child(group, my._standardError, Label("Std. Error"), false);
  }
  if (hasStandardError) dimension.Child(group, my._significance, Label("Sig. (2-tailed)"), false);
  if (!significanceOnly) {
    const OmComposite interval = PatternWithNumbers(
        hasJackknife ? "BCa ^1% Confidence Interval" : "^1% Confidence Interval",
        {OmNumber(levelPct, LevelFormat(levelPct))});
    OmDimension::Node bounds = dimension.Child(group, -1, interval, true);
    dimension.Child(bounds, my._lower, Label("Lower"), false);
    dimension.Child(bounds, my._upper, Label("Upper"), false);
  }
}

BootstrapResultWriter::~BootstrapResultWriter() = default;

void BootstrapResultWriter::Write(const OmPivotTable::Coordinates& address, unsigned count,
                                  bool cellHasJackknife, double bias, double standardError,
                                  double significance, double lower, double upper,
                                  unsigned coverageSamples) {
  Data& my = *_my;
  OmPivotTable& table = *my._table;

  std::optional<int> basedOn;
  if (my._sampleCount > count) {
    basedOn = my.AddFootnote(
        PatternWithNumbers("Based on ^1 samples", {OmNumber(double(count), kCountFormat)}));
  }
  if (my._significanceOnly) {
    my.Store(address, my._significance, significance, kSignificanceFormat, {basedOn});
    return;
  }

  std::optional<int> jackknife;
  if (my._hasJackknife && !cellHasJackknife) {
    // Without its jackknife the acceleration is unknown, and a percentile interval under a BCa
    // heading would mislead: the bounds stay empty and the table says why.
    lower = upper = OmNumber::kSysMiss;
    jackknife = my.AddFootnote(Label("Not all jackknife results available, so..."));
    MarkIncomplete();
  }
  // A bound is never left empty without a word: too few replicates for the interval's levels
  // (said also beside a missing jackknife when the count alone would empty it).
  std::optional<int> coverage;
  if ((lower == OmNumber::kSysMiss || upper == OmNumber::kSysMiss) &&
      (!jackknife || count < my._coverageCount)) {
    const unsigned needed = coverageSamples != 0 ? coverageSamples : my._coverageCount;
    coverage = my.AddFootnote(PatternWithNumbers(
        "^1% coverage needs ^2 samples...",
        {OmNumber(my._levelPct, LevelFormat(my._levelPct)), OmNumber(double(needed), kCountFormat)}));
  }

  // Results read in the statistic's own format.
  std::uint32_t format = kDefaultResultFormat;
  OmNumber scratch(0.0);
  if (const OmNumber* statistic = OmPoolingTools::ReadNumber(table, address, scratch)) {
    format = statistic->Format();
  }
  my.Store(address, my._bias, bias, format, {basedOn});
  my.Store(address, my._standardError, standardError, format, {basedOn});
  my.Store(address, my._lower, lower, format, {basedOn, coverage, jackknife});
  my.Store(address, my._upper, upper, format, {basedOn, coverage});
  if (significance >= 0.0) {
    my.Store(address, my._significance, significance, kSignificanceFormat, {basedOn});
  }
}

void BootstrapResultWriter::MarkIncomplete() {
  Data& my = *_my;
  if (my._incompleteMarked) return;
  OmCellText* label = my._table->Label();
  if (!label) return;
  OmPoolingTools::FootnoteCell("Not all bootstrap results available...", *my._table, *label);
  my._incompleteMarked = true;
}

int BootstrapResultWriter::BiasCategory() const { return _my->_bias; }
int BootstrapResultWriter::StandardErrorCategory() const { return _my->_standardError; }
int BootstrapResultWriter::SignificanceCategory() const { return _my->_significance; }
int BootstrapResultWriter::LowerCategory() const { return _my->_lower; }
int BootstrapResultWriter::UpperCategory() const { return _my->_upper; }
unsigned BootstrapResultWriter::CoverageCount() const { return _my->_coverageCount; }

std::uint32_t BootstrapResultWriter::LevelFormat(double levelPct) {
  return levelPct == std::floor(levelPct) ? 0x50005u : 0x1050005u;
}
