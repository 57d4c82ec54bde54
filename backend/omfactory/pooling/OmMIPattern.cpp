#include "backend/omfactory/pooling/OmMIPattern.h"

#include "platform/outputmodel/OmPivotTable.h"

OmMIPattern::OmMIPattern(const std::string& procedureName, const std::string& templateName)
    : _procedureName(procedureName, true),
      _templateName(templateName, true),
      _procedureHash(_procedureName.Hash()) {}

OmMIPattern::~OmMIPattern() = default;

bool OmMIPattern::MatchesProcedure(const OmCellText& procedureName) const {
  return procedureName.Equals(_procedureName);
}

bool OmMIPattern::TemplateMatches(const OmPivotTable& table) const {
  return table.TemplateName().Equals(_templateName);
}
