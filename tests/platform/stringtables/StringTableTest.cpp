#include "platform/stringtables/StringTable.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/errors/OMSException.h"

namespace {

StringTable Parse(const std::string& text) { return StringTable::Parse(text, "test.stt"); }

// The message of the failure that parsing text raises; "" when it parses.
std::string ParseError(const std::string& text) {
  try {
    Parse(text);
  } catch (const OMSException& e) {
    return e.Message();
  }
  return "";
}

const StringTableEntry& Global(const StringTable& table, const std::string& key) {
  const StringTableEntry* entry = table.Global().Find(key);
  if (!entry) throw std::runtime_error("no global entry " + key);
  return *entry;
}

}  // namespace

TEST(StringTableParse, EntriesCarryTranslationAndOptionalFurtherTexts) {
  StringTable table = Parse(
      "Bias\tVerzerrung\n"
      "Lower\tUntergrenze\tlow\n"
      "Upper\tObergrenze\t\thigh end\n");
  EXPECT_EQ(Global(table, "Bias")._translation, "Verzerrung");
  EXPECT_EQ(Global(table, "Bias")._second, "");
  EXPECT_EQ(Global(table, "Lower")._second, "low");
  EXPECT_EQ(Global(table, "Lower")._third, "");
  EXPECT_EQ(Global(table, "Upper")._second, "");
  EXPECT_EQ(Global(table, "Upper")._third, "high end");
  EXPECT_EQ(Global(table, "Upper")._line, 3);
}

TEST(StringTableParse, CommentsBlankLinesCarriageReturnsAndByteOrderMarkAreSkipped) {
  StringTable table = Parse(
      "\xEF\xBB\xBF# a comment\r\n"
      "\r\n"
      "\n"
      "Log\tProtokoll\r\n"
      "Notes\tAnmerkungen");  // no final line break
  EXPECT_EQ(Global(table, "Log")._translation, "Protokoll");
  EXPECT_EQ(Global(table, "Notes")._translation, "Anmerkungen");
  EXPECT_EQ(Global(table, "Notes")._line, 5);
  EXPECT_EQ(table.Global().Entries().size(), 2u);
}

TEST(StringTableParse, BlanksInsideKeysAndTranslationsAreKept) {
  StringTable table = Parse(" zero fill\t aufgefüllt \n");
  EXPECT_EQ(Global(table, " zero fill")._translation, " aufgefüllt ");
  EXPECT_EQ(table.Global().Find("zero fill"), nullptr);
}

TEST(StringTableParse, EscapesStandForTabNewlineBackslashHashAndBracket) {
  StringTable table = Parse(
      "a\\tb\tx\\ny\n"
      "^1\\\\% CI\t^1\\\\% KI\n"
      "\\#1\t\\[Nr. 1]\n"
      "\\[x]\ty\n");
  EXPECT_EQ(Global(table, "a\tb")._translation, "x\ny");
  EXPECT_EQ(Global(table, "^1\\% CI")._translation, "^1\\% KI");
  EXPECT_EQ(Global(table, "#1")._translation, "[Nr. 1]");
  EXPECT_EQ(Global(table, "[x]")._translation, "y");
}

TEST(StringTableParse, SectionsFollowTheirHeadersAndKeepTheirOwnKeys) {
  StringTable table = Parse(
      "Mean\tMittelwert\n"
      "[procedure OMS]\n"
      "Mean\tDurchschnitt\n"
      "[procedure T-Test]\n"
      "t\tT\n");
  EXPECT_EQ(Global(table, "Mean")._translation, "Mittelwert");
  const StringTableSection* oms = table.FindSection("OMS");
  ASSERT_NE(oms, nullptr);
  EXPECT_EQ(oms->Name(), "OMS");
  ASSERT_NE(oms->Find("Mean"), nullptr);
  EXPECT_EQ(oms->Find("Mean")->_translation, "Durchschnitt");
  EXPECT_EQ(oms->Find("t"), nullptr);
  ASSERT_NE(table.FindSection("T-Test"), nullptr);
  EXPECT_EQ(table.Global().Find("t"), nullptr);

  auto sections = table.Sections();
  ASSERT_EQ(sections.size(), 3u);
  EXPECT_EQ(sections[0]->Name(), "");
  EXPECT_EQ(sections[1]->Name(), "OMS");
  EXPECT_EQ(sections[2]->Name(), "T-Test");
}

