// Pools correlation tables: each coefficient on the Fisher z scale with the standard error
// 1/sqrt(N - 3), N averaged, the significance recomputed, and the significance notes set again on
// the pooled coefficient in the one- or two-tailed style that the imputations' tables used.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmCellText.h"
#include "platform/outputmodel/OmStringCell.h"

class OmPivotTable;

class OmMICorrMatrixPoolingPattern : public OmMIPattern {
public:
  // What a registry row sets; category labels are label paths, each empty when the table has none.
  struct Labels {
    std::string statistics = {};   // the statistics dimension's label
    std::string correlation = {};
    std::string n = {};
    std::string listwiseN = {};    // template of the footnote that states a listwise N
    std::string note05OneTailed = {};
    std::string note01OneTailed = {};
    std::string note05TwoTailed = {};
    std::string note01TwoTailed = {};
    std::string significanceOneTailed = {};
    std::string significanceTwoTailed = {};
  };

  // Reads a listwise-N footnote: its variables name dimensions of the table, and the data values
  // that follow each variable name categories of that dimension.
  class CountFootnoteScraper : public OmCellText::Visitor {
  public:
    explicit CountFootnoteScraper(const OmPivotTable& table);
    ~CountFootnoteScraper() override;

    void Visit(OmVariable& variable) override;
    void Visit(OmNumDataValue& value) override;
    void Visit(OmStringDataValue& value) override;
    void Visit(OmComposite& composite) override;

    const std::vector<int>& Dimensions() const { return _dimensions; }
    // Category numbers (leaf indices), one for each dimension that a value followed.
    const std::vector<int>& Categories() const { return _categories; }

  private:
    void Value(const OmCellText& value);

    const OmPivotTable& _table;
    std::vector<int> _dimensions;
    std::vector<int> _categories;
  };

  // Listwise N by the coordinates a footnote names (-1 for a dimension it does not name).
  using ListwiseCounts = std::map<std::vector<int>, double>;

  static constexpr const char* kNoVariance = "No variance among imputations.";
  static constexpr const char* kNeedsN = "Corr siq requires N...";
  // Significance cells: three decimals.
  static constexpr std::uint32_t kSignificanceFormat = 0x3050028;

  OmMICorrMatrixPoolingPattern(const std::string& procedureName, const std::string& templateName);
  ~OmMICorrMatrixPoolingPattern() override;

  void SetLabels(const Labels& labels);
  const Labels& GetLabels() const { return _labels; }

  // Template name equal, a statistics dimension and an imputation dimension.
  bool MatchesTable(const OmPivotTable& table) const override;
  // Pools every coefficient of the table; false without a correlation category.
  bool Pool(OmPivotTable& table, OmOutputTree* state) const override;

  // The listwise N that the table's footnotes made on the template state, by coordinates.
  static ListwiseCounts ReadListwiseCounts(OmPivotTable& table, const std::string& noteTemplate);

private:
  struct Context;
  void PoolCoefficient(OmPivotTable& table, Context& c) const;

  Labels _labels;
  OmStringCell _statistics;
};
