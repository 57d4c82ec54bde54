#include "platform/stringtables/StringTable.h"

#include <utility>

#include "platform/errors/OMSException.h"

struct StringTable::Data {
  std::string _fileName;
  StringTableSection _global{""};
  // Procedure sections in file order; unique_ptr keeps their addresses stable for the maps.
  std::vector<std::unique_ptr<StringTableSection>> _sections;
  std::unordered_map<std::string, const StringTableSection*, StringTableSection::KeyHash,
                     std::equal_to<>>
      _byName;
  std::unordered_map<std::string, const StringTableSection*, StringTableSection::KeyHash,
                     std::equal_to<>>
      _byFoldedName;
};

namespace {

constexpr std::string_view kHeaderOpen = "[procedure ";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Collects the context of one parse so that every failure names file and line.
class Parser {
public:
  explicit Parser(const std::string& fileName) : _fileName(fileName) {}

  [[noreturn]] void Fail(const std::string& what) const {
    throw OMSException("StringTable::Parse -- " + _fileName + " line " + std::to_string(_line) +
                           ": " + what,
                       _line);
  }

  void SetLine(int line) { _line = line; }
  int Line() const { return _line; }

  // Rejects bytes that are not well-formed UTF-8 and control characters other than tab.
  void CheckBytes(std::string_view line) const {
    std::size_t i = 0;
    while (i < line.size()) {
      const auto c = static_cast<unsigned char>(line[i]);
      if (c < 0x80) {
        if ((c < 0x20 && c != '\t') || c == 0x7F) Fail("control character " + std::to_string(c));
        ++i;
        continue;
      }
      std::size_t length = 0;
      unsigned int minimum = 0;
      unsigned int code = 0;
      if (c >= 0xC2 && c <= 0xDF) {
        length = 2, minimum = 0x80, code = c & 0x1F;
      } else if (c >= 0xE0 && c <= 0xEF) {
        length = 3, minimum = 0x800, code = c & 0x0F;
      } else if (c >= 0xF0 && c <= 0xF4) {
        length = 4, minimum = 0x10000, code = c & 0x07;
      } else {
        Fail("invalid UTF-8 at byte " + std::to_string(i + 1));
      }
      if (i + length > line.size()) Fail("truncated UTF-8 at byte " + std::to_string(i + 1));
      for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(line[i + k]);
        if ((next & 0xC0) != 0x80) Fail("invalid UTF-8 at byte " + std::to_string(i + 1));
        code = (code << 6) | (next & 0x3F);
      }
      if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        Fail("invalid UTF-8 at byte " + std::to_string(i + 1));
      }
      i += length;
    }
  }

  // Resolves the escapes \t \n \\ \# \[ of one field.
  std::string Unescape(std::string_view field) const {
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
      if (field[i] != '\\') {
        out += field[i];
        continue;
      }
      if (i + 1 == field.size()) Fail("backslash at the end of a field");
      switch (field[++i]) {
        case 't': out += '\t'; break;
        case 'n': out += '\n'; break;
        case '\\': out += '\\'; break;
        case '#': out += '#'; break;
        case '[': out += '['; break;
        default: Fail(std::string("unknown escape \\") + field[i]);
      }
    }
    return out;
  }

  std::string HeaderName(std::string_view line) const {
    if (line.substr(0, kHeaderOpen.size()) != kHeaderOpen || line.back() != ']') {
      Fail("a section header reads [procedure NAME]");
    }
    std::string_view name = line.substr(kHeaderOpen.size());
    name.remove_suffix(1);
    if (name.empty()) Fail("section header without a procedure name");
    if (name.find_first_of("[]\\\t") != std::string_view::npos) {
      Fail("procedure name with [ ] \\ or tab");
    }
    if (name.front() == ' ' || name.back() == ' ') {
      Fail("procedure name with surrounding blanks");
    }
    return std::string(name);
  }

private:
  const std::string& _fileName;
  int _line = 0;
};

}  // namespace

const StringTableEntry* StringTableSection::Find(std::string_view key) const {
  auto it = _entries.find(key);
  return it == _entries.end() ? nullptr : &it->second;
}

StringTable::StringTable() : _my(std::make_unique<Data>()) {}
StringTable::StringTable(StringTable&&) noexcept = default;
StringTable& StringTable::operator=(StringTable&&) noexcept = default;
StringTable::~StringTable() = default;

std::string StringTable::FoldName(std::string_view name) {
  const auto first = name.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  name = name.substr(first, name.find_last_not_of(' ') - first + 1);
  std::string folded(name);
  for (char& c : folded) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return folded;
}

StringTable StringTable::Parse(std::string_view text, const std::string& fileName) {
  StringTable table;
  Data& my = *table._my;
  my._fileName = fileName;
  Parser parser(fileName);

  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(3);

  StringTableSection* section = &my._global;
  int lineNumber = 0;
  while (!text.empty()) {
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    parser.SetLine(++lineNumber);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    parser.CheckBytes(line);
    if (line.empty() || line.front() == '#') continue;

    if (line.front() == '[') {
      std::string name = parser.HeaderName(line);
      std::string folded = FoldName(name);
      if (my._byName.count(name) != 0) parser.Fail("section [procedure " + name + "] repeated");
      if (my._byFoldedName.count(folded) != 0) {
        parser.Fail("section [procedure " + name + "] differs from an earlier one only in case");
      }
      my._sections.push_back(std::make_unique<StringTableSection>(name));
      section = my._sections.back().get();
      my._byName.emplace(std::move(name), section);
      my._byFoldedName.emplace(std::move(folded), section);
      continue;
    }

    std::vector<std::string_view> fields;
    for (std::size_t start = 0;;) {
      const auto tab = line.find('\t', start);
      fields.push_back(line.substr(start, tab == std::string_view::npos ? tab : tab - start));
      if (tab == std::string_view::npos) break;
      start = tab + 1;
    }
    if (fields.size() < 2) parser.Fail("entry without a tab between key and translation");
    if (fields.size() > 4) parser.Fail("entry with more than four fields");

    std::string key = parser.Unescape(fields[0]);
    StringTableEntry entry;
    entry._translation = parser.Unescape(fields[1]);
    if (fields.size() > 2) entry._second = parser.Unescape(fields[2]);
    if (fields.size() > 3) entry._third = parser.Unescape(fields[3]);
    entry._line = lineNumber;
    if (key.empty()) parser.Fail("empty key");
    if (entry._translation.empty()) parser.Fail("empty translation for \"" + key + "\"");
    if (const StringTableEntry* earlier = section->Find(key)) {
      parser.Fail("duplicate key \"" + key + "\" (first on line " +
                  std::to_string(earlier->_line) + ")");
    }
    section->_entries.emplace(std::move(key), std::move(entry));
  }
  return table;
}

const std::string& StringTable::FileName() const noexcept { return _my->_fileName; }

const StringTableSection& StringTable::Global() const noexcept { return _my->_global; }

const StringTableSection* StringTable::FindSection(std::string_view name) const {
  auto it = _my->_byName.find(name);
  return it == _my->_byName.end() ? nullptr : it->second;
}

const StringTableSection* StringTable::FindSectionLoosely(std::string_view name) const {
  auto it = _my->_byFoldedName.find(FoldName(name));
  return it == _my->_byFoldedName.end() ? nullptr : it->second;
}

std::vector<const StringTableSection*> StringTable::Sections() const {
  std::vector<const StringTableSection*> all{&_my->_global};
  for (const auto& section : _my->_sections) all.push_back(section.get());
  return all;
}
