// The settings of one procedure, parsed from the "key=value" text that IPC_BEGIN_PROCEDURE
// carries. The factory session reads names, language, code page and locale from it when a
// procedure starts; pivot tables keep a shared copy for the fast-table and cell-limit settings.
#pragma once

#include <memory>
#include <string>
#include <string_view>

class BackendSettings {
public:
  // Every setting at its default: names "", language "en", code page "UTF-8", locale "en_US",
  // Unicode on, not bootstrapped, no fast tables, no cell limit.
  BackendSettings();
  BackendSettings(const BackendSettings& other);
  BackendSettings& operator=(const BackendSettings& other);
  ~BackendSettings();

  // Replaces every setting by the defaults overridden by the lines of the text: "key=value" lines
  // separated by "\n" (a trailing "\r" is dropped), keys without regard to case, "#" comment and
  // blank lines skipped, unknown keys ignored, a later line winning. A malformed number or flag
  // throws OMSException naming the key (value 1 = the line number) and leaves the settings as
  // they were.
  void setSettings(std::string_view text);

  const std::string& getProcedureName() const;
  const std::string& getTranslatedName() const;
  const std::string& getOutputLanguage() const;
  const std::string& getCodePage() const;
  const std::string& getLocale() const;
  bool getUnicode() const;
  bool getBootstrapped() const;
  bool getFastTables() const;
  // The largest number of cells a table may hold; 0 means no limit.
  unsigned int getMaxCells() const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
