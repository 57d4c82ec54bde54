// The imputation pooler: the end of a procedure runs it over every output part. Each pivot table
// of a procedure run on multiply imputed data is pooled by every registry pattern that matches it,
// then its imputation categories are cut to what MIOUTPUT asks to see; a table left with none is
// to be dropped (Discard()).
#pragma once

#include <memory>

#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmCellText;
class OmMIPattern;
class OmOutputTree;

class OmMIPooler : public OmOutputPart::Visitor {
public:
  // procedureName: the procedure node's label; state: the procedure's output tree, handed to the
  // patterns. Both are borrowed for the pooler's life. pooled, observed and imputed are the
  // MIOUTPUT flags; diagnostics is read by the patterns themselves (MiOutputSettings), not here.
  OmMIPooler(const OmCellText* procedureName, OmOutputTree* state, bool pooled, bool observed,
             bool imputed, bool diagnostics);
  OmMIPooler(const OmMIPooler&) = delete;
  OmMIPooler& operator=(const OmMIPooler&) = delete;
  ~OmMIPooler() override;

  // Pools and prunes one table; Discard() then says whether the table is to be removed.
  void Visit(OmPivotTable& table) override;
  // Other parts are not pooled and stay.
  void Visit(OmHeading& heading) override;
  void Visit(OmTextBlock& block) override;
  void Visit(OmChart& chart) override;
  void Visit(OmAnswerTree& tree) override;
  void Visit(OmModel& model) override;
  void Visit(OmInteractive& interactive) override;

  // The result of the latest visit: every imputation category of the table was removed.
  bool Discard() const { return _discard; }
  // The patterns of this procedure, in registry order.
  std::size_t NPatterns() const;
  const OmMIPattern* Pattern(std::size_t i) const;

  // Removes the imputation categories below node that are not to be shown: the original data
  // (value 0) unless observed, imputations (other values) unless imputed, anything else ("Pooled")
  // unless pooled. Groups stay; once a group keeps something, later groups of its level are left
  // alone. True when every category looked at was removed.
  static bool PruneImputationCategories(OmDimension& dimension, OmDimension::Node node,
                                        bool observed, bool imputed, bool pooled);

  // Marks a table that pooling pushed past its cell limit: a footnote on the title stating the
  // limit, and a red title.
  static void ReportCellLimit(OmPivotTable& table);

private:
  struct Data;
  std::unique_ptr<Data> _my;
  bool _discard = false;
};
