// Checks the string tables shipped in stringtables/ (found through OMF_STRINGTABLES_DIR).
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmRecordDescriber.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "platform/stringtables/PathFactory.h"
#include "platform/stringtables/StringTable.h"

namespace {

const std::string kRoot = OMF_STRINGTABLES_DIR;

// The placeholders of a text, sorted: "^2 of ^1" gives {"^1", "^2"}.
std::vector<std::string> Placeholders(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t i = text.find('^'); i != std::string::npos; i = text.find('^', i + 1)) {
    std::size_t end = i + 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    if (end > i + 1) found.push_back(text.substr(i, end - i));
  }
  std::sort(found.begin(), found.end());
  return found;
}

// Every output language of the session's language table, by folder.
const char* const kLanguages[] = {"de", "es", "fr", "it", "ja", "ko", "pl", "ru", "zh_TW", "zh_CN", "pt_BR"};

class ShippedTablesTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(_english.HasTable()) << kRoot; }
  void TearDown() override {
    PathFactory::SetRoot("");
    PathFactory::getPathInstance(PathFactory::kStringTables).ResetFolder();
  }

  FacSTDictionary _english{kRoot + "/lang/en"};
};

// Expects every key of `from` in the same section of `to` (called `name` in failures), whose
// translation there has the key's placeholders; returns the number of keys.
std::size_t ExpectKeysIn(const StringTable& from, const StringTable& to, const std::string& name) {
  std::size_t keys = 0;
  for (const StringTableSection* section : from.Sections()) {
    const StringTableSection* same =
        section->Name().empty() ? &to.Global() : to.FindSection(section->Name());
    if (!same) {
      ADD_FAILURE() << name << " lacks [procedure " << section->Name() << "]";
      continue;
    }
    for (const auto& [key, entry] : section->Entries()) {
      ++keys;
      if (const StringTableEntry* translation = same->Find(key)) {
        EXPECT_EQ(Placeholders(translation->_translation), Placeholders(key))
            << "\"" << key << "\" -> \"" << translation->_translation << "\"";
      } else {
        ADD_FAILURE() << name << " lacks \"" << key << "\" (line " << entry._line << ")";
      }
    }
  }
  return keys;
}

// The texts sent as translatable (IPC_STRING with literal 0) by every example stream.
std::vector<std::string> TranslatableTextsOfTheExamples() {
  std::vector<std::string> texts;
  for (const auto& file : std::filesystem::directory_iterator(OMF_EXAMPLES_DIR)) {
    if (file.path().extension() != ".oms") continue;
    OmStreamReader reader = OmStreamReader::FromFile(file.path().string());
    OmRecordDescriber describer;  // follows the stream's byte-order probe
    OmStreamRecord record;
    while (reader.Next(record)) {
      describer.Describe(record);
      if (record.code != std::int16_t(MessageCode::IPC_STRING) || record.payload.size() < 12) continue;
      auto int32 = [&](std::size_t at) {
        std::uint32_t value;
        std::memcpy(&value, record.payload.data() + at, 4);
        return std::int32_t(describer.SwapBytes() ? __builtin_bswap32(value) : value);
      };
      if (int32(8) != 0) continue;
      const auto length = std::size_t(std::max(0, int32(0)));
      texts.emplace_back(reinterpret_cast<const char*>(record.payload.data()) + 12,
                         std::min(length, record.payload.size() - 12));
    }
  }
  return texts;
}

}  // namespace

TEST_F(ShippedTablesTest, EveryLanguageHasEveryEnglishKeyInItsSectionWithTheSamePlaceholders) {
  for (const char* language : kLanguages) {
    SCOPED_TRACE(language);
    const FacSTDictionary dictionary(kRoot + "/lang/" + language);
    ASSERT_TRUE(dictionary.HasTable());
    EXPECT_GT(ExpectKeysIn(*_english.Table(), *dictionary.Table(), language), 150u);
    ExpectKeysIn(*dictionary.Table(), *_english.Table(), "English"); // and nothing more
  }
}

TEST_F(ShippedTablesTest, EveryTextTheExamplesSendAsTranslatableHasAKey) {
  const std::vector<std::string> texts = TranslatableTextsOfTheExamples();
  EXPECT_GT(texts.size(), 40u);
  for (const std::string& text : texts)
    EXPECT_NE(_english.Table()->Global().Find(text), nullptr) << "no key \"" << text << "\"";
}
