#include "platform/strings/icuTracker.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/strings/CodePage.h"

TEST(icuTracker, UnicodeSessionsUseUtf8OthersTheCodeSetOrTheLanguagesCodePage) {
  EXPECT_TRUE(icuTracker(true, "de_DE").GetCodePage().IsUtf8());
  EXPECT_TRUE(icuTracker(true, "de_DE.ISO-8859-1").GetCodePage().IsUtf8());
  EXPECT_EQ(icuTracker(false, "de_DE").CodePageName(), "windows-1252");
  EXPECT_EQ(icuTracker(false, "ja_JP").CodePageName(), "Shift_JIS");
  EXPECT_EQ(icuTracker(false, "zh_TW").CodePageName(), "Big5");
  EXPECT_EQ(icuTracker(false, "zh_CN").CodePageName(), "GBK");
  EXPECT_EQ(icuTracker(false, "pl-PL").CodePageName(), "windows-1250");
  EXPECT_EQ(icuTracker(false, "ja_JP.EUC-JP").CodePageName(), "EUC-JP");
  EXPECT_EQ(icuTracker(false, "").CodePageName(), "windows-1252");
}

TEST(icuTracker, ReadsPosixLocaleTexts) {
  EXPECT_STREQ(icuTracker(true, "de-AT").GetLocale().getCountry(), "AT");
  EXPECT_STREQ(icuTracker(true, "de_DE@euro").GetLocale().getName(), "de_DE");
  EXPECT_STREQ(icuTracker(true, "de@collation=phonebook").GetLocale().getName(),
               "de@collation=phonebook");
  EXPECT_STREQ(icuTracker(true, "").GetLocale().getName(), "");
  EXPECT_EQ(icuTracker(true, "en_ZA").LocaleName(), "en_ZA");
}

TEST(icuTracker, RejectsMalformedLocalesAndUnknownCodeSets) {
  EXPECT_THROW(icuTracker(true, "de DE"), OMSException);
  EXPECT_THROW(icuTracker(true, "de_DE."), OMSException);
  EXPECT_THROW(icuTracker(true, "de_DE@eu ro"), OMSException);
  EXPECT_THROW(icuTracker(false, "de_DE.no-such-set"), OMSException);
  EXPECT_THROW(icuTracker(false, "de_DE.UTF-16"), OMSException);
}

TEST(icuTracker, ComparesTextsOfItsCodePageInTheLanguagesOrder) {
  // German sorts "ä" with "a"; Swedish after "z".
  const icuTracker german(true, "de_DE");
  EXPECT_LT(german.Compare("äpfel", "birnen"), 0);
  EXPECT_LT(german.Compare("apfel", "äpfel"), 0);
  const icuTracker swedish(true, "sv_SE");
  EXPECT_GT(swedish.Compare("äpple", "zebra"), 0);
  EXPECT_EQ(german.Compare("gleich", "gleich"), 0);
  const icuTracker latin(false, "de_DE");
  EXPECT_LT(latin.Compare(latin.FromUtf8("äpfel"), latin.FromUtf8("birnen")), 0);
  const icuTracker japanese(false, "ja_JP");
  EXPECT_LT(japanese.Compare(japanese.FromUtf8("あ"), japanese.FromUtf8("い")), 0);
}

TEST(icuTracker, ConvertsItsTextsToUtf8ForRendering) {
  const icuTracker japanese(false, "ja_JP");
  EXPECT_EQ(japanese.ToUtf8(japanese.FromUtf8("日本語")), "日本語");
  EXPECT_EQ(japanese.FromUtf8("日本").size(), 4u);
  EXPECT_EQ(icuTracker(true, "ja_JP").FromUtf8("日本"), "日本");
}
