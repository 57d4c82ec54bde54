// Pools the coefficient tables of models: a key dimension of terms or parameters ("Variables",
// "Parameter") and a statistics dimension of columns ("B", "Std. Error", "t", ...). One pooling
// computation takes every term of a model at once; correlation columns pool on the Fisher z scale;
// models whose terms differ between imputations are not pooled.
#pragma once

#include <string>

#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmStringCell.h"

class OmMIColumnPoolingPattern : public OmMIPattern {
public:
  // What a registry row sets; column labels are label paths, each empty when the table has none.
  struct Labels {
    std::string statistics = {};     // the statistics dimension's label
    std::string key = {};            // the key (terms) dimension's label
    std::string correlation = {};    // a correlation column pooled through Fisher z
    std::string estimate = {};
    std::string standardError = {};
    std::string wald = {};
    std::string test = {};
    std::string df = {};
    std::string significance = {};
    std::string interval = {};       // interval group label with its "^1" placeholder
    std::string expB = {};
    std::string expBInterval = {};
    std::string redundancy = {};     // the footnote text that marks a redundant parameter
  };

  // Footnote on the title of a table whose models were left unpooled.
  static constexpr const char* kTermsVary = "Models not pooled - terms vary...";
  // Footnote on every pooled Wald statistic.
  static constexpr const char* kFDistribution =
      "Significance computed using F distribution, not Chi-square.";

  OmMIColumnPoolingPattern(const std::string& procedureName, const std::string& templateName);
  ~OmMIColumnPoolingPattern() override;

  void SetLabels(const Labels& labels);
  const Labels& GetLabels() const { return _labels; }

  // Template name equal; Pool checks the dimensions.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Pools every combination of the categories of the other dimensions; true when one was pooled.
  bool Pool(OmPivotTable& table, OmOutputTree* state) const override;

private:
  struct Context;
  void BuildContext(OmPivotTable& table, Context& c) const;
  void PoolCombination(OmPivotTable& table, Context& c) const;
  long ReadImputations(OmPivotTable& table, Context& c) const;
  void WritePooled(OmPivotTable& table, Context& c, long error) const;
  // False when some imputation states the term's estimate but no usable standard error.
  bool HasStandardErrors(const OmPivotTable& table, Context& c, int term) const;
  // The pooled estimates of the terms left out of the model: empty, with the redundancy note.
  void WriteUnpooled(OmPivotTable& table, Context& c) const;

  Labels _labels;
  OmStringCell _statistics;
  OmStringCell _key;
};
