#include "platform/strings/NuvaroMB.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "platform/strings/CodePage.h"

namespace {

// The functions work in the process-wide code page; each test sets it and puts UTF-8 back.
class NuvaroMBTest : public ::testing::Test {
protected:
  void TearDown() override { CodePage::SetCurrent("UTF-8"); }
  static std::string Upper(std::string text) { return NuvaroMBstrupr_A(text); }
};

}  // namespace

TEST_F(NuvaroMBTest, ArbitraryBytesKeepTheFunctionsConsistent) {
  std::uint32_t seed = 12345;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return static_cast<unsigned char>(seed >> 16);
  };
  for (const char* name : {"UTF-8", "windows-1252", "Shift_JIS", "GBK", "EUC-JP"}) {
    CodePage::SetCurrent(name);
    const CodePage& codePage = CodePage::Current();
    for (int round = 0; round < 300; ++round) {
      std::string text;
      const int length = next() % 9;
      for (int i = 0; i < length; ++i) text.push_back(static_cast<char>(next()));

      std::size_t covered = 0;
      for (const CodePage::Char& c : codePage.Split(text)) {
        EXPECT_EQ(c.offset, covered);
        covered += c.length;
      }
      EXPECT_EQ(covered, text.size());
      EXPECT_EQ(NuvaroMBstricmp_A(text, text), 0);
      EXPECT_EQ(NuvaroMBstricmp_A(Upper(text), text), 0) << name << " round " << round;
      const std::size_t star = NuvaroMBstrrchr_A(text, '*');
      if (star != std::string_view::npos) {
        EXPECT_EQ(text[star], '*');
      }
      for (const CodePage::Char& c : CodePage::Get("UTF-8").Split(codePage.ToUtf8(text)))
        EXPECT_TRUE(c.valid);
    }
  }
}
