#include "platform/mipool/MiOutputSettings.h"

#include <atomic>

namespace {

// Atomics because sessions on different threads may share the process; each flag is read and
// written whole, and a setting is one session's at a time.
std::atomic<bool> gPooled{true};
std::atomic<bool> gObserved{true};
std::atomic<bool> gImputed{true};
std::atomic<bool> gDiagnostics{true};

} // namespace

void MiOutputSettings(bool& pooled, bool& observed, bool& imputed, bool& diagnostics) {
  pooled = gPooled.load();
  observed = gObserved.load();
  imputed = gImputed.load();
  diagnostics = gDiagnostics.load();
}

void SetMiOutputSettings(bool pooled, bool observed, bool imputed, bool diagnostics) {
  gPooled.store(pooled);
  gObserved.store(observed);
  gImputed.store(imputed);
  gDiagnostics.store(diagnostics);
}

void SetMiOutputSettingsFromValue(std::string_view value) {
  auto has = [value](std::string_view word) { return value.find(word) != std::string_view::npos; };
  SetMiOutputSettings(has("pooled"), has("observed"), has("imputed"), has("diagnostics"));
}
