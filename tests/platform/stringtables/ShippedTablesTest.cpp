// Checks the string tables shipped in stringtables/ (found through OMF_STRINGTABLES_DIR).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/stringtables/FacSTDictionary.h"
#include "platform/stringtables/PathFactory.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmRecordDescriber.h"
#include "platform/stream/OmStreamReader.h"
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
  void SetUp() override {
    ASSERT_TRUE(_english.HasTable()) << kRoot;
    ASSERT_TRUE(_german.HasTable()) << kRoot;
  }
  void TearDown() override {
    PathFactory::SetRoot("");
    PathFactory::getPathInstance(PathFactory::kStringTables).ResetFolder();
  }

  FacSTDictionary _english{kRoot + "/lang/en"};
  FacSTDictionary _german{kRoot + "/lang/de"};
};

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
        std::uint8_t bytes[4];
        std::memcpy(bytes, record.payload.data() + at, 4);
        if (describer.SwapBytes()) std::reverse(bytes, bytes + 4);
        std::int32_t value;
        std::memcpy(&value, bytes, 4);
        return value;
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
  const StringTable& en = *_english.Table();
  for (const char* language : kLanguages) {
    SCOPED_TRACE(language);
    const FacSTDictionary dictionary(kRoot + "/lang/" + language);
    ASSERT_TRUE(dictionary.HasTable());
    const StringTable& other = *dictionary.Table();
    std::size_t keys = 0;
    for (const StringTableSection* section : en.Sections()) {
      const StringTableSection* translated =
          section->Name().empty() ? &other.Global() : other.FindSection(section->Name());
      ASSERT_NE(translated, nullptr) << "no [procedure " << section->Name() << "]";
      for (const auto& [key, entry] : section->Entries()) {
        ++keys;
        const StringTableEntry* translation = translated->Find(key);
        if (!translation) {
          ADD_FAILURE() << "no \"" << key << "\" (English line " << entry._line << ")";
          continue;
        }
        EXPECT_EQ(Placeholders(translation->_translation), Placeholders(key))
            << "\"" << key << "\" -> \"" << translation->_translation << "\"";
      }
    }
    EXPECT_GT(keys, 150u);
    // And nothing that English lacks.
    for (const StringTableSection* section : other.Sections()) {
      const StringTableSection* english =
          section->Name().empty() ? &en.Global() : en.FindSection(section->Name());
      ASSERT_NE(english, nullptr) << "English lacks [procedure " << section->Name() << "]";
      for (const auto& [key, entry] : section->Entries()) {
        EXPECT_NE(english->Find(key), nullptr) << "English lacks \"" << key << "\" (line " << entry._line << ")";
      }
    }
  }
}

TEST_F(ShippedTablesTest, EveryTextTheExamplesSendAsTranslatableHasAKey) {
  const std::vector<std::string> texts = TranslatableTextsOfTheExamples();
  EXPECT_GT(texts.size(), 40u);
  for (const std::string& text : texts) {
    EXPECT_NE(_english.Table()->Global().Find(text), nullptr) << "no key \"" << text << "\"";
  }
}
