#include <array>

#include <gtest/gtest.h>

#include "platform/mipool/MiOutputSettings.h"

namespace {

TEST(MiOutputSettings, ValueSetsEachFlagByWhetherItsLowerCaseWordOccursAnywhere) {
  // Flags: pooled, observed, imputed, diagnostics.
  const struct { const char* value; std::array<bool, 4> flags; } cases[] = {
      {"pooled diagnostics", {true, false, false, true}},
      {"imputed,observed", {false, true, true, false}},
      {"observed", {false, true, false, false}},
      {"[unpooled]xdiagnosticsx", {true, false, false, true}}, // even inside other text
      {"", {false, false, false, false}},
      {"DIAGNOSTICS Pooled", {false, false, false, false}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    SetMiOutputSettingsFromValue(c.value);
    std::array<bool, 4> flags{};
    MiOutputSettings(flags[0], flags[1], flags[2], flags[3]);
    EXPECT_EQ(flags, c.flags);
  }
  SetMiOutputSettings(true, true, true, true); // as a fresh process has them
}

} // namespace
