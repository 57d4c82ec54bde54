// Merges the equal top-level groups of a dimension into the first one: a coefficients table that
// repeats its terms once per imputation block, for instance, ends up with one block of terms whose
// categories hold every block's cells. Used by the column pooling pattern before it reads terms.
#pragma once

#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmPivotTable.h"

class DespookDimension {
public:
  DespookDimension() = default;

  // Merges the top-level groups of dimension d of table, with dimension other held fixed beside
  // it in the cell walk. False, and nothing changed, unless every top-level node is a group with
  // the first group's structure; otherwise every later group is combined into the first and, when
  // all combined, deleted. Returns whether every group combined.
  bool operator()(OmPivotTable& table, int d, int other);

  // Moves the cells of source's categories to target's categories taken in step (subgroups
  // recursively). walk holds the merged dimension first and the other dimension second. For each
  // pair, the first walk position where the source category holds a cell is moved, for every
  // category of the other dimension. False when some source category holds no cell (the other
  // pairs still move). A non-group operand is an OMSException.
  bool Combine(OmDimension::Node target, OmDimension::Node source, OmPivotTable& table,
               const SliceIndex& walk);
};
