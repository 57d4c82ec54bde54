#include "backend/omsopmgr/OMSColumns.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "backend/omsopmgr/OMSPrecondition.h"
#include "backend/omsopmgr/OMSRecordIO.h"
#include "platform/strings/NuvaroMB.h"

namespace {
constexpr const char* kSource = "backend/omsopmgr/OMSColumns";
}  // namespace

// ---------------------------------------------------------------------------------------------
// OmParsedColumn

struct OmParsedColumn::Data {
  COLUMNAXIS _axis = kNOAXIS;
  std::string _token;
  int _number = -1;
  bool _all = false;
  bool _swapBytes = false;
};

OmParsedColumn::OmParsedColumn(const std::string& token) : _my(std::make_unique<Data>()) {
  _my->_token = token;
  const std::size_t first = token.find_first_not_of("rRcClL");
  if (first == std::string::npos || first != 1) return;  // no number, or not one axis letter
  switch (token[0]) {
    case 'r': case 'R': _my->_axis = kROWS; break;
    case 'c': case 'C': _my->_axis = kCOLUMNS; break;
    default: _my->_axis = kLAYERS; break;
  }
  const std::string rest = token.substr(first);
  if (rest.find_first_not_of("0123456789") != std::string::npos) {
    if (NuvaroMBstricmp_A(rest, "ALL") == 0) {
      _my->_all = true;
      _my->_number = kAllNumber;
    }
    return;
  }
  // A position beyond what an int holds names no dimension: the token stays without a number.
  const double value = std::strtod(rest.c_str(), nullptr);
  if (value >= 1.0 && value <= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
    _my->_number = static_cast<int>(value);
}

OmParsedColumn::OmParsedColumn(const OmParsedColumn& other)
    : _my(std::make_unique<Data>(*other._my)) {}

OmParsedColumn& OmParsedColumn::operator=(const OmParsedColumn& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

OmParsedColumn::~OmParsedColumn() = default;

OmParsedColumn::COLUMNAXIS OmParsedColumn::GetAxis() const { return _my->_axis; }
int OmParsedColumn::GetNumber() const { return _my->_number; }
bool OmParsedColumn::IsAll() const { return _my->_all; }
const std::string& OmParsedColumn::GetColumnToken() const { return _my->_token; }

bool OmParsedColumn::IsValidToken() const {
  return _my->_axis != kNOAXIS && (_my->_number > 0 || _my->_all);
}

bool OmParsedColumn::operator==(const OmParsedColumn& other) const {
  return _my->_axis == other._my->_axis && _my->_number == other._my->_number &&
         _my->_all == other._my->_all;
}

void OmParsedColumn::SwapBytes(bool swap) { _my->_swapBytes = swap; }

void OmParsedColumn::Write(OMSRecordWriter& writer) const {
  writer.Int32(_my->_axis);
  writer.String(_my->_token);
  writer.Int32(_my->_number);
  writer.Flag(_my->_all);
}

void OmParsedColumn::Read(OMSRecordReader& reader) {
  const bool swap = _my->_swapBytes;
  std::int32_t axis = 0;
  if (!reader.Int32(axis, swap, "column axis")) return;
  _my->_axis = static_cast<COLUMNAXIS>(axis);
  if (!reader.String(_my->_token, "column token")) return;
  std::int32_t number = 0;
  if (!reader.Int32(number, swap, "column number")) return;
  _my->_number = number;
  reader.Flag(_my->_all, "column all flag");
}

std::ostream& operator<<(std::ostream& out, const OmParsedColumn& column) {
  OMSRecordWriter writer(out);
  column.Write(writer);
  return out;
}

std::istream& operator>>(std::istream& in, OmParsedColumn& column) {
  OMSRecordReader reader(in, "OmParsedColumn::operator>>");
  if (!reader.Ok()) return in;
  OmParsedColumn read(column);  // the column changes only when no exception ends the record
  read.Read(reader);
  column = read;
  return in;
}

// ---------------------------------------------------------------------------------------------
// OMSColumns

struct OMSColumns::Data {
  COLUMNSFORM _columnsForm = kNONE;
  std::vector<OmParsedColumn> _sequences;
  std::vector<std::string> _dimNames;
  bool _swapBytes = false;
};

OMSColumns::OMSColumns() : _my(std::make_unique<Data>()) {}
OMSColumns::OMSColumns(const OMSColumns& other) : _my(std::make_unique<Data>(*other._my)) {}

OMSColumns& OMSColumns::operator=(const OMSColumns& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

OMSColumns::~OMSColumns() = default;

void OMSColumns::SetColumnsForm(COLUMNSFORM form) { _my->_columnsForm = form; }
OMSColumns::COLUMNSFORM OMSColumns::GetColumnsForm() const { return _my->_columnsForm; }

void OMSColumns::AddColumn(const OmParsedColumn& pc) {
  OMSRequire(!HasColumn(pc), kSource, "!HasColumn(pc)", pc.GetAxis(), pc.GetNumber());
  OMSRequire(_my->_columnsForm != kDIMNAMES, kSource,
             "_my._columnsForm != OMSColumns::kDIMNAMES", _my->_columnsForm);
  OMSRequire(pc.IsValidToken(), kSource, "pc.IsValidToken()", pc.GetAxis(), pc.GetNumber());
  _my->_sequences.push_back(pc);
  _my->_columnsForm = kSEQUENCE;
}

void OMSColumns::AddColumn(const std::string& str) {
  OMSRequire(!HasColumn(str), kSource, "!HasColumn(str)");
  OMSRequire(_my->_columnsForm != kSEQUENCE, kSource,
             "_my._columnsForm != OMSColumns::kSEQUENCE", _my->_columnsForm);
  _my->_dimNames.push_back(str);
  _my->_columnsForm = kDIMNAMES;
}

bool OMSColumns::HasColumn(const OmParsedColumn& pc) const {
  OMSRequire(_my->_columnsForm != kDIMNAMES, kSource,
             "_my._columnsForm != OMSColumns::kDIMNAMES", _my->_columnsForm);
  const auto& list = _my->_sequences;
  return std::find(list.begin(), list.end(), pc) != list.end();
}

bool OMSColumns::HasColumn(const std::string& str) const {
  OMSRequire(_my->_columnsForm != kSEQUENCE, kSource,
             "_my._columnsForm != OMSColumns::kSEQUENCE", _my->_columnsForm);
  for (const std::string& name : _my->_dimNames)
    if (NuvaroMBstricmp_A(name, str) == 0) return true;
  return false;
}

bool OMSColumns::HasAxis(OmParsedColumn::COLUMNAXIS axis) const {
  OMSRequire(_my->_columnsForm != kDIMNAMES, kSource,
             "_my._columnsForm != OMSColumns::kDIMNAMES", _my->_columnsForm);
  for (const OmParsedColumn& column : _my->_sequences)
    if (column.GetAxis() == axis) return true;
  return false;
}

bool OMSColumns::HasAxisAll(OmParsedColumn::COLUMNAXIS axis) const {
  for (const OmParsedColumn& column : _my->_sequences)
    if (column.GetAxis() == axis && column.IsAll()) return true;
  return false;
}

const std::vector<std::string>& OMSColumns::GetDimNames() const {
  OMSRequire(_my->_columnsForm == kDIMNAMES, kSource,
             "_my._columnsForm == OMSColumns::kDIMNAMES", _my->_columnsForm);
  return _my->_dimNames;
}

const std::vector<OmParsedColumn>& OMSColumns::GetSequences() const {
  OMSRequire(_my->_columnsForm == kSEQUENCE, kSource,
             "_my._columnsForm == OMSColumns::kSEQUENCE", _my->_columnsForm);
  return _my->_sequences;
}

bool OMSColumns::operator==(const OMSColumns& other) const {
  if (_my->_columnsForm != other._my->_columnsForm) return false;
  if (_my->_columnsForm == kDIMNAMES) {
    const auto& a = _my->_dimNames;
    const auto& b = other._my->_dimNames;
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
      if (NuvaroMBstricmp_A(a[i], b[i]) != 0) return false;
    return true;
  }
  if (_my->_columnsForm == kSEQUENCE) return _my->_sequences == other._my->_sequences;
  return true;
}

void OMSColumns::SwapBytes(bool swap) {
  _my->_swapBytes = swap;
  for (OmParsedColumn& column : _my->_sequences) column.SwapBytes(swap);
}

void OMSColumns::Write(OMSRecordWriter& writer) const {
  writer.Int32(_my->_columnsForm);
  writer.Int32(static_cast<std::int32_t>(_my->_sequences.size()));
  for (const OmParsedColumn& column : _my->_sequences) column.Write(writer);
  writer.Int32(static_cast<std::int32_t>(_my->_dimNames.size()));
  for (const std::string& name : _my->_dimNames) writer.String(name);
}

// Lists are built entry by entry, so an absurd count costs no more memory than the record holds.
// When a string is too long the list ends with the entry that keeps its previous value.
void OMSColumns::Read(OMSRecordReader& reader) {
  const bool swap = _my->_swapBytes;
  std::int32_t form = 0;
  if (!reader.Int32(form, swap, "columns form")) return;
  _my->_columnsForm = static_cast<COLUMNSFORM>(form);

  std::int32_t count = 0;
  if (!reader.Count(count, swap, "sequence columns")) return;
  std::vector<OmParsedColumn> sequences;
  for (std::int32_t i = 0; i < count && reader.Ok(); ++i) {
    OmParsedColumn column = i < static_cast<std::int32_t>(_my->_sequences.size())
                                ? _my->_sequences[static_cast<std::size_t>(i)]
                                : OmParsedColumn(std::string());
    column.SwapBytes(swap);
    column.Read(reader);
    sequences.push_back(std::move(column));
  }
  _my->_sequences = std::move(sequences);
  if (!reader.Ok()) return;

  if (!reader.Count(count, swap, "dimension names")) return;
  std::vector<std::string> names;
  for (std::int32_t i = 0; i < count && reader.Ok(); ++i) {
    std::string name = i < static_cast<std::int32_t>(_my->_dimNames.size())
                           ? _my->_dimNames[static_cast<std::size_t>(i)]
                           : std::string();
    reader.String(name, "dimension names");
    names.push_back(std::move(name));
  }
  _my->_dimNames = std::move(names);
}

std::ostream& operator<<(std::ostream& out, const OMSColumns& columns) {
  OMSRecordWriter writer(out);
  columns.Write(writer);
  return out;
}

std::istream& operator>>(std::istream& in, OMSColumns& columns) {
  OMSRecordReader reader(in, "OMSColumns::operator>>");
  if (!reader.Ok()) return in;
  OMSColumns read(columns);  // the columns change only when no exception ends the record
  read.Read(reader);
  columns = read;
  return in;
}
