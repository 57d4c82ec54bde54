#include "platform/stringtables/FacSTDictionary.h"

#include <algorithm>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <system_error>
#include <unordered_map>

#include "platform/errors/OMSException.h"
#include "platform/strings/CodePage.h"
#include "platform/stringtables/PathFactory.h"
#include "platform/stringtables/StringTable.h"

namespace fs = std::filesystem;

struct FacSTDictionary::Data {
  ExtNameStr _path;
  std::shared_ptr<const StringTable> _table;  // null: no table file at _path
  std::string _procedure;
  bool _procedureLoose = false;               // selected by SetProcedureEx
  const StringTableSection* _section = nullptr;  // in _table; null: global section only
  icuTracker* _tracker = nullptr;
  const CodePage* _codePage = nullptr;  // null or UTF-8: keys and results stay UTF-8

  void SelectSection() {
    _section = nullptr;
    if (!_table || _procedure.empty()) return;
    _section = _procedureLoose ? _table->FindSectionLoosely(_procedure)
                               : _table->FindSection(_procedure);
  }
};

namespace {

// The table file that a location names, if any (see the class comment).
std::optional<fs::path> TableFileOf(const std::string& location) {
  if (location.empty()) return std::nullopt;
  const fs::path path(location);
  std::error_code error;
  if (fs::is_regular_file(path, error)) return path;
  if (!fs::is_directory(path, error)) return std::nullopt;
  const fs::path inFolder = path / FacSTDictionary::kTableFileName;
  if (fs::exists(inFolder, error)) return inFolder;
  const fs::path english = path / PathFactory::kDefaultFolder / FacSTDictionary::kTableFileName;
  if (fs::is_regular_file(english, error)) return english;
  return std::nullopt;
}

// Tables already read, by canonical file name. Sessions on different threads share it.
class TableCache {
public:
  static TableCache& Instance() {
    static TableCache cache;
    return cache;
  }

  std::shared_ptr<const StringTable> Get(const fs::path& file) {
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(file, error);
    if (error) canonical = fs::absolute(file, error).lexically_normal();
    const std::string name = canonical.generic_string();

    std::lock_guard lock(_mutex);
    if (auto it = _tables.find(name); it != _tables.end()) return it->second;
    auto table = std::make_shared<const StringTable>(StringTable::Parse(Read(canonical, name), name));
    _tables.emplace(name, table);
    return table;
  }

  void Clear() {
    std::lock_guard lock(_mutex);
    _tables.clear();
  }

private:
  static std::string Read(const fs::path& file, const std::string& name) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
      throw OMSException("FacSTDictionary::Load -- " + name + " is not a file");
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) throw OMSException("FacSTDictionary::Load -- cannot open " + name);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) throw OMSException("FacSTDictionary::Load -- cannot read " + name);
    return text;
  }

  std::mutex _mutex;
  std::unordered_map<std::string, std::shared_ptr<const StringTable>> _tables;
};

std::shared_ptr<const StringTable> LoadTable(const std::string& location) {
  const auto file = TableFileOf(location);
  if (!file) return nullptr;
  return TableCache::Instance().Get(*file);
}

}  // namespace

FacSTDictionary::FacSTDictionary() : _my(std::make_unique<Data>()) {}

FacSTDictionary::FacSTDictionary(const ExtNameStr& path) : FacSTDictionary() {
  PathFactory::FollowHostPath(path.GetGeneric());
  SetGlobalStringTable(path);
}

FacSTDictionary::FacSTDictionary(const std::string& path) : FacSTDictionary(ExtNameStr(path)) {}

FacSTDictionary::FacSTDictionary(const FacSTDictionary& other)
    : _my(std::make_unique<Data>(*other._my)) {}

FacSTDictionary& FacSTDictionary::operator=(const FacSTDictionary& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

FacSTDictionary::~FacSTDictionary() = default;

void FacSTDictionary::SetGlobalStringTable(const ExtNameStr& path) {
  auto table = LoadTable(path.GetGeneric());
  _my->_path = path;
  _my->_table = std::move(table);
  _my->SelectSection();
}

void FacSTDictionary::SetGlobalStringTable(const std::string& path) {
  SetGlobalStringTable(ExtNameStr(path));
}

const ExtNameStr& FacSTDictionary::GetStringTablePath() const noexcept { return _my->_path; }

void FacSTDictionary::SetProcedure(const std::string& name) {
  _my->_procedure = name;
  _my->_procedureLoose = false;
  _my->SelectSection();
}

void FacSTDictionary::SetProcedureEx(const std::string& name) {
  _my->_procedure = name;
  _my->_procedureLoose = true;
  _my->SelectSection();
}

const std::string& FacSTDictionary::GetProcedure() const noexcept { return _my->_procedure; }

void FacSTDictionary::setICUTracker(icuTracker* tracker) noexcept { _my->_tracker = tracker; }

icuTracker* FacSTDictionary::getICUTracker() const noexcept { return _my->_tracker; }

void FacSTDictionary::SetCodePage(const CodePage* codePage) noexcept { _my->_codePage = codePage; }

std::string FacSTDictionary::LookUp(const std::string& key, std::string& second,
                                    std::string& third) const {
  // The tables are UTF-8 and the session's texts are in its code page: the key is read as the
  // table writes it and the texts found are given back in the code page, here and nowhere else.
  const CodePage* page = _my->_codePage != nullptr && !_my->_codePage->IsUtf8() ? _my->_codePage : nullptr;
  const bool ascii = std::all_of(key.begin(), key.end(), [](char c) { return (c & 0x80) == 0; });
  const std::string utf8Key = page && !ascii ? page->ToUtf8(key) : std::string();
  const std::string& tableKey = page && !ascii ? utf8Key : key;
  const StringTableEntry* entry = nullptr;
  if (_my->_section) entry = _my->_section->Find(tableKey);
  if (!entry && _my->_table) entry = _my->_table->Global().Find(tableKey);
  if (!entry) {
    second.clear();
    third.clear();
    return key;
  }
  if (page) {
    second = page->FromUtf8(entry->_second);
    third = page->FromUtf8(entry->_third);
    return page->FromUtf8(entry->_translation);
  }
  second = entry->_second;
  third = entry->_third;
  return entry->_translation;
}

std::string FacSTDictionary::LookUp(const std::string& key) const {
  std::string second;
  std::string third;
  return LookUp(key, second, third);
}

bool FacSTDictionary::HasTable() const noexcept { return _my->_table != nullptr; }

const StringTable* FacSTDictionary::Table() const noexcept { return _my->_table.get(); }

void FacSTDictionary::ClearCache() { TableCache::Instance().Clear(); }
