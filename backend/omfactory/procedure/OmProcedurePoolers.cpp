#include "backend/omfactory/procedure/OmProcedurePoolers.h"

// The imputation pooler (OmMIPooler) and the bootstrap pooler (OmBootPooler) are not part of the
// build yet. Until they are, a procedure ends without pooling: both makers answer null and the end
// of the procedure leaves their visits out. Adding a pooler means wrapping it here in an
// OmEndPooler; nothing else changes.

std::unique_ptr<OmEndPooler> OmProcedurePoolers::MakeMIPooler(const OmCellText* procedureName,
                                                              OmOutputTree& tree, bool pooled,
                                                              bool observed, bool imputed,
                                                              bool diagnostics) const {
  (void)procedureName;
  (void)tree;
  (void)pooled;
  (void)observed;
  (void)imputed;
  (void)diagnostics;
  return nullptr;
}

std::unique_ptr<OmEndPooler> OmProcedurePoolers::MakeBootPooler(const OmCellText* procedureName,
                                                                OmOutputTree& tree,
                                                                const SvrBootstrapSpecs& specs) const {
  (void)procedureName;
  (void)tree;
  (void)specs;
  return nullptr;
}

const OmProcedurePoolers& OmProcedurePoolers::Standard() {
  static const OmProcedurePoolers poolers;
  return poolers;
}
