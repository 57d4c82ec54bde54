#include "platform/strings/NuvaroMB.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "platform/strings/CodePage.h"

// The functions work in the process-wide code page, which the test sets for each and then puts
// back to UTF-8.
TEST(NuvaroMB, ArbitraryBytesKeepTheFunctionsConsistent) {
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
      std::string upper = text;
      EXPECT_EQ(NuvaroMBstricmp_A(NuvaroMBstrupr_A(upper), text), 0) << name << " round " << round;
      const std::size_t star = NuvaroMBstrrchr_A(text, '*');
      EXPECT_TRUE(star == std::string_view::npos || text[star] == '*') << star;
      for (const CodePage::Char& c : CodePage::Get("UTF-8").Split(codePage.ToUtf8(text)))
        EXPECT_TRUE(c.valid);
    }
  }
  CodePage::SetCurrent("UTF-8");
}
