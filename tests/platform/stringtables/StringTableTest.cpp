#include "platform/stringtables/StringTable.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

StringTable Parse(const std::string& text) { return StringTable::Parse(text, "test.stt"); }

const StringTableEntry& Global(const StringTable& table, const std::string& key) {
  const StringTableEntry* entry = table.Global().Find(key);
  if (!entry) throw std::runtime_error("no global entry " + key);
  return *entry;
}

}  // namespace

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
  // Nothing at all gives just an empty global section.
  EXPECT_TRUE(Parse("").Global().Entries().empty());
  EXPECT_EQ(Parse("").Sections().size(), 1u);
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

TEST(StringTableParse, ExactSectionSearchIsCaseSensitiveLooseSearchIgnoresCaseAndBlanks) {
  StringTable table = Parse("[procedure Non Par Corr]\nx\ty\n");
  EXPECT_EQ(table.FindSection("non par corr"), nullptr);
  EXPECT_EQ(table.FindSection(" Non Par Corr"), nullptr);
  EXPECT_NE(table.FindSectionLoosely("  NON PAR corr "), nullptr);
  EXPECT_EQ(table.FindSectionLoosely("NONPARCORR"), nullptr);
  EXPECT_EQ(table.FindSectionLoosely("Non Par Coxx"), nullptr);
  EXPECT_EQ(table.FindSectionLoosely(""), nullptr);
}

TEST(StringTableParseErrors, MalformedEntriesSectionsEscapesAndTextAreRejected) {
  const struct { std::string text; const char* error; } cases[] = {
      {"a\tb\tc\td\te\n", "line 1: entry with more than four fields"},
      {"\tleer\n", "line 1: empty key"},
      {"key\t\n", "empty translation for \"key\""},
      {"   \n", "line 1: entry without a tab"},
      {"Bias\ta\n# c\nBias\tb\n", "line 3: duplicate key \"Bias\" (first on line 1)"},
      {"a\\x\tb\n", "line 1: unknown escape \\x"},
      {"a\tb\\\n", "line 1: backslash at the end of a field"},
      {"a\\\tb\n", "backslash at the end of a field"},
      {"[global]\n", "line 1: a section header reads [procedure NAME]"},
      {"[procedure OMS\n", "a section header reads"},
      {"[procedure]\n", "a section header reads"},
      {"[procedure ]\n", "without a procedure name"},
      {"[procedure  OMS]\n", "surrounding blanks"},
      {"[procedure a]b]\n", "procedure name with"},
      {"[procedure OMS]\n[procedure OMS]\n", "line 2: section [procedure OMS] repeated"},
      {"[procedure OMS]\n[procedure oms]\n", "only in case"},
      {"ok\tgut\nM\xE4nner\tx\n", "line 2: invalid UTF-8 at byte 2"},
      {"a\tb\xC3\n", "truncated UTF-8 at byte 4"},
      {"a\t\xC0\xAF\n", "invalid UTF-8"},     // overlong
      {"a\t\xED\xA0\x80\n", "invalid UTF-8"}, // surrogate
      {"# \xFF comment\n", "invalid UTF-8"},
      {"a\rb\tc\n", "control character 13"},
      {std::string("a\tb\0c\n", 6), "control character 0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT([&] { Parse(c.text); }, testing::ThrowsMessage<OMSException>(testing::AllOf(
                                            testing::StartsWith("StringTable::Parse -- test.stt "),
                                            testing::HasSubstr(c.error))));
  }
  // The same key in different sections is fine, and so are characters beyond the BMP.
  EXPECT_NO_THROW(Parse("Bias\ta\n[procedure P]\nBias\tb\n"));
  EXPECT_NO_THROW(Parse("\xE2\x82\xAC\t\xF0\x9F\x98\x80\n")); // euro sign, emoji
}
