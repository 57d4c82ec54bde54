// One parsed string-table file: a global section and named procedure sections, each mapping a key
// to its translation and two further texts. FacSTDictionary loads and caches these; the file
// format is described in stringtables/README.md.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// What a key translates to. The second and third texts are often empty.
struct StringTableEntry {
  std::string _translation;
  std::string _second;
  std::string _third;
  int _line = 0;  // line of the file that defined it, for messages
};

class StringTableSection {
public:
  // Hashing that accepts std::string_view as well as std::string, so look-ups never copy keys.
  struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const noexcept {
      return std::hash<std::string_view>{}(s);
    }
  };
  using EntryMap = std::unordered_map<std::string, StringTableEntry, KeyHash, std::equal_to<>>;

  explicit StringTableSection(std::string name) : _name(std::move(name)) {}

  // "" for the global section.
  const std::string& Name() const noexcept { return _name; }
  // Null when the section has no entry for key.
  const StringTableEntry* Find(std::string_view key) const;
  const EntryMap& Entries() const noexcept { return _entries; }

private:
  friend class StringTable;
  std::string _name;
  EntryMap _entries;
};

class StringTable {
public:
  // Parses text read from fileName (named in messages only). A malformed text is an
  // OMSException "StringTable::Parse -- <fileName> line <n>: <what is wrong>", value 1 = n.
  static StringTable Parse(std::string_view text, const std::string& fileName);

  StringTable();
  StringTable(StringTable&&) noexcept;
  StringTable& operator=(StringTable&&) noexcept;
  ~StringTable();

  // The file name given to Parse.
  const std::string& FileName() const noexcept;
  const StringTableSection& Global() const noexcept;
  // The procedure section named exactly name; null when there is none.
  const StringTableSection* FindSection(std::string_view name) const;
  // The procedure section whose name equals name without regard to ASCII case and surrounding
  // blanks; null when there is none.
  const StringTableSection* FindSectionLoosely(std::string_view name) const;
  // Every section, the global one first, then the procedure sections in file order.
  std::vector<const StringTableSection*> Sections() const;

  // name folded as FindSectionLoosely compares it.
  static std::string FoldName(std::string_view name);

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
