// One kind of table of one bootstrapped procedure that gets bootstrap results: which procedure
// and table template it serves and which dimensions the table must have. The registry makes the
// patterns once; the bootstrap pooler asks them whether they apply and lets them pool.
#pragma once

#include <string>
#include <vector>

#include "backend/tables/ListTree.h"
#include "platform/outputmodel/OmStringCell.h"

class OmCellText;
class OmOutputPart;
class OmPivotTable;
class ReplicateValues;
class SvrBootstrapSpecs;

class OmBootPattern {
public:
  // The axis that holds the statistics dimension.
  enum Axis : unsigned { kRows = 0, kColumns = 1, kLayers = 2 };

  OmBootPattern(const std::string& procedureName, const std::string& templateName);
  OmBootPattern(const OmBootPattern&) = delete;
  OmBootPattern& operator=(const OmBootPattern&) = delete;
  virtual ~OmBootPattern();

  // The procedure node's label equals the procedure name.
  virtual bool MatchesProcedure(const OmCellText& procedureName) const;
  // The table's template name equals the pattern's, the table has a bootstrap split dimension and
  // every required dimension. The kinds add their own conditions.
  virtual bool MatchesTable(const OmPivotTable& table) const;
  // Adds bootstrap results for table, which belongs to list (the procedure's output, which owns
  // its parts); specs may be null (nothing happens then). True only when new tables were made.
  bool Pool(OmPivotTable& table, ListTree<OmOutputPart*>& list,
            const SvrBootstrapSpecs* specs) const {
    return PoolWith(table, list, specs, nullptr);
  }
  // The same with the table's sample values gathered beforehand (see ReplicateCollector; null:
  // gathered where needed), as the bootstrap pooler does once for every pattern of a table.
  virtual bool PoolWith(OmPivotTable& table, ListTree<OmOutputPart*>& list,
                        const SvrBootstrapSpecs* specs, const ReplicateValues* values) const = 0;

  // Settings, given once by the registry.
  void AddRequiredDimension(const std::string& label);
  void SetStatisticsAxis(unsigned axis);
  void SetIsolate(bool isolate);

  const OmStringCell& ProcedureName() const { return _procedureName; }
  const OmStringCell& TemplateName() const { return _templateName; }
  const std::vector<std::string>& RequiredDimensions() const { return _requiredDimensions; }
  unsigned StatisticsAxis() const { return _statisticsAxis; }
  // The other dimensions of the result dimension's axis move to the other axis.
  bool Isolate() const { return _isolate; }

  // The dimension of table labelled text (a label this system or a procedure wrote), or -1.
  static int FindDimension(const OmPivotTable& table, const std::string& text);

private:
  OmStringCell _procedureName;
  OmStringCell _templateName;
  std::vector<std::string> _requiredDimensions;
  unsigned _statisticsAxis = kColumns;
  bool _isolate = true;
};
