#include "platform/mipool/MiOutputSettings.h"

namespace {

// Each thread's own: a session sets them from its MIOUTPUT setting right before it pools, on its
// own thread, so that sessions on other threads never see each other's.
thread_local bool gPooled = true;
thread_local bool gObserved = true;
thread_local bool gImputed = true;
thread_local bool gDiagnostics = true;

} // namespace

void MiOutputSettings(bool& pooled, bool& observed, bool& imputed, bool& diagnostics) {
  pooled = gPooled;
  observed = gObserved;
  imputed = gImputed;
  diagnostics = gDiagnostics;
}

void SetMiOutputSettings(bool pooled, bool observed, bool imputed, bool diagnostics) {
  gPooled = pooled;
  gObserved = observed;
  gImputed = imputed;
  gDiagnostics = diagnostics;
}

void SetMiOutputSettingsFromValue(std::string_view value) {
  auto has = [value](std::string_view word) { return value.find(word) != std::string_view::npos; };
  SetMiOutputSettings(has("pooled"), has("observed"), has("imputed"), has("diagnostics"));
}
