// The bundled example streams (examples/*.oms), written message by message as a procedure of the
// server would send them. examplegen saves them; a test checks that the committed files are what
// this code writes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/stream/OmStreamWriter.h"

class OmExampleStreams {
public:
  struct Example {
    std::string name;  // file name without ".oms"
    OmStreamWriter stream;
  };

  // Descriptives of three variables: log, a notes table, a heading and a statistics table with
  // grouped columns, footnotes and a marker.
  // language: the OLANG setting, code: the procedure's language (the German and French examples
  // are these streams in another output language).
  static OmStreamWriter Descriptives(std::string_view language = "English", std::string_view code = "en");
  // Crosstabs sent from a big-endian machine: a case processing summary with nested column
  // groups, and a crosstabulation with grouped categories, a layer dimension and composite labels.
  static OmStreamWriter Crosstabs(std::string_view language = "English", std::string_view code = "en");
  // Descriptives under SPLIT FILE by region with German output: one split table filled group by
  // group through split categories.
  static OmStreamWriter SplitFile();
  // Log lines between page titles, and a procedure that prints a text block.
  static OmStreamWriter LogPages();
  // Regression on the original data and five imputations: descriptives, correlations and
  // coefficients tables that the session pools (OmExampleMIRegression.cpp).
  static OmStreamWriter MIRegression(std::string_view language = "English", std::string_view code = "en");
  // Correlations on the original data and five imputations, pairwise (N and significance cells,
  // marked coefficients) and listwise (N in footnotes), pooled (OmExampleMICorrelations.cpp).
  static OmStreamWriter MICorrelations();
  // Descriptives with 1000 bootstrap samples: a statistics table with the bootstrap split
  // dimension and one case summary per split, pooled to the original sample
  // (OmExampleBootstrap.cpp). missingEvery > 0: every missingEvery-th sample has no income
  // standard deviation, so its bootstrap results carry the note that not all were available.
  static OmStreamWriter BootstrapDescriptives(std::string_view language = "English",
                                              std::string_view code = "en", int samples = 1000,
                                              int missingEvery = 0);

  // An independent-samples t test on the original data and five imputations: group statistics
  // and the test, pooled (OmExampleTTest.cpp).
  static OmStreamWriter MITTest();
  // Regression with 100 bootstrap samples and 20 jackknife samples: descriptives, correlations,
  // coefficients and model summary, each pooled its own way (OmExampleBootRegression.cpp).
  static OmStreamWriter BootstrapRegression();

  // Every example, in file-name order.
  static std::vector<Example> All();
};
