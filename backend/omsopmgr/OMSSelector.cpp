#include "backend/omsopmgr/OMSSelector.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "backend/omsopmgr/OMSPrecondition.h"
#include "backend/omsopmgr/OMSRecordIO.h"
#include "platform/strings/NuvaroMB.h"

namespace {

constexpr const char* kSource = "backend/omsopmgr/OMSSelector";
constexpr short kPivotTableType = 16;

// Command and subtype names are written with and without blanks and dashes ("T-Test",
// "TTEST", "Case Processing Summary"); both spellings must select the same objects.
std::string WithoutBlanksAndDashes(std::string text) {
  for (char unwanted : {' ', '-'}) {
    std::size_t end = text.size();
    for (;;) {
      const std::size_t pos = NuvaroMBstrrchr_A(std::string_view(text).substr(0, end), unwanted);
      if (pos == std::string_view::npos) break;
      text.erase(pos, 1);
      end = pos;
    }
  }
  return text;
}

bool ListMatches(const std::vector<std::string>& patterns, std::string key,
                 bool ignoreBlanksAndDashes) {
  NuvaroMBstrupr_A(key);
  if (ignoreBlanksAndDashes) key = WithoutBlanksAndDashes(std::move(key));
  for (const std::string& stored : patterns) {
    const std::string pattern = ignoreBlanksAndDashes ? WithoutBlanksAndDashes(stored) : stored;
    if (NuvaroMBstricmp_A(key, pattern) == 0) return true;
    const std::size_t star = NuvaroMBstrrchr_A(pattern, '*');
    if (star != std::string_view::npos && star + 1 == pattern.size() &&
        NuvaroMBstrnicmp_A(key, pattern, pattern.size() - 1) == 0)
      return true;
  }
  return false;
}

std::string Upper(std::string text) {
  NuvaroMBstrupr_A(text);
  return text;
}

}  // namespace

struct OMSSelector::Data {
  std::vector<std::string> _commands;
  std::vector<std::string> _subtypes;
  std::vector<std::string> _names;
  std::vector<int> _instances;
  bool _lastInstance = false;
  bool _swapBytes = false;
};

OMSSelector::OMSSelector() : _my(std::make_unique<Data>()) {}
OMSSelector::OMSSelector(const OMSSelector& other) : _my(std::make_unique<Data>(*other._my)) {}
OMSSelector& OMSSelector::operator=(const OMSSelector& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}
OMSSelector::~OMSSelector() = default;

void OMSSelector::AddCommands(const std::string& command) {
  _my->_commands.push_back(Upper(command));
}
void OMSSelector::AddSubtypes(const std::string& subtype) {
  _my->_subtypes.push_back(Upper(subtype));
}
void OMSSelector::AddNames(const std::string& name) { _my->_names.push_back(Upper(name)); }

void OMSSelector::AddInstances(int inst) {
  OMSRequire(inst > 0, kSource, "inst > 0", inst);
  _my->_instances.push_back(inst);
}

void OMSSelector::AddLastInstance() { _my->_lastInstance = true; }

const std::vector<std::string>& OMSSelector::GetCommands() const { return _my->_commands; }
const std::vector<std::string>& OMSSelector::GetSubtypes() const { return _my->_subtypes; }
const std::vector<std::string>& OMSSelector::GetNames() const { return _my->_names; }
const std::vector<int>& OMSSelector::GetInstances() const { return _my->_instances; }
int OMSSelector::GetCommandsCount() const { return static_cast<int>(_my->_commands.size()); }
int OMSSelector::GetSubtypesCount() const { return static_cast<int>(_my->_subtypes.size()); }
int OMSSelector::GetNamesCount() const { return static_cast<int>(_my->_names.size()); }
int OMSSelector::GetInstancesCount() const { return static_cast<int>(_my->_instances.size()); }

bool OMSSelector::HasCommands() const { return GetCommandsCount() > 0; }
bool OMSSelector::HasSubtypes() const { return GetSubtypesCount() > 0; }
bool OMSSelector::HasNames() const { return GetNamesCount() > 0; }
bool OMSSelector::HasInstances() const { return GetInstancesCount() > 0 || _my->_lastInstance; }
bool OMSSelector::GetHasLastInstance() const { return _my->_lastInstance; }