TEST(StringTableParse, ExactSectionSearchIsCaseSensitiveLooseSearchIgnoresCaseAndBlanks) {
  StringTable table = Parse("[procedure Non Par Corr]\nx\ty\n");
  EXPECT_EQ(table.FindSection("non par corr"), nullptr);
  EXPECT_EQ(table.FindSection(" Non Par Corr"), nullptr);
  EXPECT_NE(table.FindSectionLoosely("  NON PAR corr "), nullptr);
  EXPECT_EQ(table.FindSectionLoosely("NONPARCORR"), nullptr);
  EXPECT_EQ(table.FindSectionLoosely(""), nullptr);
}

TEST(StringTableParse, EmptyTextGivesAnEmptyGlobalSection) {
  StringTable table = Parse("");
  EXPECT_TRUE(table.Global().Entries().empty());
  EXPECT_EQ(table.Sections().size(), 1u);
  EXPECT_EQ(table.FileName(), "test.stt");
}

TEST(StringTableParseErrors, NameFileAndLineAndCarryTheLineAsValue) {
  try {
    Parse("# header\nok\tgut\nbroken line\n");
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(),
              "StringTable::Parse -- test.stt line 3: entry without a tab between key and "
              "translation");
    EXPECT_EQ(e.Value1(), 3);
  }
}

TEST(StringTableParseErrors, MalformedEntriesAreRejected) {
  EXPECT_NE(ParseError("a\tb\tc\td\te\n").find("line 1: entry with more than four fields"),
            std::string::npos);
  EXPECT_NE(ParseError("\tleer\n").find("line 1: empty key"), std::string::npos);
  EXPECT_NE(ParseError("key\t\n").find("empty translation for \"key\""), std::string::npos);
  EXPECT_NE(ParseError("   \n").find("line 1: entry without a tab"), std::string::npos);
}

TEST(StringTableParseErrors, DuplicateKeyInOneSectionNamesBothLines) {
  EXPECT_EQ(ParseError("Bias\ta\n# c\nBias\tb\n"),
            "StringTable::Parse -- test.stt line 3: duplicate key \"Bias\" (first on line 1)");
  // The same key in different sections is fine.
  EXPECT_EQ(ParseError("Bias\ta\n[procedure P]\nBias\tb\n"), "");
}

TEST(StringTableParseErrors, BadEscapesAreRejected) {
  EXPECT_NE(ParseError("a\\x\tb\n").find("line 1: unknown escape \\x"), std::string::npos);
  EXPECT_NE(ParseError("a\tb\\\n").find("line 1: backslash at the end of a field"),
            std::string::npos);
  EXPECT_NE(ParseError("a\\\tb\n").find("backslash at the end of a field"), std::string::npos);
}

TEST(StringTableParseErrors, BadSectionHeadersAreRejected) {
  EXPECT_NE(ParseError("[global]\n").find("line 1: a section header reads [procedure NAME]"),
            std::string::npos);
  EXPECT_NE(ParseError("[procedure OMS\n").find("a section header reads"), std::string::npos);
  EXPECT_NE(ParseError("[procedure]\n").find("a section header reads"), std::string::npos);
  EXPECT_NE(ParseError("[procedure ]\n").find("without a procedure name"), std::string::npos);
  EXPECT_NE(ParseError("[procedure  OMS]\n").find("surrounding blanks"), std::string::npos);
  EXPECT_NE(ParseError("[procedure a]b]\n").find("procedure name with"), std::string::npos);
  EXPECT_EQ(ParseError("[procedure OMS]\n[procedure OMS]\n"),
            "StringTable::Parse -- test.stt line 2: section [procedure OMS] repeated");
  EXPECT_NE(ParseError("[procedure OMS]\n[procedure oms]\n").find("only in case"),
            std::string::npos);
}

TEST(StringTableParseErrors, TextThatIsNotUtf8OrHoldsControlCharactersIsRejected) {
  EXPECT_NE(ParseError("ok\tgut\nM\xE4nner\tx\n").find("line 2: invalid UTF-8 at byte 2"),
            std::string::npos);
  EXPECT_NE(ParseError("a\tb\xC3\n").find("truncated UTF-8 at byte 4"), std::string::npos);
  EXPECT_NE(ParseError("a\t\xC0\xAF\n").find("invalid UTF-8"), std::string::npos);      // overlong
  EXPECT_NE(ParseError("a\t\xED\xA0\x80\n").find("invalid UTF-8"), std::string::npos);  // surrogate
  EXPECT_NE(ParseError("# \xFF comment\n").find("invalid UTF-8"), std::string::npos);
  EXPECT_NE(ParseError("a\rb\tc\n").find("control character 13"), std::string::npos);
  EXPECT_NE(ParseError(std::string("a\tb\0c\n", 6)).find("control character 0"),
            std::string::npos);
  EXPECT_EQ(ParseError("\xE2\x82\xAC\t\xF0\x9F\x98\x80\n"), "");  // euro sign, emoji
}
