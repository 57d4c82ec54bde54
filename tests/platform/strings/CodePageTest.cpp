#include "platform/strings/CodePage.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

// The session code page is process-wide: every test that changes it puts UTF-8 back.
class CodePageTest : public ::testing::Test {
protected:
  void TearDown() override { CodePage::SetCurrent("UTF-8"); }
};

}  // namespace

TEST_F(CodePageTest, CurrentIsUtf8UntilSetAndFollowsSetCurrent) {
  EXPECT_TRUE(CodePage::Current().IsUtf8());
  CodePage::SetCurrent("windows-1252");
  EXPECT_EQ(CodePage::Current().Name(), "windows-1252");
  EXPECT_TRUE(CodePage::Current().IsSingleByte());
}

TEST_F(CodePageTest, GetReturnsOneObjectPerNameAndReadsDigitsAsAWindowsCodePage) {
  EXPECT_EQ(&CodePage::Get("Shift_JIS"), &CodePage::Get("Shift_JIS"));
  EXPECT_EQ(CodePage::Get("1252").IcuName(), CodePage::Get("windows-1252").IcuName());
  EXPECT_EQ(CodePage::Get("932").IcuName(), CodePage::Get("Shift_JIS").IcuName());
}

TEST_F(CodePageTest, RejectsUnknownEmptyAndUnusableCodePages) {
  EXPECT_THROW(CodePage::Get("no-such-code-page"), OMSException);
  EXPECT_THROW(CodePage::Get(""), OMSException);
  EXPECT_THROW(CodePage::Get(std::string_view("UTF-8\0x", 7)), OMSException);
  EXPECT_THROW(CodePage::Get("UTF-16"), OMSException);       // not byte-oriented
  EXPECT_THROW(CodePage::Get("ibm-037"), OMSException);      // EBCDIC
  EXPECT_THROW(CodePage::Get("ISO-2022-JP"), OMSException);  // shift states
  EXPECT_THROW(CodePage::SetCurrent("no-such-code-page"), OMSException);
  EXPECT_TRUE(CodePage::Current().IsUtf8());
}

TEST_F(CodePageTest, SplitKeepsDoubleByteCharactersWhole) {
  const std::string text = FromUtf8("a日本", "Shift_JIS");
  ASSERT_EQ(text, "a\x93\xFA\x96\x7B");
  const auto chars = CodePage::Get("Shift_JIS").Split(text);
  ASSERT_EQ(chars.size(), 3u);
  EXPECT_EQ(chars[1].offset, 1u);
  EXPECT_EQ(chars[1].length, 2u);
  EXPECT_EQ(chars[2].offset, 3u);
  EXPECT_TRUE(chars[2].valid);
}

TEST_F(CodePageTest, SplitKeepsBadBytesOneByOne) {
  auto valid = [](const std::vector<CodePage::Char>& chars) {
    std::string flags;
    for (const CodePage::Char& c : chars) flags += c.valid ? 'v' : 'x';
    return flags;
  };
  EXPECT_EQ(valid(CodePage::Get("UTF-8").Split("a\xE2\x82\xFF" "b")), "vxxxv");
  const auto sjis = CodePage::Get("Shift_JIS").Split("\xFF\x93");  // bad byte, then a lone lead
  EXPECT_EQ(valid(sjis), "xx");
  EXPECT_EQ(sjis.at(1).length, 1u);
}

TEST_F(CodePageTest, ConvertsGermanAndJapaneseTextToAndFromTheirCodePages) {
  const std::string latin = FromUtf8("Grüße, Ärger", "windows-1252");
  EXPECT_EQ(latin, "Gr\xFC\xDF" "e, \xC4rger");
  EXPECT_EQ(ToUtf8(latin, "windows-1252"), "Grüße, Ärger");
  const std::string sjis = FromUtf8("日本語テキスト", "Shift_JIS");
  EXPECT_EQ(sjis.size(), 14u);
  EXPECT_EQ(ToUtf8(sjis, "Shift_JIS"), "日本語テキスト");
}

TEST_F(CodePageTest, UnrepresentableCharactersBecomeQuestionMarksAndBadBytesReplacementCharacters) {
  EXPECT_EQ(FromUtf8("a日b", "windows-1252"), "a?b");
  EXPECT_EQ(FromUtf8("a\xFF" "b", "windows-1252"), "a?b");  // malformed UTF-8
  EXPECT_EQ(FromUtf8("aÄb", "Shift_JIS").front(), 'a');
  EXPECT_EQ(ToUtf8("a\xFF" "b", "UTF-8"), "a\xEF\xBF\xBD" "b");
  EXPECT_EQ(ToUtf8("a\xFF", "Shift_JIS"), "a\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8("valid ü", "UTF-8"), "valid ü");
}

TEST_F(CodePageTest, DecodeEscapesBadBytesAndTryEncodeRefusesThem) {
  const CodePage& utf8 = CodePage::Get("UTF-8");
  const icu::UnicodeString decoded = utf8.Decode("x\xFF");
  ASSERT_EQ(decoded.length(), 2);
  EXPECT_EQ(decoded.charAt(1), 0xDCFF);
  std::string out;
  EXPECT_FALSE(utf8.TryEncode(decoded, out));
  EXPECT_FALSE(CodePage::Get("windows-1252").TryEncode(icu::UnicodeString(u"日"), out));
  EXPECT_TRUE(CodePage::Get("Shift_JIS").TryEncode(icu::UnicodeString(u"日"), out));
  EXPECT_EQ(out, "\x93\xFA");
}
