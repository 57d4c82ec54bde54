#include "platform/strings/NuvaroMB.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "platform/strings/CodePage.h"

namespace {

// The functions work in the process-wide code page; each test sets it and puts UTF-8 back.
class NuvaroMBTest : public ::testing::Test {
protected:
  void TearDown() override { CodePage::SetCurrent("UTF-8"); }
  static std::string Sjis(const char* utf8) { return FromUtf8(utf8, "Shift_JIS"); }
  static std::string Latin(const char* utf8) { return FromUtf8(utf8, "windows-1252"); }
  static std::string Upper(std::string text) { return NuvaroMBstrupr_A(text); }
};

}  // namespace

TEST_F(NuvaroMBTest, StricmpFoldsCaseInEachCodePageAndComparesBadBytesByValue) {
  EXPECT_EQ(NuvaroMBstricmp_A("Descriptives", "DESCRIPTIVES"), 0);
  EXPECT_LT(NuvaroMBstricmp_A("apple", "BANANA"), 0);
  EXPECT_GT(NuvaroMBstricmp_A("b", "A"), 0);
  EXPECT_LT(NuvaroMBstricmp_A("abc", "ABCD"), 0);
  EXPECT_EQ(NuvaroMBstricmp_A("", ""), 0);
  EXPECT_EQ(NuvaroMBstricmp_A("ÄRGER", "ärger"), 0);
  EXPECT_EQ(NuvaroMBstricmp_A("STRASSE", "straße"), 0);
  EXPECT_NE(NuvaroMBstricmp_A("Ärger", "Arger"), 0);
  EXPECT_GT(NuvaroMBstricmp_A("Ä", "z"), 0);  // code point order, not a language's
  EXPECT_EQ(NuvaroMBstricmp_A("a\xFF", "A\xFF"), 0);  // bad bytes by value
  EXPECT_NE(NuvaroMBstricmp_A("a\xFF", "a\xFE"), 0);
  CodePage::SetCurrent("windows-1252");
  EXPECT_EQ(NuvaroMBstricmp_A(Latin("ÄRGER"), Latin("ärger")), 0);
  EXPECT_NE(NuvaroMBstricmp_A(Latin("Grüße"), "GRUESSE"), 0);
  EXPECT_EQ(NuvaroMBstricmp_A(Latin("GRÜSSE"), Latin("grüße")), 0);
  CodePage::SetCurrent("Shift_JIS");
  EXPECT_EQ(NuvaroMBstricmp_A(Sjis("ａｂ日本"), Sjis("ＡＢ日本")), 0);
  EXPECT_NE(NuvaroMBstricmp_A(Sjis("日本"), Sjis("日付")), 0);
}

TEST_F(NuvaroMBTest, StrnicmpComparesPrefixesWithoutSplittingACharacter) {
  EXPECT_EQ(NuvaroMBstrnicmp_A("\x01request line", "\x01REQUEST", 8), 0);
  EXPECT_EQ(NuvaroMBstrnicmp_A("FREQUENCIES", "freq*", 4), 0);
  EXPECT_NE(NuvaroMBstrnicmp_A("FRE", "FREQ", 4), 0);
  EXPECT_EQ(NuvaroMBstrnicmp_A("anything", "else", 0), 0);
  // One byte of "Ä" and "Ö" each: the whole characters are compared, and they differ.
  EXPECT_NE(NuvaroMBstrnicmp_A("Äx", "Öx", 1), 0);
  EXPECT_EQ(NuvaroMBstrnicmp_A("ÄBC", "äbX", 3), 0);
  CodePage::SetCurrent("Shift_JIS");
  EXPECT_NE(NuvaroMBstrnicmp_A(Sjis("日本"), Sjis("日付"), 3), 0);
  EXPECT_EQ(NuvaroMBstrnicmp_A(Sjis("日本"), Sjis("日付"), 2), 0);
}

TEST_F(NuvaroMBTest, StrrchrFindsTheLastWholeCharacterSkippingShiftJisTrailBytes) {
  EXPECT_EQ(NuvaroMBstrrchr_A("A*B*", '*'), 3u);
  EXPECT_EQ(NuvaroMBstrrchr_A("AB", '*'), std::string_view::npos);
  EXPECT_EQ(NuvaroMBstrrchr_A("ÄÖ*", '*'), 4u);
  CodePage::SetCurrent("Shift_JIS");
  const std::string text = "a\\" + Sjis("表");  // "表" ends in the byte of a backslash
  ASSERT_EQ(text.size(), 4u);
  ASSERT_EQ(text[3], '\\');
  EXPECT_EQ(NuvaroMBstrrchr_A(text, '\\'), 1u);
  EXPECT_EQ(NuvaroMBstrrchr_A(Sjis("表"), '\\'), std::string_view::npos);
}

TEST_F(NuvaroMBTest, StruprUpperCasesWhatTheCodePageCanHoldAndKeepsTheRest) {
  EXPECT_EQ(Upper("grüße, ärger"), "GRÜSSE, ÄRGER");
  EXPECT_EQ(Upper("frequencies"), "FREQUENCIES");
  EXPECT_EQ(Upper("a\xFF" "b"), "A\xFF" "B");  // a bad byte stays
  CodePage::SetCurrent("windows-1252");
  EXPECT_EQ(Upper(Latin("grüße")), Latin("GRÜSSE"));
  EXPECT_EQ(Upper(Latin("ÿ")), Latin("Ÿ"));
  EXPECT_EQ(Upper(Latin("µ")), Latin("µ"));  // capital mu is not in windows-1252
  CodePage::SetCurrent("Shift_JIS");
  EXPECT_EQ(Upper(Sjis("ａ日本ｂ\\")), Sjis("Ａ日本Ｂ\\"));
  EXPECT_EQ(Upper("\xFF" "a"), "\xFF" "A");
}

TEST_F(NuvaroMBTest, U8ToGenericConvertsToTheCurrentCodePage) {
  std::string out;
  NuvaroMBU8ToGeneric(out, "Grüße 日本");
  EXPECT_EQ(out, "Grüße 日本");
  CodePage::SetCurrent("windows-1252");
  NuvaroMBU8ToGeneric(out, "Grüße 日本");
  EXPECT_EQ(out, Latin("Grüße ??"));
  CodePage::SetCurrent("Shift_JIS");
  NuvaroMBU8ToGeneric(out, "日本");
  EXPECT_EQ(out, "\x93\xFA\x96\x7B");
}

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
