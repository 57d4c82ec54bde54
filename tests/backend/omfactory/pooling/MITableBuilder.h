// Builders of small pivot tables for the imputation pooling tests: string-labelled dimensions, an
// imputation dimension of data values 0 .. m, number cells by labels, and look-ups of pooled cells.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/MiOutputSettings.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace mitest {

constexpr double kSysMiss = OmPoolingTools::kSysMiss;
// F, width 40, two decimals: the format the builders give numbers unless told otherwise.
constexpr std::uint32_t kTwoDecimals = 0x2050028;
constexpr std::uint32_t kNoDecimals = 0x50028;

// A table under construction. Dimensions are added in order; categories are numbered as added.
class TableBuilder {
public:
  explicit TableBuilder(const std::string& templateName, const std::string& title = "Table")
      : _table(std::make_unique<OmPivotTable>(OmStringCell(title), OmStringCell(templateName))) {
    _table->SetTableTitle(OmStringCell(title));
  }

  // A dimension labelled with a string cell, with one category per label.
  int Dim(const std::string& label, const std::vector<std::string>& categories) {
    const int d = _table->AddDimension(OmStringCell(label));
    for (const std::string& c : categories) Category(d, c);
    return d;
  }
  // The imputation dimension: categories 0 (the original data, when original) and 1 .. m.
  int Imputations(int m, bool original = true, const std::string& variable = "Imputation_") {
    const int d = _table->AddDimension(OmVariable(variable, "Imputation Number"));
    OmDimension& dim = _table->Dimension(d);
    for (int i = original ? 0 : 1; i <= m; ++i) {
      dim.Child(&dim.Root(), -1, OmNumDataValue(variable, "", double(i), kNoDecimals), false);
    }
    return d;
  }
  int Category(int d, const std::string& label) {
    OmDimension& dim = _table->Dimension(d);
    return dim.Child(&dim.Root(), -1, OmStringCell(label), false)->LeafIndex();
  }
  // A group of categories directly under the root; returns the categories' numbers.
  std::vector<int> Group(int d, const std::string& label, const std::vector<std::string>& categories) {
    OmDimension& dim = _table->Dimension(d);
    OmDimension::Node group = dim.Child(&dim.Root(), -1, OmStringCell(label), true);
    std::vector<int> numbers;
    for (const std::string& c : categories) {
      numbers.push_back(dim.Child(group, -1, OmStringCell(c), false)->LeafIndex());
    }
    return numbers;
  }

  void Number(const OmPivotTable::Coordinates& at, double value, std::uint32_t format = kTwoDecimals) {
    _table->Cell(at, OmNumber(value, format));
  }

  OmPivotTable& operator*() { return *_table; }
  OmPivotTable* operator->() { return _table.get(); }
  OmPivotTable& Table() { return *_table; }

private:
  std::unique_ptr<OmPivotTable> _table;
};

// The number cell at coords; fails the test when there is none.
inline const OmNumber& NumberAt(const OmPivotTable& table, const OmPivotTable::Coordinates& at) {
  const auto* number = dynamic_cast<const OmNumber*>(table.Cell(at));
  if (!number) {
    ADD_FAILURE() << "no number cell at the coordinates";
    static const OmNumber none(kSysMiss);
    return none;
  }
  return *number;
}

// The texts of the footnotes that the cell at coords (or a given cell) refers to.
inline std::vector<std::string> NotesOf(const OmPivotTable& table, const OmCellText* cell) {
  std::vector<std::string> notes;
  if (!cell) return notes;
  for (std::int16_t i : cell->Footnotes()) notes.push_back(table.Footnotes().at(std::size_t(i)).Text().Text());
  return notes;
}
inline std::vector<std::string> NotesAt(const OmPivotTable& table, const OmPivotTable::Coordinates& at) {
  return NotesOf(table, table.Cell(at));
}

// The MIOUTPUT flags for one test, restored afterwards.
class ScopedMiOutput {
public:
  ScopedMiOutput(bool pooled, bool observed, bool imputed, bool diagnostics) {
    MiOutputSettings(_pooled, _observed, _imputed, _diagnostics);
    SetMiOutputSettings(pooled, observed, imputed, diagnostics);
  }
  ~ScopedMiOutput() { SetMiOutputSettings(_pooled, _observed, _imputed, _diagnostics); }

private:
  bool _pooled = true, _observed = true, _imputed = true, _diagnostics = true;
};

// The pooling computation run directly on per-imputation estimates (and standard errors, when
// given): the reference the pooled cells are checked against.
struct Reference {
  std::vector<double> estimates;
  std::vector<double> standardErrors;
  std::vector<double> significance;
  std::vector<double> fractionMissing;
  std::vector<double> between;
};
inline Reference Pooled(const std::vector<std::vector<double>>& estimates,
                        const std::vector<std::vector<double>>& standardErrors = {}) {
  auto computation = MPFactory::CreateMPCompAlgorithm();
  MPParamContainer params;
  params.SetCount(standardErrors.empty() ? MPParamContainer::kEstimatesOnly
                                         : MPParamContainer::kWithStandardErrors);
  for (std::size_t i = 0; i < estimates.size(); ++i) {
    params.Estimates() = estimates[i];
    params.StandardErrors() = standardErrors.empty() ? std::vector<double>{} : standardErrors[i];
    EXPECT_TRUE(computation->AddImputation(params).IsOK());
  }
  EXPECT_TRUE(computation->Combine(params).IsOK());
  Reference r;
  r.estimates = params.Estimates();
  r.standardErrors = params.PooledStandardErrors();
  r.between = params.BetweenVariances();
  std::vector<double> total, increase, efficiency, df, wald;
  computation->Diagnostics(total, increase, r.fractionMissing, efficiency, r.significance);
  computation->DfAndSignificance({0.0}, df, wald, r.significance);
  return r;
}

}  // namespace mitest
