// Builders of small pivot tables for the pooling tests: string-labelled dimensions, a dimension of
// imputations or bootstrap samples (data values 0 .. last), number cells by coordinates, and
// look-ups of the cells, labels and footnotes that pooling writes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/errors/OMSException.h"
#include "platform/mipool/MPFactory.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/MiOutputSettings.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace pooltest {

constexpr double kSysMiss = OmPoolingTools::kSysMiss;
// F, width 40, two decimals: the format the builders give numbers unless told otherwise.
constexpr std::uint32_t kTwoDecimals = 0x2050028;
constexpr std::uint32_t kNoDecimals = 0x50028;
constexpr const char* kSplitVariable = "$bootstrap_split";

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
  int Imputations(int m, bool original = true) {
    return Values(OmVariable("Imputation_", "Imputation Number"), original ? 0 : 1, m);
  }
  // The bootstrap split dimension: categories 0 (the original sample) .. last.
  int SplitDim(int last) { return Values(OmVariable(kSplitVariable, ""), 0, last); }
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
  // Puts value(k) at `at` with coordinate k in dimension d, for k = 0 .. last; a system-missing
  // value(k) leaves that cell out.
  void Replicates(OmPivotTable::Coordinates at, int d, int last, const std::function<double(int)>& value) {
    for (int k = 0; k <= last; ++k) {
      at[std::size_t(d)] = k;
      if (const double v = value(k); v != kSysMiss) Number(at, v);
    }
  }

  OmPivotTable& operator*() { return *_table; }
  OmPivotTable* operator->() { return _table.get(); }
  // The table, for an output tree to own.
  std::unique_ptr<OmPivotTable> Release() { return std::move(_table); }

private:
  int Values(const OmVariable& variable, int first, int last) {
    const int d = _table->AddDimension(variable);
    OmDimension& dim = _table->Dimension(d);
    for (int i = first; i <= last; ++i) {
      dim.Child(&dim.Root(), -1, OmNumDataValue(variable.Name(), "", double(i), kNoDecimals), false);
    }
    return d;
  }

  std::unique_ptr<OmPivotTable> _table;
};

// The number cell at coords; fails the test when there is none.
inline const OmNumber& NumberAt(const OmPivotTable& table, const OmPivotTable::Coordinates& at) {
  const auto* number = dynamic_cast<const OmNumber*>(table.Cell(at));
  if (!number) throw std::runtime_error("no number cell at the coordinates");
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

// The labels of the leaves and groups below a node, depth first, groups before their children.
inline std::vector<std::string> Labels(const OmDimensionNode& node) {
  std::vector<std::string> labels;
  for (const auto& child : node.Children()) {
    labels.push_back(child->Label() ? child->Label()->Text() : std::string());
    for (std::string& below : Labels(*child)) labels.push_back(std::move(below));
  }
  return labels;
}
inline std::vector<std::string> Labels(const OmDimension& dimension) { return Labels(dimension.Root()); }

// The category of dimension d whose label reads text (depth first), or -1.
inline int CategoryLabelled(const OmPivotTable& table, int d, const std::string& text) {
  for (OmDimension::ConstNode leaf : table.Dimension(d).Leaves()) {
    if (leaf->Label() && leaf->Label()->Text() == text) return leaf->LeafIndex();
  }
  return -1;
}

// The text of the OMSException that run throws (its message and numbers), or "no exception".
inline std::string ErrorOf(const std::function<void()>& run) {
  try {
    run();
  } catch (const OMSException& e) {
    return e.what();
  }
  return "no exception";
}

// Specifications of samples bootstrap samples at levelPct, without jackknife.
inline SvrBootstrapSpecs Specs(unsigned samples, double levelPct = 95.0) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(samples);
  specs.SetCILevelPct(levelPct);
  return specs;
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
  std::vector<double> estimates, standardErrors, significance, fractionMissing;
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
  Reference r{params.Estimates(), params.PooledStandardErrors(), {}, {}};
  std::vector<double> total, increase, efficiency, df, wald;
  computation->Diagnostics(total, increase, r.fractionMissing, efficiency, r.significance);
  computation->DfAndSignificance({0.0}, df, wald, r.significance);
  return r;
}

}  // namespace pooltest
