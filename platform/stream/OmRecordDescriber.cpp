#include "platform/stream/OmRecordDescriber.h"

#include <bit>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/stream/MessageCodes.h"

namespace {

// Payload layouts, one row per code, in the order of the message table. Tokens, separated by
// blanks: name:b byte, name:c signed byte, name:h int16, name:i int32, name:x int32 in hex,
// name:q int64, name:f double (all swapped with the sender's order); name:n int32 and name:u
// uint32 never swapped; -N N reserved bytes; @N continue at offset N; name:t=len text whose length
// is the earlier field len; name:z zero-terminated text; name:v=len the data value (a double when
// len is 0, else text); name:p the rest as a multi-part share.
struct Layout {
  MessageCode code;
  const char* fields;
};

constexpr Layout kLayouts[] = {
  {MessageCode::IPC_CONVERSION_NAME,    "value:b n:b name:t=n"},
  {MessageCode::IPC_OUTPUT_SETTING,     "@16 keyword:z @32 value:z"},
  {MessageCode::IPC_CONVERSION_PAIR,    "first:i second:i"},
  {MessageCode::IPC_BYTE_ORDER,         "probe:n"},
  {MessageCode::IPC_NUMBER,             "value:f format:x cell:i"},
  {MessageCode::IPC_INTEGER,            "value:i format:x cell:i"},
  {MessageCode::IPC_STRING,             "length:i cell:i literal:i text:t=length"},
  {MessageCode::IPC_BEGIN_COMPOSITE,    "composite:i pattern:i"},
  {MessageCode::IPC_BEGIN_REPEAT_LIST,  ""},
  {MessageCode::IPC_END_REPEAT_LIST,    ""},
  {MessageCode::IPC_COMPOSITE_ARGUMENT, "cell:i"},
  {MessageCode::IPC_TABLE_COLORS,       "start:i end:i"},
  {MessageCode::IPC_REQUIRED_TABLE,     "first:i second:i"},
  {MessageCode::IPC_SCRATCH_TABLE,      "title:i"},
  {MessageCode::IPC_BEGIN_TABLE,        "tcid:b -3 title:i subtype:i flag:b"},
  {MessageCode::IPC_CATEGORY,           "tcid:b -3 category:i dimension:i"},
  {MessageCode::IPC_BEGIN_GROUP,        "tcid:b -3 group:i dimension:i"},
  {MessageCode::IPC_END_GROUP,          "tcid:b -3 dimension:i"},
  {MessageCode::IPC_CELL_DIMENSION,     "tcid:b -3 dimension:i"},
  {MessageCode::IPC_CELL,               "tcid:b -3 value:i category:i"},
  {MessageCode::IPC_CELL_CATEGORY,      "tcid:b -3 category:i"},
  {MessageCode::IPC_END_TABLE,          "tcid:b"},
  {MessageCode::IPC_BEGIN_PROCEDURE,    "id:q length:i settings:t=length"},
  {MessageCode::IPC_BEGIN_NODE,         "cell:i"},
  {MessageCode::IPC_END_NODE,           ""},
  {MessageCode::IPC_ANNOTATE,           "target:i text:i"},
  {MessageCode::IPC_SPLIT_CATEGORY,     "variable:i category:i"},
  {MessageCode::IPC_DIMENSION,          "tcid:b -3 dimension:i"},
  {MessageCode::IPC_SCRATCH_CATEGORY,   "first:i second:i"},
  {MessageCode::IPC_PLACE_DIMENSION,    "tcid:b -3 dimension:i position:i axis:i flag1:i flag2:i"},
  {MessageCode::IPC_ANNOTATE_MARKED,    "target:i text:i marker:i"},
  {MessageCode::IPC_DISCARD_CELL,       "cell:i"},
  {MessageCode::IPC_COPY_CELL,          "source:i target:i"},
  {MessageCode::IPC_SORT_GROUP,         "tcid:b -3 value:i"},
  {MessageCode::IPC_SORT_DIMENSION,     "tcid:b -3 value:i"},
  {MessageCode::IPC_SORT_UNGROUP,       "tcid:b -3 value:i"},
  {MessageCode::IPC_END_PROCEDURE,      "id:u index:u count:u share:p"},
  {MessageCode::IPC_PRINT_LINE,         "skip:i length:i text:t=length"},
  {MessageCode::IPC_LOG_LINE,           "skip:i length:i text:t=length"},
  {MessageCode::IPC_FLUSH_LOG,          ""},
  {MessageCode::IPC_BEGIN_TEXT_BLOCK,   "cell:i"},
  {MessageCode::IPC_UNGROUP,            "tcid:b"},
  {MessageCode::IPC_CORNER_TEXT,        "tcid:b -3 cell:i"},
  {MessageCode::IPC_CLEAR_TABLE_FLAG,   "tcid:b"},
  {MessageCode::IPC_REFRESH,            ""},
  {MessageCode::IPC_TABLE_PROPERTY,     "tcid:b -3 property:i cell:i"},
  {MessageCode::IPC_SWAP_BYTES,         "on:b"},
  {MessageCode::IPC_PAGE_TITLE,         "titleLength:i subtitleLength:i title:t=titleLength -1 "
                                        "subtitle:t=subtitleLength"},
  {MessageCode::IPC_CHART_XML,          "type:c subtype:c -2 length:i data:t=length"},
  {MessageCode::IPC_VARIABLE,           "cell:i display:i nameLength:i labelLength:i "
                                        "name:t=nameLength label:t=labelLength"},
  {MessageCode::IPC_DATA_VALUE,         "cell:i display:i format:x nameLength:i labelLength:i "
                                        "valueLength:h name:t=nameLength value:v=valueLength "
                                        "label:t=labelLength"},
  {MessageCode::IPC_COLUMN_WIDTH,       "tcid:b -3 which:i minimum:i maximum:i"},
  {MessageCode::IPC_MODEL_PMML,         "id:u index:u count:u share:p"},
  {MessageCode::IPC_TREE_XML,           "index:n type:n length:n extra:n data:t=length"},
  {MessageCode::IPC_BOLD,               ""},
  {MessageCode::IPC_BACKGROUND_COLOR,   "-4 length:i -4 colour:t=length"},
  {MessageCode::IPC_TEXT_COLOR,         "-4 length:i -4 colour:t=length"},
  {MessageCode::IPC_MARKER,             "-8 cell:i"},
  {MessageCode::IPC_OUTLINE_TEXT,       "length:i text:t=length"},
  {MessageCode::IPC_INTERACTIVE_JSON,   "index:i type:i length:i data:t=length"},
  {MessageCode::IPC_LONG_STRING,        "lengthA:i lengthB:i cell:i kind:i last:b "
                                        "a:t=lengthA b:t=lengthB"},
  {MessageCode::IPC_LONG_TEXT,          "lengthA:i lengthB:i lengthC:i cell:i "
                                        "a:t=lengthA b:t=lengthB c:t=lengthC"},
  {MessageCode::IPC_HIDE_CATEGORY,      ""},
  {MessageCode::IPC_MISC_PROPERTY,      "target:i length:i text:t=length"},
};

const char* LayoutOf(std::int16_t code) {
  for (const Layout& layout : kLayouts) {
    if (static_cast<std::int16_t>(layout.code) == code) return layout.fields;
  }
  return nullptr;
}

void AppendText(std::string& out, const std::uint8_t* text, std::size_t length) {
  out += '"';
  const std::size_t shown = std::min(length, OmRecordDescriber::kTextShown);
  for (std::size_t i = 0; i < shown; ++i) {
    const unsigned char c = text[i];
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20 || c == 0x7F) {
          char hex[5];
          std::snprintf(hex, sizeof hex, "\\x%02X", c);
          out += hex;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  out += '"';
  if (shown < length) out += "...(" + std::to_string(length) + " bytes)";
}

void AppendDouble(std::string& out, double value) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

// Decodes one payload field by field; stops at the first field that does not fit.
class FieldReader {
public:
  FieldReader(const std::uint8_t* payload, std::size_t length, bool swap)
      : _payload(payload), _length(length), _swap(swap) {}

  // Appends " name=value" for every field of the layout, " truncated" where the payload ends early
  // and " (+N extra bytes)" for bytes after the last field.
  void Describe(std::string_view layout, std::string& out) {
    while (!layout.empty()) {
      const std::size_t blank = layout.find(' ');
      const std::string_view token = layout.substr(0, blank);
      layout = blank == std::string_view::npos ? std::string_view() : layout.substr(blank + 1);
      if (token.empty()) continue;
      if (!Field(token, out)) {
        out += " truncated";
        return;
      }
    }
    if (_offset < _length) out += " (+" + std::to_string(_length - _offset) + " extra bytes)";
  }

  std::int64_t Value(std::string_view name) const {
    for (const auto& [field, value] : _values) {
      if (field == name) return value;
    }
    return 0;
  }

private:
  bool Field(std::string_view token, std::string& out) {
    if (token.front() == '-' || token.front() == '@') {
      std::size_t count = 0;
      std::from_chars(token.data() + 1, token.data() + token.size(), count);
      const std::size_t target = token.front() == '-' ? _offset + count : count;
      if (target > _length) return false;
      _offset = target;
      return true;
    }
    const std::size_t colon = token.find(':');
    const std::string_view name = token.substr(0, colon);
    const char type = token[colon + 1];
    const std::string_view argument =
        token.size() > colon + 3 ? token.substr(colon + 3) : std::string_view();
    out += ' ';
    out += name;
    out += '=';
    switch (type) {
      case 'b': return Number(name, 1, false, false, out);
      case 'c': return Number(name, 1, false, true, out);
      case 'h': return Number(name, 2, _swap, true, out);
      case 'i': return Number(name, 4, _swap, true, out);
      case 'q': return Number(name, 8, _swap, true, out);
      case 'n': return Number(name, 4, false, true, out);
      case 'u': return Number(name, 4, false, false, out);
      case 'x': {
        std::uint64_t bits = 0;
        if (!Raw(4, _swap, bits)) return false;
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(bits));
        out += hex;
        return true;
      }
      case 'f': {
        std::uint64_t bits = 0;
        if (!Raw(8, _swap, bits)) return false;
        AppendDouble(out, std::bit_cast<double>(bits));
        return true;
      }
      case 't': return Text(Value(argument), out);
      case 'v': {
        if (Value(argument) != 0) return Text(Value(argument), out);
        std::uint64_t bits = 0;
        if (!Raw(8, _swap, bits)) return false;
        AppendDouble(out, std::bit_cast<double>(bits));
        return true;
      }
      case 'z': {
        std::size_t end = _offset;
        while (end < _length && _payload[end] != 0) ++end;
        AppendText(out, _payload + _offset, end - _offset);
        if (end == _length) return false; // no terminating zero inside the payload
        _offset = end + 1;
        return true;
      }
      case 'p': {
        out += std::to_string(_length - _offset) + " bytes";
        _offset = _length;
        return true;
      }
      default: return false;
    }
  }

  bool Raw(std::size_t width, bool swap, std::uint64_t& bits) {
    if (width > _length - _offset) return false;
    bits = 0;
    for (std::size_t i = 0; i < width; ++i) {
      const std::size_t shift = 8 * (swap ? width - 1 - i : i);
      bits |= static_cast<std::uint64_t>(_payload[_offset + i]) << shift;
    }
    _offset += width;
    return true;
  }

  bool Number(std::string_view name, std::size_t width, bool swap, bool isSigned,
              std::string& out) {
    std::uint64_t bits = 0;
    if (!Raw(width, swap, bits)) return false;
    std::int64_t value = static_cast<std::int64_t>(bits);
    if (isSigned && width < 8) {
      const std::uint64_t sign = std::uint64_t{1} << (8 * width - 1);
      value = static_cast<std::int64_t>((bits ^ sign)) - static_cast<std::int64_t>(sign);
    }
    _values.emplace_back(name, value);
    out += std::to_string(value);
    return true;
  }

  bool Text(std::int64_t length, std::string& out) {
    if (length < 0) {
      out += "<bad length " + std::to_string(length) + ">";
      return false;
    }
    if (static_cast<std::uint64_t>(length) > _length - _offset) {
      AppendText(out, _payload + _offset, _length - _offset);
      return false;
    }
    AppendText(out, _payload + _offset, static_cast<std::size_t>(length));
    _offset += static_cast<std::size_t>(length);
    return true;
  }

  const std::uint8_t* _payload;
  std::size_t _length;
  bool _swap;
  std::size_t _offset = 0;
  std::vector<std::pair<std::string_view, std::int64_t>> _values;
};

} // namespace

