// Builders of small bootstrapped tables for the bootstrap pooling tests: a bootstrap split
// dimension of data values 0 .. n, replicate cells filled from a function, and the texts of
// labels and footnotes to check results against.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmVariable.h"
#include "MITableBuilder.h"
#include "platform/outputmodel/OmNumber.h"

namespace boottest {

using mitest::kSysMiss;
using mitest::NotesAt;
using mitest::NotesOf;
using mitest::NumberAt;
using mitest::TableBuilder;

constexpr const char* kSplitVariable = "$bootstrap_split";

// The bootstrap split dimension with categories 0 (the original sample) .. last.
inline int SplitDim(OmPivotTable& table, int last) {
  const int d = table.AddDimension(OmVariable(kSplitVariable, ""));
  OmDimension& dim = table.Dimension(d);
  for (int i = 0; i <= last; ++i) {
    dim.Child(&dim.Root(), -1, OmNumDataValue(kSplitVariable, "", double(i), mitest::kNoDecimals), false);
  }
  return d;
}
inline int SplitDim(TableBuilder& builder, int last) { return SplitDim(*builder, last); }

// A string-labelled dimension with one category per label.
inline int Dim(OmPivotTable& table, const std::string& label, const std::vector<std::string>& categories) {
  const int d = table.AddDimension(OmStringCell(label));
  OmDimension& dim = table.Dimension(d);
  for (const std::string& c : categories) dim.Child(&dim.Root(), -1, OmStringCell(c), false);
  return d;
}

// Specifications of samples bootstrap samples at levelPct, without jackknife.
inline SvrBootstrapSpecs Specs(unsigned samples, double levelPct = 95.0) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(samples);
  specs.SetCILevelPct(levelPct);
  return specs;
}

// Puts value(k) at `at` with split coordinate k, for k = 0 .. last; a system-missing value(k)
// leaves that cell out.
inline void Replicates(OmPivotTable& table, OmPivotTable::Coordinates at, int splitDim, int last,
                       const std::function<double(int)>& value) {
  for (int k = 0; k <= last; ++k) {
    at[std::size_t(splitDim)] = k;
    const double v = value(k);
    if (v != kSysMiss) table.Cell(at, OmNumber(v, mitest::kTwoDecimals));
  }
}
inline void Replicates(TableBuilder& builder, OmPivotTable::Coordinates at, int splitDim, int last,
                       const std::function<double(int)>& value) {
  Replicates(*builder, std::move(at), splitDim, last, value);
}

// The labels of the leaves and groups of a dimension, depth first, groups before their children.
inline void LabelsBelow(const OmDimensionNode& node, std::vector<std::string>& labels) {
  for (const auto& child : node.Children()) {
    labels.push_back(child->Label() ? child->Label()->Text() : std::string());
    LabelsBelow(*child, labels);
  }
}
inline std::vector<std::string> Labels(const OmDimension& dimension) {
  std::vector<std::string> labels;
  LabelsBelow(dimension.Root(), labels);
  return labels;
}

// The texts of all footnotes of a table.
inline std::vector<std::string> FootnoteTexts(const OmPivotTable& table) {
  std::vector<std::string> texts;
  for (const OmFootnote& note : table.Footnotes()) texts.push_back(note.Text().Text());
  return texts;
}

// The node of dimension d whose label reads text (depth first), or null.
inline const OmDimensionNode* NodeLabelled(const OmDimensionNode& node, const std::string& text) {
  for (const auto& child : node.Children()) {
    if (child->Label() && child->Label()->Text() == text) return child.get();
    if (const OmDimensionNode* found = NodeLabelled(*child, text)) return found;
  }
  return nullptr;
}
inline int CategoryLabelled(const OmPivotTable& table, int d, const std::string& text) {
  const OmDimensionNode* node = NodeLabelled(table.Dimension(d).Root(), text);
  return node ? node->LeafIndex() : -1;
}

}  // namespace boottest
