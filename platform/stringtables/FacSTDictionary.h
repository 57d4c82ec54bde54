// The string-table dictionary of a factory session: translates the keys of translatable texts
// into the output language. The session switches the language (SetGlobalStringTable) and the
// procedure (SetProcedureEx); the output translator calls setICUTracker and LookUp per cell.
#pragma once

#include <memory>
#include <string>

#include "platform/stringtables/ExtNameStr.h"

class CodePage;
class icuTracker;
class StringTable;

// A string-table location is a language folder holding "omfactory.stt", the table file itself,
// or a root folder holding "lang/en/omfactory.stt" (read as English). A location that holds none
// of these, an empty location included, behaves like an empty table: every key translates to
// itself, so a session without string tables still works. A malformed table file is an
// OMSException naming file and line. Each file is read once per process and shared by every
// dictionary on it; tables are UTF-8, results are in the dictionary's code page.
class FacSTDictionary {
public:
  // The name of the table file inside a language folder.
  static constexpr const char* kTableFileName = "omfactory.stt";

  // A dictionary without a table.
  FacSTDictionary();
  // A dictionary on a location. Unless a root was set, PathFactory's string-table root follows it.
  explicit FacSTDictionary(const ExtNameStr& path);
  explicit FacSTDictionary(const std::string& path);
  // Copies share the table they were read from.
  FacSTDictionary(const FacSTDictionary& other);
  FacSTDictionary& operator=(const FacSTDictionary& other);
  ~FacSTDictionary();

  // Switches to the table at path (a new output language); the selected procedure is kept and
  // looked up again in the new table. On failure the dictionary keeps its previous table.
  void SetGlobalStringTable(const ExtNameStr& path);
  void SetGlobalStringTable(const std::string& path);
  const ExtNameStr& GetStringTablePath() const noexcept;

  // Selects the section "[procedure name]" by its exact name; look-ups try it before the global
  // section. "" or a name without a section leaves only the global section.
  void SetProcedure(const std::string& name);
  // The same for a procedure name as the procedure's settings give it: matched without regard
  // to ASCII case and surrounding blanks.
  void SetProcedureEx(const std::string& name);
  // The name last given to SetProcedure or SetProcedureEx.
  const std::string& GetProcedure() const noexcept;

  // The tracker of the cell about to be looked up (borrowed, may be null). Tables are UTF-8 and
  // look-ups do not depend on it; it is kept for the caller's conversions.
  void setICUTracker(icuTracker* tracker) noexcept;
  icuTracker* getICUTracker() const noexcept;

  // The code page of the session's texts (borrowed, may be null: UTF-8): keys are given and
  // translations returned in it, converted from and to the tables' UTF-8.
  void SetCodePage(const CodePage* codePage) noexcept;

  // The translation of key, and its second and third texts. A key that neither the procedure's
  // section nor the global section holds translates to itself with empty second and third texts.
  std::string LookUp(const std::string& key, std::string& second, std::string& third) const;
  // The translation alone.
  std::string LookUp(const std::string& key) const;

  // True when a table file was read for the current location.
  bool HasTable() const noexcept;
  // The table read for the current location; null when there is none.
  const StringTable* Table() const noexcept;

  // Forgets every table read so far; the next dictionary on a location reads its file again.
  // Dictionaries that already hold a table keep it.
  static void ClearCache();

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
