#include "backend/omfactory/pooling/PoolingData.h"

#include <cstdint>

#include "backend/omfactory/pooling/OmBootPoolingPattern1.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern2.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern3.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

// Axis A holds the statistics (the pattern's axis); axis B is the other of rows and columns.
int AxisA(unsigned statisticsAxis) {
  return statisticsAxis == OmBootPattern::kColumns ? 1 : statisticsAxis == OmBootPattern::kRows ? 0 : 2;
}
int AxisB(unsigned statisticsAxis) {
  return statisticsAxis == OmBootPattern::kColumns ? 0 : statisticsAxis == OmBootPattern::kRows ? 1 : 2;
}

// Adds a dimension labelled label with the one category category, its label hidden; gives its
// number.
int AddOneCategoryDimension(OmPivotTable& table, const std::string& label, const std::string& category) {
  const int d = table.AddDimension(OmStringCell(label, true));
  OmDimension& dimension = table.Dimension(d);
  dimension.Child(&dimension.Root(), -1, OmStringCell(category, true), false);
  dimension.setDisplayFlags(true, dimension.HideCategories());
  return d;
}

}  // namespace

PoolingData::PoolingData(const OmBootPattern& pattern, OmPivotTable& table,
                         const SvrBootstrapSpecs& specs, const std::string& statisticsDimension)
    : _pattern(&pattern), _table(&table), _specs(&specs) {
  _splitDim = OmPoolingTools::FindBootstrapDim(table);
  _statisticsDim = OmBootPattern::FindDimension(table, statisticsDimension);
  for (const std::string& label : pattern.RequiredDimensions()) {
    const int d = OmBootPattern::FindDimension(table, label);
    if (d < 0) throw OMSException("PoolingData::PoolingData -- dim < 0", d);
    _requiredDims.push_back(d);
  }
}

bool PoolingData::Validate() {
  _jackknifeCount = unsigned(_specs->GetJackknifeList().size());
  _sampleCount = _specs->GetNSamples();
  // One category for the original sample, one per bootstrap and per jackknife sample.
  const std::int64_t categories = _splitDim >= 0 ? _table->Size(_splitDim) : 0;
  _valid = std::int64_t(_sampleCount) + std::int64_t(_jackknifeCount) == categories - 1;
  if (!_valid) {
    _sampleCount = 0;
    const int note = _table->Footnote(
        OmFootnote(OmStringCell("Not all bootstrap results available...", true)), false);
    if (OmCellText* label = _table->Label()) {
      label->Footnote(std::int16_t(note));
      _table->FootnoteAt(note).AddReference();
    }
    return false;
  }
  _sampleText = SamplingText(_specs->GetSamplingMethod());
  return true;
}

PoolingData::PoolingData(const OmBootPoolingPattern1& pattern, OmPivotTable& table,
                         const SvrBootstrapSpecs& specs)
    : PoolingData(pattern, table, specs, pattern.StatisticsDimension().KeyText()) {
  if (!Validate()) return;
  const unsigned axis = pattern.StatisticsAxis();
  if (_statisticsDim < 0) {
    if (pattern.Statistics().size() != 1) {
      throw OMSException("PoolingData::PoolingData -- p.Statistics().size() != 1",
                         double(pattern.Statistics().size()));
    }
    _statisticsDim = AddOneCategoryDimension(table, pattern.StatisticsDimension().KeyText(),
                                             pattern.Statistics().front().first);
    table.Axis(AxisA(axis)).Insert(0, short(_statisticsDim));
  }
  if (pattern.Isolate() && axis != OmBootPattern::kLayers) {
    OmPoolingTools::IsolateDimension(short(_statisticsDim), table.Axis(AxisA(axis)),
                                     table.Axis(AxisB(axis)));
  }
}

PoolingData::PoolingData(const OmBootPoolingPattern2& pattern, OmPivotTable& table,
                         const SvrBootstrapSpecs& specs)
    : PoolingData(pattern, table, specs, pattern.StatisticsDimension().KeyText()) {
  _bootstrapDim = OmBootPattern::FindDimension(table, pattern.BootstrapDimension().KeyText());
  if (!Validate()) return;
  const unsigned axis = pattern.StatisticsAxis();
  if (_bootstrapDim < 0) {
    _bootstrapDim = AddOneCategoryDimension(table, pattern.BootstrapDimension().KeyText(),
                                            pattern.StatisticCategory());
    table.Columns().push_back(short(_bootstrapDim));
  }
  if (pattern.Isolate() && axis != OmBootPattern::kLayers) {
    OmPoolingTools::IsolateDimension(short(_bootstrapDim), table.Axis(AxisA(axis)),
                                     table.Axis(AxisB(axis)));
    if (_statisticsDim >= 0) {
      OmPoolingTools::DemoteDimension(table.Axis(AxisA(axis)), short(_statisticsDim));
    }
  }
}

PoolingData::PoolingData(const OmBootPoolingPattern3& pattern, OmPivotTable& table,
                         ListTree<OmOutputPart*>& list, const SvrBootstrapSpecs& specs)
    : PoolingData(pattern, table, specs, pattern.StatisticsDimension().KeyText()) {
  if (_statisticsDim < 0) {
    throw OMSException("PoolingData::PoolingData -- mStatDimNum < 0", _statisticsDim);
  }
  _list = &list;
  _confidenceLevel = specs.GetCILevelPct();
  Validate();
}

std::string PoolingData::SamplingText(unsigned method) {
  switch (method) {
    case 1: return "stratified bootstrap samples";
    case 2: return "residual bootstrap samples";
    case 3: return "wild bootstrap samples";
    default: return "bootstrap samples";
  }
}
