#include "backend/omfactory/pooling/OmMICellPoolingPattern0.h"

#include <cmath>
#include <cstdint>
#include <memory>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "backend/omfactory/pooling/SliceIndex.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"

OmMICellPoolingPattern0::OmMICellPoolingPattern0(const std::string& procedureName,
                                                 const std::string& templateName)
    : OmMIPattern(procedureName, templateName) {}

bool OmMICellPoolingPattern0::MatchesTable(const OmPivotTable& table) const {
  return TemplateMatches(table) && OmPoolingTools::FindImputationDim(table) >= 0;
}

bool OmMICellPoolingPattern0::Pool(OmPivotTable& table, OmOutputTree*) const {
  const int imputationDim = OmPoolingTools::FindImputationDim(table);
  if (imputationDim < 0) return false;
  const int original = OmPoolingTools::FindOriginalDataImputation(table, imputationDim);
  const int pooled = OmPoolingTools::MakePooledCategory(table, imputationDim);
  const int categories = table.Size(imputationDim);
  const SliceIndex walk(table, {imputationDim});
  OmPivotTable::Coordinates coords;
  OmNumber scratch(0.0);
  for (std::uint64_t p = 0; p < walk.Count(); ++p) {
    walk.Position(p, coords);
    int visited = 0;
    int found = 0;
    double sum = 0.0;
    std::uint32_t format = 0;
    for (int i = 0; i < categories; ++i) {
      if (i == original || i == pooled) continue;
      ++visited;
      coords[std::size_t(imputationDim)] = i;
      const OmNumber* cell = OmPoolingTools::ReadNumber(table, coords, scratch);
      if (!cell || cell->IsSysMiss()) continue;
      sum += cell->Value();
      format = cell->Format();
      ++found;
    }
    if (visited == 0) continue;
    const double value = found > 0 ? sum / double(visited) : OmPoolingTools::kSysMiss;
    if (sum != std::floor(sum) && OmNumber::Decimals(format) == 0) {
      format = (format & 0x00FFFFFFu) | (1u << 24);
    }
    coords[std::size_t(imputationDim)] = pooled;
    table.Cell(coords, std::make_unique<OmNumber>(value, format));
  }
  return true;
}
