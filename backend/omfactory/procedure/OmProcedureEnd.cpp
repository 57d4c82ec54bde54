// OmProcedureFactory::EndProcedure: finishing a procedure's tree before the session takes it.

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactoryData.h"
#include "backend/omfactory/procedure/OmProcedurePoolers.h"
#include "backend/omfactory/sort/OmFactorySorter.h"
#include "backend/omfactory/translate/OmOutputTreeTranslator.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"

namespace {

using TreeNode = OmOutputTree::Node;

// A part that shows nothing of the procedure's own: its notes table, the active-dataset text and
// a warnings table without cells. Looking at an empty warnings table also excludes it.
bool IsTrivial(OmOutputPart* part) {
  if (part == nullptr) return false;
  if (auto* table = dynamic_cast<OmPivotTable*>(part)) {
    if (table->IsNotes()) return true;
    if (table->IsWarnings() && table->NCells() == 0) {
      table->_keep = 0;
      return true;
    }
    return false;
  }
  if (dynamic_cast<OmTextBlock*>(part) != nullptr) return part->LabelText() == "Active Dataset";
  return false;
}

// Drops a procedure that has nothing to show; true when it did (the end of the procedure stops).
bool DropIfNothingToShow(OmOutputTree& tree) {
  if (tree.Size() <= 1) return true;
  TreeNode procedure = tree.Root().FirstChild();
  if (procedure.IsEnd()) return true;
  if (!procedure.HasChildren()) {
    tree.Prune(procedure);
    return true;
  }
  for (TreeNode n = procedure.Next(); !n.IsEnd(); ++n) {
    if (!IsTrivial(n.Value())) return false;
  }
  tree.Prune(procedure);
  return true;
}

// Removes excluded parts with their subtrees, and headings (procedures included) left without
// children. Nodes are looked at after their descendants, so a heading whose objects all went goes
// too, and so do the headings above it that it leaves empty.
void PruneEmptyAndExcluded(OmOutputTree& tree) {
  tree.Prune([](const TreeNode& n) {
    OmOutputPart* part = n.Value();
    if (part == nullptr) return false;
    if (dynamic_cast<OmHeading*>(part) != nullptr) return !n.HasChildren();
    return part->_keep == 0;
  });
}

// Takes one node out of the tree and hands its part over; children, if any, move up in its place.
std::unique_ptr<OmOutputPart> Unlink(OmOutputTree& tree, TreeNode node) {
  std::unique_ptr<OmOutputPart> part(node.Value());
  node.Value() = nullptr;
  tree.EraseOne(node);
  return part;
}

// The end's last steps: excluded parts and the headings that pooling and selection left empty
// go, and the procedure node shows its translated name.
void PruneAndName(OmOutputTree& tree) {
  PruneEmptyAndExcluded(tree);
  if (tree.Empty()) return;
  const TreeNode procedureNode = tree.Root().FirstChild();
  if (procedureNode.IsEnd() || procedureNode.Value() == nullptr) return;
  auto& procedure = dynamic_cast<OmProcedure&>(*procedureNode.Value());
  if (!procedure.TranslatedName().empty()) {
    procedure.setLabel(std::make_unique<OmStringCell>(procedure.TranslatedName(), false));
  }
}

}  // namespace

void OmProcedureFactory::EndProcedure(std::uint32_t specsLength, const char* specs, bool pooled,
                                      bool observed, bool imputed, bool diagnostics) {
  Data& my = *_my;
  my.CheckOpen("EndProcedure");
  if (specs == nullptr && specsLength > 0) {
    throw OMSException("OmProcedureFactory::EndProcedure -- specs == nullptr", double(specsLength));
  }
  // From here on nodes go: nothing may keep pointing into the tree.
  my._ended = true;
  my._labels.Clear();
  my._textBlock = nullptr;
  my._charts.clear();
  my._interactives.clear();
  my._answerTrees.clear();
  my._models.clear();
  my._modelMessages.reset();
  OmOutputTree& tree = my._tree;

  for (OmOutputPart* part : tree) {
    if (part != nullptr) part->ReleaseBuilder();
  }

  if (DropIfNothingToShow(tree)) return;
  PruneEmptyAndExcluded(tree);
  if (tree.Empty()) return;

  if (tree.Root().HasChildren()) {
    const TreeNode procedureNode = tree.Root().FirstChild();
    const OmCellText* procedureName = procedureNode.Value() ? procedureNode.Value()->Label() : nullptr;
    const bool bootstrapped = specsLength > 0;

    // Parts taken out during the visits stay alive until the poolers, which may still refer to
    // them, are gone (destroyed in reverse order of declaration).
    std::vector<std::unique_ptr<OmOutputPart>> removed;
    std::unique_ptr<OmEndPooler> miPooler = my._poolers->MakeMIPooler(
        procedureName, tree, pooled, observed, imputed, diagnostics);
    SvrBootstrapSpecs bootSpecs;
    std::unique_ptr<OmEndPooler> bootPooler;
    if (bootstrapped) {
      SvrBootstrapSpecsSerializer::deserializeSpecs(std::string(specs, specsLength), bootSpecs);
      bootPooler = my._poolers->MakeBootPooler(procedureName, tree, bootSpecs);
    }
    OmFactorySorter sorter;
    OmCellTextTranslator& labelTranslator = my._translator.GetCellTextTranslator();

    for (TreeNode n = tree.Begin(); !n.IsEnd();) {
      const TreeNode next = n.Next();
      OmOutputPart* part = n.Value();
      if (part == nullptr) {
        n = next;
        continue;
      }
      if (bootPooler) bootPooler->Pool(*part);
      if (miPooler) {
        miPooler->Pool(*part);
        if (miPooler->Discard()) {
          removed.push_back(Unlink(tree, n));
          n = next;
          continue;
        }
      }
      // A bootstrapped procedure's tables are selected only now, after pooling, so that only
      // the tables that pooling keeps count as instances.
      if (bootstrapped && dynamic_cast<OmPivotTable*>(part) != nullptr) {
        part->Accept(my._selector);
        if (part->_keep == 0) {
          removed.push_back(Unlink(tree, n));
          n = next;
          continue;
        }
      }
      if (OmCellText* label = part->Label()) label->Accept(labelTranslator);
      part->Accept(my._translator);
      part->Accept(sorter);
      n = next;
    }
  }

  PruneAndName(tree);
}

void OmProcedureFactory::FinishLatePart(OmOutputTree::Node node) {
  Data& my = *_my;
  if (!my._ended || node.IsEnd() || node.Value() == nullptr) return;
  OmOutputPart& part = *node.Value();
  if (OmCellText* label = part.Label()) label->Accept(my._translator.GetCellTextTranslator());
  part.Accept(my._translator);
  PruneAndName(my._tree);
}

void OmProcedureFactory::EndAsCollected() {
  Data& my = *_my;
  if (!my._ended) {
    my._ended = true;
    my._labels.Clear();
    my._textBlock = nullptr;
    for (OmOutputPart* part : my._tree) {
      if (part != nullptr) part->ReleaseBuilder();
    }
    if (DropIfNothingToShow(my._tree)) return;
  }
  PruneEmptyAndExcluded(my._tree);
}
