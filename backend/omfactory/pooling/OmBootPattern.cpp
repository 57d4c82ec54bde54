#include "backend/omfactory/pooling/OmBootPattern.h"

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmPivotTable.h"

OmBootPattern::OmBootPattern(const std::string& procedureName, const std::string& templateName)
    : _procedureName(procedureName, false), _templateName(templateName, false) {}

OmBootPattern::~OmBootPattern() = default;

bool OmBootPattern::MatchesProcedure(const OmCellText& procedureName) const {
  return procedureName.Equals(_procedureName);
}

bool OmBootPattern::MatchesTable(const OmPivotTable& table) const {
  if (!table.TemplateName().Equals(_templateName)) return false;
  if (OmPoolingTools::FindBootstrapDim(table) < 0) return false;
  for (const std::string& label : _requiredDimensions) {
    if (FindDimension(table, label) < 0) return false;
  }
  return true;
}

void OmBootPattern::AddRequiredDimension(const std::string& label) {
  _requiredDimensions.push_back(label);
}

void OmBootPattern::SetStatisticsAxis(unsigned axis) {
  if (axis > kLayers) throw OMSException("OmBootPattern::SetStatisticsAxis -- axis <= 2", axis);
  _statisticsAxis = axis;
}

void OmBootPattern::SetIsolate(bool isolate) { _isolate = isolate; }

int OmBootPattern::FindDimension(const OmPivotTable& table, const std::string& text) {
  return OmPoolingTools::FindDim(table, OmStringCell(text, true));
}
