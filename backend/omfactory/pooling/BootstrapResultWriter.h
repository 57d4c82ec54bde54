// Adds the bootstrap result group (Bias, Std. Error, Sig. (2-tailed), the confidence interval's
// Lower and Upper) to one dimension of a table, then writes each statistic's results there with
// the footnotes that qualify them. Made by the bootstrap patterns, driven by the cell calculator.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/outputmodel/OmPivotTable.h"

class OmCellText;

class BootstrapResultWriter {
public:
  // Number format of significances: type 5, width 5, three decimals.
  static constexpr std::uint32_t kSignificanceFormat = 0x3050005;
  // Number format of counts in footnotes: type 5, width 14, no decimals.
  static constexpr std::uint32_t kCountFormat = 0x5000e;
  // Format of results whose statistic cell is not a number: type 5, width 8, two decimals.
  static constexpr std::uint32_t kDefaultResultFormat = 0x2050008;

  // Adds to dimension dim of table (borrowed, must outlive the writer) a group labelled with a
  // copy of groupLabel, footnoted "Unless otherwise noted, bootstrap results are based on
  // sampleCount sampleText", holding Bias and Std. Error, Sig. (2-tailed) when hasStandardError,
  // and the interval group (BCa when hasJackknife); with significanceOnly only the significance
  // category. levelPct is the confidence level in percent.
  BootstrapResultWriter(double levelPct, OmPivotTable& table, int dim,
                        const OmCellText& groupLabel, const std::string& sampleText,
                        unsigned sampleCount, bool hasStandardError, bool hasJackknife,
                        bool significanceOnly);
  BootstrapResultWriter(const BootstrapResultWriter&) = delete;
  BootstrapResultWriter& operator=(const BootstrapResultWriter&) = delete;
  ~BootstrapResultWriter();

  // Writes one statistic's results: address is the statistic's cell in the target table, whose
  // coordinate on the result dimension each result category replaces. count is the number of
  // replicate values used; cellHasJackknife tells whether the cell had a complete jackknife
  // range: with jackknife samples asked for and none for this cell, the bounds are written
  // empty and the table's label gets "Not all bootstrap results available...". A negative
  // significance is not written (except with significanceOnly).
  // A bound that is missing otherwise is explained by "^1% coverage needs ^2 samples...", ^2 =
  // coverageSamples when not 0 (what a BCa interval's adjusted levels need), else the
  // percentile interval's CoverageCount().
  void Write(const OmPivotTable::Coordinates& address, unsigned count, bool cellHasJackknife,
             double bias, double standardError, double significance, double lower,
             double upper, unsigned coverageSamples = 0);

  // The category numbers of the results on the result dimension.
  int BiasCategory() const;
  int StandardErrorCategory() const;
  int SignificanceCategory() const;
  int LowerCategory() const;
  int UpperCategory() const;
  // The fewest replicates whose order statistics reach a percentile interval's levels: rank
  // (B + 1)(1 - level) / 2 >= 1, so B = ceil(200 / (100 - level) - 1): 39 for 95%, 22 for 91%.
  unsigned CoverageCount() const;
  // The number format of a confidence level shown in a label: no decimals for a whole number,
  // one decimal otherwise.
  static std::uint32_t LevelFormat(double levelPct);

private:
  // Gives the table's label the incomplete-results footnote, once.
  void MarkIncomplete();

  struct Data;
  std::unique_ptr<Data> _my;
};
