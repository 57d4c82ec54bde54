#include "platform/settings/BackendSettings.h"

#include <charconv>
#include <utility>

#include "platform/errors/OMSException.h"

struct BackendSettings::Data {
  std::string _procedureName;
  std::string _translatedName;
  std::string _outputLanguage = "en";
  std::string _codePage = "UTF-8";
  std::string _locale = "en_US";
  bool _unicode = true;
  bool _bootstrapped = false;
  bool _fastTables = false;
  unsigned int _maxCells = 0;
};

namespace {

bool SameKey(std::string_view key, std::string_view name) {
  if (key.size() != name.size()) return false;
  for (std::size_t i = 0; i < key.size(); ++i) {
    char c = key[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != name[i]) return false;
  }
  return true;
}

[[noreturn]] void Malformed(std::string_view key, std::size_t lineNumber) {
  throw OMSException("BackendSettings::setSettings -- malformed value for key " + std::string(key),
                     static_cast<double>(lineNumber));
}

unsigned int ParseUnsigned(std::string_view key, std::string_view value, std::size_t lineNumber) {
  unsigned int result = 0;
  const char* end = value.data() + value.size();
  auto [ptr, error] = std::from_chars(value.data(), end, result);
  if (value.empty() || error != std::errc() || ptr != end) Malformed(key, lineNumber);
  return result;
}

bool ParseFlag(std::string_view key, std::string_view value, std::size_t lineNumber) {
  if (value == "0") return false;
  if (value == "1") return true;
  Malformed(key, lineNumber);
}

} // namespace

BackendSettings::BackendSettings() : _my(std::make_unique<Data>()) {}
BackendSettings::BackendSettings(const BackendSettings& other)
    : _my(std::make_unique<Data>(*other._my)) {}
BackendSettings& BackendSettings::operator=(const BackendSettings& other) {
  if (this != &other) _my = std::make_unique<Data>(*other._my);
  return *this;
}
BackendSettings::~BackendSettings() = default;

void BackendSettings::setSettings(std::string_view text) {
  Data parsed;
  std::size_t lineNumber = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t stop = text.find('\n', start);
    if (stop == std::string_view::npos) stop = text.size();
    std::string_view line = text.substr(start, stop - start);
    start = stop + 1;
    ++lineNumber;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || line.front() == '#') continue;
    std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    std::string_view key = line.substr(0, equals);
    std::string_view value = line.substr(equals + 1);

    if (SameKey(key, "procedure")) {
      parsed._procedureName = value;
    } else if (SameKey(key, "translated")) {
      parsed._translatedName = value;
    } else if (SameKey(key, "language")) {
      parsed._outputLanguage = value;
    } else if (SameKey(key, "codepage")) {
      parsed._codePage = value;
    } else if (SameKey(key, "locale")) {
      parsed._locale = value;
    } else if (SameKey(key, "unicode")) {
      parsed._unicode = ParseFlag("unicode", value, lineNumber);
    } else if (SameKey(key, "bootstrapped")) {
      parsed._bootstrapped = ParseFlag("bootstrapped", value, lineNumber);
    } else if (SameKey(key, "fasttables")) {
      parsed._fastTables = ParseFlag("fasttables", value, lineNumber);
    } else if (SameKey(key, "maxcells")) {
      parsed._maxCells = ParseUnsigned("maxcells", value, lineNumber);
    }
  }
  *_my = std::move(parsed);
}

const std::string& BackendSettings::getProcedureName() const { return _my->_procedureName; }
const std::string& BackendSettings::getTranslatedName() const { return _my->_translatedName; }
const std::string& BackendSettings::getOutputLanguage() const { return _my->_outputLanguage; }
const std::string& BackendSettings::getCodePage() const { return _my->_codePage; }
const std::string& BackendSettings::getLocale() const { return _my->_locale; }
bool BackendSettings::getUnicode() const { return _my->_unicode; }
bool BackendSettings::getBootstrapped() const { return _my->_bootstrapped; }
bool BackendSettings::getFastTables() const { return _my->_fastTables; }
unsigned int BackendSettings::getMaxCells() const { return _my->_maxCells; }
