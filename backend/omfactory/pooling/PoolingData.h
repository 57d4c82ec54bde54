// What a bootstrap pattern learns about one table before pooling it: where the statistics, the
// bootstrap results and the bootstrap splits are, how many samples the table holds and whether
// they are all there. Building it may add a missing result dimension and rearrange the axes.
#pragma once

#include <string>
#include <vector>

#include "backend/tables/ListTree.h"

class OmBootPattern;
class OmBootPoolingPattern1;
class OmBootPoolingPattern2;
class OmBootPoolingPattern3;
class OmOutputPart;
class OmPivotTable;
class SvrBootstrapSpecs;

class PoolingData {
public:
  // Table and specs are borrowed for the pooling of one table. A table whose bootstrap split
  // dimension does not hold 1 + samples + jackknife samples categories is not valid: its label
  // gets "Not all bootstrap results available..." and nothing else changes. A missing required
  // dimension is an OMSException "PoolingData::PoolingData -- dim < 0".
  //
  // Pattern1: a missing statistics dimension is added (the pattern must have one estimate) at the
  // front of the statistics axis, which is then isolated.
  PoolingData(const OmBootPoolingPattern1& pattern, OmPivotTable& table,
              const SvrBootstrapSpecs& specs);
  // Pattern2: a missing bootstrap dimension is added to the columns with one category
  // "Statistic"; it is isolated and the statistics dimension leads its axis.
  PoolingData(const OmBootPoolingPattern2& pattern, OmPivotTable& table,
              const SvrBootstrapSpecs& specs);
  // Pattern3: the statistics dimension must be present; no dimension or axis changes.
  PoolingData(const OmBootPoolingPattern3& pattern, OmPivotTable& table,
              ListTree<OmOutputPart*>& list, const SvrBootstrapSpecs& specs);

  const OmBootPattern& Pattern() const { return *_pattern; }
  OmPivotTable& Table() const { return *_table; }
  const SvrBootstrapSpecs& Specs() const { return *_specs; }
  // "bootstrap samples", "stratified bootstrap samples"...; empty when not valid.
  const std::string& SampleText() const { return _sampleText; }
  int StatisticsDim() const { return _statisticsDim; }
  int BootstrapDim() const { return _bootstrapDim; }
  int SplitDim() const { return _splitDim; }
  unsigned JackknifeCount() const { return _jackknifeCount; }
  // The number of bootstrap samples; 0 when the table is not valid.
  unsigned SampleCount() const { return _sampleCount; }
  ListTree<OmOutputPart*>* List() const { return _list; }
  double ConfidenceLevel() const { return _confidenceLevel; }
  const std::vector<int>& RequiredDims() const { return _requiredDims; }
  bool Valid() const { return _valid; }

  // The text of a sampling method: 0 (and anything above 3) "bootstrap samples", 1 "stratified
  // bootstrap samples", 2 "residual bootstrap samples", 3 "wild bootstrap samples".
  static std::string SamplingText(unsigned method);

private:
  PoolingData(const OmBootPattern& pattern, OmPivotTable& table, const SvrBootstrapSpecs& specs,
              const std::string& statisticsDimension);
  // Counts, validity (with its footnote) and sample text; false when not valid.
  bool Validate();

  const OmBootPattern* _pattern;
  OmPivotTable* _table;
  const SvrBootstrapSpecs* _specs;
  std::string _sampleText;
  int _statisticsDim = -1;
  int _bootstrapDim = -1;
  int _splitDim = -1;
  unsigned _jackknifeCount = 0;
  unsigned _sampleCount = 0;
  ListTree<OmOutputPart*>* _list = nullptr;
  double _confidenceLevel = 0.0;
  std::vector<int> _requiredDims;
  bool _valid = false;
};
