#include "platform/strings/CodePage.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

TEST(CodePage, GetReturnsOneObjectPerNameAndReadsDigitsAsAWindowsCodePage) {
  EXPECT_EQ(&CodePage::Get("Shift_JIS"), &CodePage::Get("Shift_JIS"));
  EXPECT_EQ(CodePage::Get("1252").IcuName(), CodePage::Get("windows-1252").IcuName());
  EXPECT_EQ(CodePage::Get("932").IcuName(), CodePage::Get("Shift_JIS").IcuName());
}

TEST(CodePage, RejectsUnknownEmptyAndUnusableCodePages) {
  EXPECT_THROW(CodePage::Get("no-such-code-page"), OMSException);
  EXPECT_THROW(CodePage::Get(""), OMSException);
  EXPECT_THROW(CodePage::Get(std::string_view("UTF-8\0x", 7)), OMSException);
  EXPECT_THROW(CodePage::Get("UTF-16"), OMSException);       // not byte-oriented
  EXPECT_THROW(CodePage::Get("ibm-037"), OMSException);      // EBCDIC
  EXPECT_THROW(CodePage::Get("ISO-2022-JP"), OMSException);  // shift states
  EXPECT_THROW(CodePage::SetCurrent("no-such-code-page"), OMSException);
  EXPECT_TRUE(CodePage::Current().IsUtf8());
}

TEST(CodePage, UnrepresentableCharactersBecomeQuestionMarksAndBadBytesReplacementCharacters) {
  EXPECT_EQ(FromUtf8("a日b", "windows-1252"), "a?b");
  EXPECT_EQ(FromUtf8("a\xFF" "b", "windows-1252"), "a?b");  // malformed UTF-8
  EXPECT_EQ(FromUtf8("aÄb", "Shift_JIS").front(), 'a');
  EXPECT_EQ(ToUtf8("a\xFF" "b", "UTF-8"), "a\xEF\xBF\xBD" "b");
  EXPECT_EQ(ToUtf8("a\xFF", "Shift_JIS"), "a\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8("valid ü", "UTF-8"), "valid ü");
}
