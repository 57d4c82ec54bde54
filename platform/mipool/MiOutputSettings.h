// The imputation output options of the MIOUTPUT setting, which the pooling patterns read (they use
// the diagnostics flag) without being handed them. They are each thread's own: the factory
// session sets them from its own setting right before it pools; until set, all four are true.
#pragma once

#include <string_view>

// Reports the four flags, in this order: pooled, observed, imputed, diagnostics.
void MiOutputSettings(bool& pooled, bool& observed, bool& imputed, bool& diagnostics);

// Replaces the four flags.
void SetMiOutputSettings(bool pooled, bool observed, bool imputed, bool diagnostics);

// Sets each flag to whether the MIOUTPUT value contains its word ("pooled", "observed",
// "imputed", "diagnostics"), anywhere and with the case as written.
void SetMiOutputSettingsFromValue(std::string_view value);
