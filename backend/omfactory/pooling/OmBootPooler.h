// The bootstrap pooler of one procedure end: removes the output of the bootstrap samples,
// leaving only the original sample's, and adds bootstrap statistics to the tables that the
// bootstrap patterns know. OmProcedureFactory::EndProcedure has every part accept it.
#pragma once

#include <memory>
#include <vector>

#include "backend/tables/ListTree.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmBootPattern;
class OmCellText;
class OmDimension;
class OmPivotTable;
class SvrBootstrapSpecs;

class OmBootPooler : public OmOutputPart::Visitor {
public:
  using Node = ListTree<OmOutputPart*>::Node;

  // procedureName (the procedure node's label), list (the procedure's output, which owns its
  // parts) and specs are borrowed and must outlive the pooler. With specs, the patterns of the
  // procedure are chosen and the list is tidied at once: the nodes of bootstrap samples go, and
  // a heading that holds only the original sample's object is replaced by it. Without specs
  // (null) nothing is chosen or changed, now or later.
  OmBootPooler(const OmCellText* procedureName, ListTree<OmOutputPart*>& list,
               const SvrBootstrapSpecs* specs);
  OmBootPooler(const OmBootPooler&) = delete;
  OmBootPooler& operator=(const OmBootPooler&) = delete;
  ~OmBootPooler() override;

  // Lets every chosen pattern that accepts the table pool it, then reduces its bootstrap split
  // dimension to the original sample, hides that dimension and detaches split footnotes from
  // its labels.
  void Visit(OmPivotTable& table) override;

  // The patterns chosen for the procedure, in registry order.
  const std::vector<const OmBootPattern*>& Patterns() const;

  // Erases node, with everything below it, when its label names a bootstrap sample (split
  // number above 0), or when it is a table with a bootstrap split dimension that has no footnote
  // and no cell for the original sample; otherwise looks at its children in turn.
  static void PruneReplicateNodes(ListTree<OmOutputPart*>& list, Node node);
  // A heading whose only child is a leaf labelled with split number 0 is removed and the child
  // takes its place (the procedure node excepted); a table there takes the heading's label as its
  // label and title. Other nodes have their children looked at in turn.
  static void FlattenSplitHeadings(ListTree<OmOutputPart*>& list, Node node);
  // Deletes every category of dimension (a table's bootstrap split dimension) but those labelled
  // with the numeric value 0, and their cells; groups stay, even emptied ones.
  static void KeepOriginalSampleCategories(OmDimension& dimension);
  // Detaches from cell (which may be null) the footnotes of table whose text names a bootstrap
  // sample, and marks the table as having had footnotes removed.
  static void StripSplitFootnotes(OmPivotTable& table, OmCellText* cell);

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
