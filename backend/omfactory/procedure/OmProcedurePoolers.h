// The two poolers that the end of a procedure runs over every part before selection, translation
// and sorting: bootstrap pooling first, then multiple-imputation pooling. OmProcedurePoolers is the
// one place that makes them, so OmProcedureFactory::EndProcedure does not depend on how they are
// built; a caller may hand a procedure factory its own makers.
#pragma once

#include <memory>

#include "platform/outputmodel/OmOutputPart.h"
#include "platform/outputmodel/OmOutputTree.h"

class OmCellText;
class SvrBootstrapSpecs;

// A pooler as the end of a procedure drives it: each part accepts it in tree order, and after
// each visit the pooler may ask for the part to be taken out of the output.
class OmEndPooler {
public:
  virtual ~OmEndPooler() = default;
  // The part accepts the pooler.
  virtual void Pool(OmOutputPart& part) = 0;
  // Read right after Pool: the part just visited is to be removed from the procedure's output.
  virtual bool Discard() const { return false; }
};

class OmProcedurePoolers {
public:
  virtual ~OmProcedurePoolers() = default;

  // The imputation pooler of one procedure end, built on the procedure node's label and the
  // procedure's tree with the MIOUTPUT flags. Null: no imputation pooling.
  virtual std::unique_ptr<OmEndPooler> MakeMIPooler(const OmCellText* procedureName,
                                                    OmOutputTree& tree, bool pooled,
                                                    bool observed, bool imputed,
                                                    bool diagnostics) const;
  // The bootstrap pooler of one procedure end; its construction may already tidy the tree.
  // Null: no bootstrap pooling.
  virtual std::unique_ptr<OmEndPooler> MakeBootPooler(const OmCellText* procedureName,
                                                      OmOutputTree& tree,
                                                      const SvrBootstrapSpecs& specs) const;

  // The poolers of this build; every procedure factory uses them unless given others.
  static const OmProcedurePoolers& Standard();
};
