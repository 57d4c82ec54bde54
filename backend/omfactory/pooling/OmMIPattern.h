// A multiple-imputation pooling pattern: knows one table of one procedure, where its statistics sit
// and how they pool. The registry (MIPoolingPatterns) makes every pattern once; the imputation
// pooler (OmMIPooler) keeps those of its procedure and lets each table that matches be pooled.
#pragma once

#include <cstddef>
#include <string>

#include "platform/outputmodel/OmStringCell.h"

class OmCellText;
class OmOutputTree;
class OmPivotTable;

class OmMIPattern {
public:
  // Both names become translatable string cells, as the procedure writes them.
  OmMIPattern(const std::string& procedureName, const std::string& templateName);
  OmMIPattern(const OmMIPattern&) = delete;
  OmMIPattern& operator=(const OmMIPattern&) = delete;
  virtual ~OmMIPattern();

  // The procedure node's label equals the pattern's procedure name (same cell type, same text).
  virtual bool MatchesProcedure(const OmCellText& procedureName) const;
  // The hash of the procedure name: a label whose Hash differs does not match. Every procedure
  // is checked against every pattern, and comparing hashes first saves most of the comparisons.
  std::size_t ProcedureHash() const { return _procedureHash; }
  // The table is one this pattern pools (template name, and the kind's own dimension tests).
  virtual bool MatchesTable(const OmPivotTable& table) const = 0;
  // Adds pooled results to table. state is the procedure's output tree, handed on by the pooler
  // and not used by the patterns of this library. True when something was pooled. Never throws
  // for a numerical problem: a value that cannot be pooled is system-missing with a footnote.
  virtual bool Pool(OmPivotTable& table, OmOutputTree* state) const = 0;

  const OmStringCell& ProcedureName() const { return _procedureName; }
  const OmStringCell& TemplateName() const { return _templateName; }

protected:
  // The table's template name equals the pattern's.
  bool TemplateMatches(const OmPivotTable& table) const;

private:
  OmStringCell _procedureName;
  OmStringCell _templateName;
  std::size_t _procedureHash;
};
