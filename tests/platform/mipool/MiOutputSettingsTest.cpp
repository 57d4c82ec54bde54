#include <gtest/gtest.h>

#include "platform/mipool/MiOutputSettings.h"

namespace {

struct Flags {
  bool pooled, observed, imputed, diagnostics;
  bool operator==(const Flags&) const = default;
};

Flags Read() {
  Flags flags{};
  MiOutputSettings(flags.pooled, flags.observed, flags.imputed, flags.diagnostics);
  return flags;
}

// The settings are process-wide: every test leaves them as a fresh process has them.
class MiOutputSettingsTest : public ::testing::Test {
protected:
  void TearDown() override { SetMiOutputSettings(true, true, true, true); }
};

TEST_F(MiOutputSettingsTest, ValueSetsEachFlagByWhetherItsLowerCaseWordOccursAnywhere) {
  const struct {
    const char* value;
    Flags flags;
  } cases[] = {
      {"pooled diagnostics", {true, false, false, true}},
      {"imputed,observed", {false, true, true, false}},
      {"[unpooled]xdiagnosticsx", {true, false, false, true}}, // even inside other text
      {"", {false, false, false, false}},
      {"DIAGNOSTICS Pooled", {false, false, false, false}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    SetMiOutputSettingsFromValue(c.value);
    EXPECT_EQ(Read(), c.flags);
  }
}

} // namespace