struct OmRecordDescriber::Data {
  bool _swap = false;
};

OmRecordDescriber::OmRecordDescriber() : _my(std::make_unique<Data>()) {}
OmRecordDescriber::~OmRecordDescriber() = default;

bool OmRecordDescriber::SwapBytes() const { return _my->_swap; }
void OmRecordDescriber::SwapBytes(bool on) { _my->_swap = on; }

std::string OmRecordDescriber::Describe(const OmStreamRecord& record) {
  return Describe(record.code, record.payload.data(), record.payload.size());
}

std::string OmRecordDescriber::Describe(std::int16_t code, const std::uint8_t* payload,
                                        std::size_t length) {
  if (payload == nullptr) length = 0;
  std::string out;
  const char* name = MessageCodeNameOf(code);
  out += name != nullptr ? name : "code";
  out += " (" + std::to_string(code) + ") " + std::to_string(length) + " bytes:";
  const char* layout = LayoutOf(code);
  if (layout == nullptr) {
    // Unknown to the factory, which ignores it: show the first bytes.
    char hex[4];
    for (std::size_t i = 0; i < length && i < 16; ++i) {
      std::snprintf(hex, sizeof hex, " %02X", payload[i]);
      out += hex;
    }
    if (length > 16) out += " ...";
    return out;
  }
  FieldReader reader(payload, length, _my->_swap);
  reader.Describe(layout, out);

  // Follow the byte order as the factory does, so that later records decode correctly.
  if (code == static_cast<std::int16_t>(MessageCode::IPC_BYTE_ORDER) && length >= 4) {
    _my->_swap = reader.Value("probe") != 1;
    out += _my->_swap ? " (swapped sender)" : " (same byte order)";
  } else if (code == static_cast<std::int16_t>(MessageCode::IPC_SWAP_BYTES) && length >= 1) {
    _my->_swap = payload[0] != 0;
  } else if (code == static_cast<std::int16_t>(MessageCode::IPC_STRING) &&
             reader.Value("length") > 32766) {
    out += " (continued)";
  }
  return out;
}