bool OMSSelector::EmptySubcommand() const {
  return !HasCommands() && !HasSubtypes() && !HasNames() && !HasInstances();
}

bool OMSSelector::GetHasCommand(const std::string& command) const {
  return ListMatches(_my->_commands, command, true);
}
bool OMSSelector::GetHasSubtype(const std::string& subtype) const {
  return ListMatches(_my->_subtypes, subtype, true);
}
bool OMSSelector::GetHasName(const std::string& name) const {
  return ListMatches(_my->_names, name, false);
}

bool OMSSelector::GetHasInstance(int n) const {
  const std::vector<int>& list = _my->_instances;
  return std::find(list.begin(), list.end(), n) != list.end();
}

bool OMSSelector::MatchesObject(short type, const std::string& command, const std::string& subtype,
                                const std::string& label) const {
  if (HasCommands() && !GetHasCommand(command)) return false;
  if (HasSubtypes() && type == kPivotTableType && !GetHasSubtype(subtype)) return false;
  if (HasNames() && !GetHasName(label)) return false;
  return true;
}

void OMSSelector::SwapBytes(bool swap) { _my->_swapBytes = swap; }
bool OMSSelector::GetSwapBytes() const { return _my->_swapBytes; }

void OMSSelector::DoSwapBytes(void* p, int n) { ReverseBytes(p, n); }

namespace {
void WriteStrings(OMSRecordWriter& writer, const std::vector<std::string>& list) {
  writer.Int32(static_cast<std::int32_t>(list.size()));
  for (const std::string& s : list) writer.String(s);
}

// Reads a count and that many strings. When a string is too long the list ends with that entry,
// which keeps its previous value (or stays empty); the count is not trusted for an allocation.
bool ReadStrings(OMSRecordReader& reader, std::vector<std::string>& list, bool swap,
                 const char* field) {
  std::int32_t count = 0;
  if (!reader.Count(count, swap, field)) return false;
  std::vector<std::string> read;
  read.reserve(static_cast<std::size_t>(std::min<std::int32_t>(count, 64)));
  for (std::int32_t i = 0; i < count; ++i) {
    std::string value = i < static_cast<std::int32_t>(list.size()) ? list[i] : std::string();
    const bool complete = reader.String(value, field);
    read.push_back(std::move(value));
    if (!complete) break;
  }
  list = std::move(read);
  return reader.Ok();
}
}  // namespace

void OMSSelector::Write(OMSRecordWriter& writer) const {
  WriteStrings(writer, _my->_commands);
  WriteStrings(writer, _my->_subtypes);
  WriteStrings(writer, _my->_names);
  writer.Int32(static_cast<std::int32_t>(_my->_instances.size()));
  for (int inst : _my->_instances) writer.Int32(inst);
  writer.Flag(_my->_lastInstance);
}

void OMSSelector::Read(OMSRecordReader& reader) {
  const bool swap = _my->_swapBytes;
  if (!ReadStrings(reader, _my->_commands, swap, "commands")) return;
  if (!ReadStrings(reader, _my->_subtypes, swap, "subtypes")) return;
  if (!ReadStrings(reader, _my->_names, swap, "names")) return;
  std::int32_t count = 0;
  if (!reader.Count(count, swap, "instances")) return;
  std::vector<int> instances;
  instances.reserve(static_cast<std::size_t>(std::min<std::int32_t>(count, 64)));
  for (std::int32_t i = 0; i < count; ++i) {
    std::int32_t inst = 0;
    reader.Int32(inst, swap, "instances");
    instances.push_back(inst);
  }
  _my->_instances = std::move(instances);
  reader.Flag(_my->_lastInstance, "last instance");
}

std::ostream& operator<<(std::ostream& out, const OMSSelector& selector) {
  OMSRecordWriter writer(out);
  selector.Write(writer);
  return out;
}

std::istream& operator>>(std::istream& in, OMSSelector& selector) {
  OMSRecordReader reader(in, "OMSSelector::operator>>");
  if (!reader.Ok()) return in;
  OMSSelector read(selector);  // the selector changes only when no exception ends the record
  read.Read(reader);
  selector = read;
  return in;
}
