#include "backend/omfactory/procedure/OmProcedurePoolers.h"

#include "backend/omfactory/pooling/OmBootPooler.h"
#include "backend/omfactory/pooling/OmMIPooler.h"
#include "platform/mipool/MiOutputSettings.h"

// Adding a pooler means wrapping it here in an OmEndPooler; nothing else changes.

namespace {

class MIEndPooler : public OmEndPooler {
public:
  MIEndPooler(const OmCellText* procedureName, OmOutputTree& tree, bool pooled, bool observed,
              bool imputed, bool diagnostics)
      : _pooler(procedureName, &tree, pooled, observed, imputed, diagnostics) {}
  void Pool(OmOutputPart& part) override { part.Accept(_pooler); }
  bool Discard() const override { return _pooler.Discard(); }

private:
  OmMIPooler _pooler;
};

class BootEndPooler : public OmEndPooler {
public:
  BootEndPooler(const OmCellText* procedureName, OmOutputTree& tree, const SvrBootstrapSpecs& specs)
      : _pooler(procedureName, tree, &specs) {}
  void Pool(OmOutputPart& part) override { part.Accept(_pooler); }

private:
  OmBootPooler _pooler;
};

}  // namespace

std::unique_ptr<OmEndPooler> OmProcedurePoolers::MakeMIPooler(const OmCellText* procedureName,
                                                              OmOutputTree& tree, bool pooled,
                                                              bool observed, bool imputed,
                                                              bool diagnostics) const {
  // The patterns read the diagnostics flag from the pooling library's settings.
  SetMiOutputSettings(pooled, observed, imputed, diagnostics);
  return std::make_unique<MIEndPooler>(procedureName, tree, pooled, observed, imputed, diagnostics);
}

std::unique_ptr<OmEndPooler> OmProcedurePoolers::MakeBootPooler(const OmCellText* procedureName,
                                                                OmOutputTree& tree,
                                                                const SvrBootstrapSpecs& specs) const {
  return std::make_unique<BootEndPooler>(procedureName, tree, specs);
}

const OmProcedurePoolers& OmProcedurePoolers::Standard() {
  static const OmProcedurePoolers poolers;
  return poolers;
}
