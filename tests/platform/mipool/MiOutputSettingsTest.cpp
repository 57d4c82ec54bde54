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

TEST_F(MiOutputSettingsTest, AllFlagsAreSetUntilAValueArrives) {
  EXPECT_EQ(Read(), (Flags{true, true, true, true}));
}

TEST_F(MiOutputSettingsTest, FlagsComeBackInTheirParameterOrder) {
  SetMiOutputSettings(true, false, false, false);
  EXPECT_EQ(Read(), (Flags{true, false, false, false}));
  SetMiOutputSettings(false, false, false, true);
  EXPECT_EQ(Read(), (Flags{false, false, false, true}));
  SetMiOutputSettings(false, true, true, false);
  EXPECT_EQ(Read(), (Flags{false, true, true, false}));
}

TEST_F(MiOutputSettingsTest, ValueSetsEachFlagByWhetherItsWordOccurs) {
  SetMiOutputSettingsFromValue("pooled diagnostics");
  EXPECT_EQ(Read(), (Flags{true, false, false, true}));
  SetMiOutputSettingsFromValue("imputed,observed");
  EXPECT_EQ(Read(), (Flags{false, true, true, false}));
  // Words are found anywhere in the value, even inside other text.
  SetMiOutputSettingsFromValue("[unpooled]xdiagnosticsx");
  EXPECT_EQ(Read(), (Flags{true, false, false, true}));
}

TEST_F(MiOutputSettingsTest, ValueWithoutTheWordsClearsEveryFlag) {
  SetMiOutputSettingsFromValue("");
  EXPECT_EQ(Read(), (Flags{false, false, false, false}));
  SetMiOutputSettingsFromValue("DIAGNOSTICS Pooled");
  EXPECT_EQ(Read(), (Flags{false, false, false, false}));
}

} // namespace
