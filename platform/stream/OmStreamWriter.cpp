#include "platform/stream/OmStreamWriter.h"

#include <bit>
#include <fstream>
#include <limits>
#include <utility>

#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"

namespace {

constexpr std::size_t kMaxText = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());

// Appends packed fields to one payload in the sender's byte order.
class PayloadBuilder {
public:
  explicit PayloadBuilder(bool bigEndian) : _bigEndian(bigEndian) {}

  PayloadBuilder& Byte(std::uint8_t value) {
    _bytes.push_back(value);
    return *this;
  }
  PayloadBuilder& Int8(std::int8_t value) { return Byte(static_cast<std::uint8_t>(value)); }
  PayloadBuilder& Int16(std::int16_t value) {
    return Unsigned(static_cast<std::uint16_t>(value), 2, _bigEndian);
  }
  PayloadBuilder& Int32(std::int32_t value) {
    return Unsigned(static_cast<std::uint32_t>(value), 4, _bigEndian);
  }
  PayloadBuilder& Int64(std::int64_t value) {
    return Unsigned(static_cast<std::uint64_t>(value), 8, _bigEndian);
  }
  PayloadBuilder& Double(double value) {
    return Unsigned(std::bit_cast<std::uint64_t>(value), 8, _bigEndian);
  }
  // A field the factory never swaps: always little-endian.
  PayloadBuilder& FixedInt32(std::int32_t value) {
    return Unsigned(static_cast<std::uint32_t>(value), 4, false);
  }
  PayloadBuilder& Zeros(std::size_t count) {
    _bytes.insert(_bytes.end(), count, 0);
    return *this;
  }
  PayloadBuilder& Text(std::string_view text) {
    _bytes.insert(_bytes.end(), text.begin(), text.end());
    return *this;
  }
  std::vector<std::uint8_t> Take() { return std::move(_bytes); }

private:
  PayloadBuilder& Unsigned(std::uint64_t value, int width, bool bigEndian) {
    for (int i = 0; i < width; ++i) {
      const int shift = 8 * (bigEndian ? width - 1 - i : i);
      _bytes.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFF));
    }
    return *this;
  }

  bool _bigEndian;
  std::vector<std::uint8_t> _bytes;
};

// A text length as the int32 field that carries it.
std::int32_t TextLength(std::string_view text, const char* operation) {
  if (text.size() > kMaxText) {
    throw OMSException(
        std::string("OmStreamWriter::") + operation + " -- text longer than an int32 length",
        static_cast<double>(text.size()));
  }
  return static_cast<std::int32_t>(text.size());
}

void PutFileUInt32(std::vector<std::uint8_t>& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFF));
}

} // namespace

struct OmStreamWriter::Data {
  ByteOrder _order = ByteOrder::LittleEndian;
  std::vector<OmStreamRecord> _records;

  PayloadBuilder Payload() const { return PayloadBuilder(_order == ByteOrder::BigEndian); }

  void Add(MessageCode code, std::vector<std::uint8_t> payload) {
    if (payload.size() > std::numeric_limits<std::uint32_t>::max()) {
      throw OMSException("OmStreamWriter::Add -- payload longer than a uint32 length",
                         static_cast<double>(static_cast<std::int16_t>(code)),
                         static_cast<double>(payload.size()));
    }
    _records.push_back({static_cast<std::int16_t>(code), std::move(payload)});
  }

  void Add(MessageCode code, PayloadBuilder& builder) { Add(code, builder.Take()); }

  void Empty(MessageCode code) { Add(code, std::vector<std::uint8_t>()); }

  void TcidOnly(MessageCode code, std::uint8_t tcid) { Add(code, {tcid}); }

  void TcidAnd(MessageCode code, std::uint8_t tcid, std::int32_t value) {
    PayloadBuilder b = Payload();
    b.Byte(tcid).Zeros(3).Int32(value);
    Add(code, b);
  }

  void TcidAnd(MessageCode code, std::uint8_t tcid, std::int32_t first, std::int32_t second) {
    PayloadBuilder b = Payload();
    b.Byte(tcid).Zeros(3).Int32(first).Int32(second);
    Add(code, b);
  }

  void Ints(MessageCode code, std::initializer_list<std::int32_t> values) {
    PayloadBuilder b = Payload();
    for (std::int32_t value : values) b.Int32(value);
    Add(code, b);
  }

  // Line skip, length, text: IPC_PRINT_LINE and IPC_LOG_LINE.
  void Line(MessageCode code, std::int32_t lineSkip, std::string_view text, const char* operation) {
    PayloadBuilder b = Payload();
    b.Int32(lineSkip).Int32(TextLength(text, operation)).Text(text);
    Add(code, b);
  }

  // Unused int32, length, four reserved bytes, colour: IPC_BACKGROUND_COLOR and IPC_TEXT_COLOR.
  void Colour(MessageCode code, std::string_view colour, const char* operation) {
    PayloadBuilder b = Payload();
    b.Int32(0).Int32(TextLength(colour, operation)).Zeros(4).Text(colour);
    Add(code, b);
  }

  void MultiPart(MessageCode code, std::string_view body, std::uint32_t parts,
                 std::uint32_t messageId) {
    for (std::string& payload : SplitMessageBody(body, parts, messageId)) {
      Add(code, std::vector<std::uint8_t>(payload.begin(), payload.end()));
    }
  }
};

OmStreamWriter::OmStreamWriter(ByteOrder order) : _my(std::make_unique<Data>()) {
  _my->_order = order;
}
OmStreamWriter::OmStreamWriter(const OmStreamWriter& other)
    : _my(std::make_unique<Data>(*other._my)) {}
OmStreamWriter& OmStreamWriter::operator=(const OmStreamWriter& other) {
  if (this != &other) _my = std::make_unique<Data>(*other._my);
  return *this;
}
OmStreamWriter::~OmStreamWriter() = default;

OmStreamWriter::ByteOrder OmStreamWriter::Order() const { return _my->_order; }
const std::vector<OmStreamRecord>& OmStreamWriter::Records() const { return _my->_records; }
void OmStreamWriter::Clear() { _my->_records.clear(); }

std::vector<std::uint8_t> OmStreamWriter::FileBytes() const {
  std::size_t size = 16;
  for (const OmStreamRecord& record : _my->_records) size += 6 + record.payload.size();
  std::vector<std::uint8_t> out;
  out.reserve(size);
  // Byte by byte: a range insert into the fresh vector draws a false overflow warning from GCC 12.
  for (const char c : std::string_view("OMSTREAM")) out.push_back(static_cast<std::uint8_t>(c));
  PutFileUInt32(out, 1);
  PutFileUInt32(out, 0);
  for (const OmStreamRecord& record : _my->_records) {
    const auto code = static_cast<std::uint16_t>(record.code);
    out.push_back(static_cast<std::uint8_t>(code & 0xFF));
    out.push_back(static_cast<std::uint8_t>(code >> 8));
    PutFileUInt32(out, static_cast<std::uint32_t>(record.payload.size()));
    out.insert(out.end(), record.payload.begin(), record.payload.end());
  }
  return out;
}

void OmStreamWriter::Save(const std::string& path) const {
  const std::vector<std::uint8_t> bytes = FileBytes();
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file)
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  if (!file) throw OMSException("OmStreamWriter::Save -- cannot write " + path);
}

void OmStreamWriter::Record(std::int16_t code, std::vector<std::uint8_t> payload) {
  _my->Add(static_cast<MessageCode>(code), std::move(payload));
}

void OmStreamWriter::Record(std::int16_t code, std::string_view payload) {
  Record(code, std::vector<std::uint8_t>(payload.begin(), payload.end()));
}

// ---- Control messages

void OmStreamWriter::ConversionName(std::uint8_t value, std::string_view name) {
  if (name.size() > 255) {
    throw OMSException("OmStreamWriter::ConversionName -- name longer than 255 bytes",
                       static_cast<double>(name.size()));
  }
  PayloadBuilder b = _my->Payload();
  b.Byte(value).Byte(static_cast<std::uint8_t>(name.size())).Text(name);
  _my->Add(MessageCode::IPC_CONVERSION_NAME, b);
}

void OmStreamWriter::OutputSetting(std::string_view keyword, std::string_view value) {
  if (keyword.size() > 15) {
    throw OMSException("OmStreamWriter::OutputSetting -- keyword longer than 15 bytes",
                       static_cast<double>(keyword.size()));
  }
  if (keyword.find('\0') != std::string_view::npos || value.find('\0') != std::string_view::npos) {
    throw OMSException("OmStreamWriter::OutputSetting -- zero byte inside keyword or value");
  }
  PayloadBuilder b = _my->Payload();
  b.Zeros(16).Text(keyword).Zeros(16 - keyword.size()).Text(value).Zeros(1);
  _my->Add(MessageCode::IPC_OUTPUT_SETTING, b);
}

void OmStreamWriter::ConversionPair(std::int32_t first, std::int32_t second) {
  _my->Ints(MessageCode::IPC_CONVERSION_PAIR, {first, second});
}

void OmStreamWriter::ByteOrderProbe() { _my->Ints(MessageCode::IPC_BYTE_ORDER, {1}); }

// ---- Cells

void OmStreamWriter::Number(std::int32_t cellId, double value, std::int32_t format) {
  PayloadBuilder b = _my->Payload();
  b.Double(value).Int32(format).Int32(cellId);
  _my->Add(MessageCode::IPC_NUMBER, b);
}

void OmStreamWriter::Integer(std::int32_t cellId, std::int32_t value, std::int32_t format) {
  _my->Ints(MessageCode::IPC_INTEGER, {value, format, cellId});
}

void OmStreamWriter::String(std::int32_t cellId, std::string_view text, std::int32_t literal,
                            std::size_t chunkSize) {
  if (chunkSize <= kStringChunkLimit || chunkSize > kMaxText) {
    throw OMSException("OmStreamWriter::String -- chunk size must exceed 32766 bytes",
                       static_cast<double>(chunkSize));
  }
  // Pieces above the limit are buffered by the factory; the first piece within it ends the text.
  while (text.size() > kStringChunkLimit) {
    const std::size_t piece = std::min(chunkSize, text.size());
    StringPiece(cellId, text.substr(0, piece), literal);
    text.remove_prefix(piece);
  }
  StringPiece(cellId, text, literal);
}

void OmStreamWriter::StringPiece(std::int32_t cellId, std::string_view text, std::int32_t literal) {
  PayloadBuilder b = _my->Payload();
  b.Int32(TextLength(text, "StringPiece")).Int32(cellId).Int32(literal).Text(text);
  _my->Add(MessageCode::IPC_STRING, b);
}

void OmStreamWriter::BeginComposite(std::int32_t compositeId, std::int32_t patternCellId) {
  _my->Ints(MessageCode::IPC_BEGIN_COMPOSITE, {compositeId, patternCellId});
}
void OmStreamWriter::BeginRepeatList() { _my->Empty(MessageCode::IPC_BEGIN_REPEAT_LIST); }
void OmStreamWriter::EndRepeatList() { _my->Empty(MessageCode::IPC_END_REPEAT_LIST); }
void OmStreamWriter::CompositeArgument(std::int32_t cellId) {
  _my->Ints(MessageCode::IPC_COMPOSITE_ARGUMENT, {cellId});
}
void OmStreamWriter::DiscardCell(std::int32_t cellId) {
  _my->Ints(MessageCode::IPC_DISCARD_CELL, {cellId});
}
void OmStreamWriter::CopyCell(std::int32_t sourceId, std::int32_t targetId) {
  _my->Ints(MessageCode::IPC_COPY_CELL, {sourceId, targetId});
}

void OmStreamWriter::Variable(std::int32_t cellId, std::int32_t display, std::string_view name,
                              std::string_view label) {
  PayloadBuilder b = _my->Payload();
  b.Int32(cellId)
      .Int32(display)
      .Int32(TextLength(name, "Variable"))
      .Int32(TextLength(label, "Variable"));
  b.Text(name).Text(label);
  _my->Add(MessageCode::IPC_VARIABLE, b);
}

void OmStreamWriter::DataValue(std::int32_t cellId, std::int32_t display, std::int32_t format,
                               std::string_view name, std::string_view label, double value) {
  PayloadBuilder b = _my->Payload();
  b.Int32(cellId).Int32(display).Int32(format);
  b.Int32(TextLength(name, "DataValue")).Int32(TextLength(label, "DataValue")).Int16(0);
  b.Text(name).Double(value).Text(label);
  _my->Add(MessageCode::IPC_DATA_VALUE, b);
}

void OmStreamWriter::DataValue(std::int32_t cellId, std::int32_t display, std::int32_t format,
                               std::string_view name, std::string_view label,
                               std::string_view value) {
  // A value length of 0 announces a number, and the field is an int16.
  if (value.empty() ||
      value.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
    throw OMSException("OmStreamWriter::DataValue -- text value must have 1 to 32767 bytes",
                       static_cast<double>(value.size()));
  }
  PayloadBuilder b = _my->Payload();
  b.Int32(cellId).Int32(display).Int32(format);
  b.Int32(TextLength(name, "DataValue")).Int32(TextLength(label, "DataValue"));
  b.Int16(static_cast<std::int16_t>(value.size()));
  b.Text(name).Text(value).Text(label);
  _my->Add(MessageCode::IPC_DATA_VALUE, b);
}

void OmStreamWriter::LongStringPiece(std::int32_t cellId, std::int32_t kind, std::string_view partA,
                                     std::string_view partB, bool last) {
  PayloadBuilder b = _my->Payload();
  b.Int32(TextLength(partA, "LongStringPiece")).Int32(TextLength(partB, "LongStringPiece"));
  b.Int32(cellId).Int32(kind).Byte(last ? 1 : 0).Text(partA).Text(partB);
  _my->Add(MessageCode::IPC_LONG_STRING, b);
}

void OmStreamWriter::LongString(std::int32_t cellId, std::int32_t kind, std::string_view partA,
                                std::string_view partB, std::size_t pieceSize) {
  if (pieceSize == 0) throw OMSException("OmStreamWriter::LongString -- pieceSize == 0");
  // Everything but the last piece of each part goes ahead; the last message carries both tails.
  auto lead = [&](std::string_view& part, bool isA) {
    while (part.size() > pieceSize) {
      std::string_view piece = part.substr(0, pieceSize);
      LongStringPiece(cellId, kind, isA ? piece : std::string_view(),
                      isA ? std::string_view() : piece, false);
      part.remove_prefix(pieceSize);
    }
  };
  lead(partA, true);
  lead(partB, false);
  LongStringPiece(cellId, kind, partA, partB, true);
}

void OmStreamWriter::LongText(std::int32_t cellId, std::string_view partA, std::string_view partB,
                              std::string_view partC) {
  PayloadBuilder b = _my->Payload();
  b.Int32(TextLength(partA, "LongText"))
      .Int32(TextLength(partB, "LongText"))
      .Int32(TextLength(partC, "LongText"));
  b.Int32(cellId).Text(partA).Text(partB).Text(partC);
  _my->Add(MessageCode::IPC_LONG_TEXT, b);
}

// ---- Procedures, headings, text

void OmStreamWriter::BeginProcedure(std::int64_t procedureId, std::string_view settings) {
  PayloadBuilder b = _my->Payload();
  b.Int64(procedureId).Int32(TextLength(settings, "BeginProcedure")).Text(settings);
  _my->Add(MessageCode::IPC_BEGIN_PROCEDURE, b);
}

void OmStreamWriter::EndProcedure(std::string_view specs, std::uint32_t parts,
                                  std::uint32_t messageId) {
  const std::string body = EncodeMessageItems({MessageItem{0, 0, 0, std::string(specs)}});
  _my->MultiPart(MessageCode::IPC_END_PROCEDURE, body, parts, messageId);
}

void OmStreamWriter::EndProcedure(const SvrBootstrapSpecs& specs, std::uint32_t parts,
                                  std::uint32_t messageId) {
  EndProcedure(SvrBootstrapSpecsSerializer::serializeSpecs(specs), parts, messageId);
}

void OmStreamWriter::BeginNode(std::int32_t cellId) {
  _my->Ints(MessageCode::IPC_BEGIN_NODE, {cellId});
}
void OmStreamWriter::EndNode() { _my->Empty(MessageCode::IPC_END_NODE); }
void OmStreamWriter::Annotate(std::int32_t target, std::int32_t textCellId) {
  _my->Ints(MessageCode::IPC_ANNOTATE, {target, textCellId});
}
void OmStreamWriter::SplitCategory(std::int32_t variableCellId, std::int32_t categoryCellId) {
  _my->Ints(MessageCode::IPC_SPLIT_CATEGORY, {variableCellId, categoryCellId});
}
void OmStreamWriter::AnnotateMarked(std::int32_t target, std::int32_t textCellId,
                                    std::int32_t markerCellId) {
  _my->Ints(MessageCode::IPC_ANNOTATE_MARKED, {target, textCellId, markerCellId});
}
void OmStreamWriter::PrintLine(std::int32_t lineSkip, std::string_view text) {
  _my->Line(MessageCode::IPC_PRINT_LINE, lineSkip, text, "PrintLine");
}
void OmStreamWriter::LogLine(std::int32_t lineSkip, std::string_view text) {
  _my->Line(MessageCode::IPC_LOG_LINE, lineSkip, text, "LogLine");
}
void OmStreamWriter::FlushLog() { _my->Empty(MessageCode::IPC_FLUSH_LOG); }
void OmStreamWriter::BeginTextBlock(std::int32_t cellId) {
  _my->Ints(MessageCode::IPC_BEGIN_TEXT_BLOCK, {cellId});
}
void OmStreamWriter::Refresh() { _my->Empty(MessageCode::IPC_REFRESH); }
void OmStreamWriter::SwapBytes(bool on) {
  _my->Add(MessageCode::IPC_SWAP_BYTES, {static_cast<std::uint8_t>(on ? 1 : 0)});
}

void OmStreamWriter::PageTitle(std::string_view title, std::string_view subtitle) {
  PayloadBuilder b = _my->Payload();
  b.Int32(TextLength(title, "PageTitle")).Int32(TextLength(subtitle, "PageTitle"));
  b.Text(title).Zeros(1).Text(subtitle);
  _my->Add(MessageCode::IPC_PAGE_TITLE, b);
}

void OmStreamWriter::OutlineText(std::string_view text) {
  PayloadBuilder b = _my->Payload();
  b.Int32(TextLength(text, "OutlineText")).Text(text);
  _my->Add(MessageCode::IPC_OUTLINE_TEXT, b);
}

// ---- Tables

void OmStreamWriter::TableColors(std::int32_t start, std::int32_t end) {
  _my->Ints(MessageCode::IPC_TABLE_COLORS, {start, end});
}
void OmStreamWriter::RequiredTable(std::int32_t first, std::int32_t second) {
  _my->Ints(MessageCode::IPC_REQUIRED_TABLE, {first, second});
}
void OmStreamWriter::ScratchTable(std::int32_t titleCellId) {
  _my->Ints(MessageCode::IPC_SCRATCH_TABLE, {titleCellId});
}

void OmStreamWriter::BeginTable(std::uint8_t tcid, std::int32_t titleCellId,
                                std::int32_t subtypeCellId, bool flag) {
  PayloadBuilder b = _my->Payload();
  b.Byte(tcid).Zeros(3).Int32(titleCellId).Int32(subtypeCellId).Byte(flag ? 1 : 0);
  _my->Add(MessageCode::IPC_BEGIN_TABLE, b);
}

void OmStreamWriter::Category(std::uint8_t tcid, std::int32_t categoryCellId,
                              std::int32_t dimensionCellId) {
  _my->TcidAnd(MessageCode::IPC_CATEGORY, tcid, categoryCellId, dimensionCellId);
}
void OmStreamWriter::BeginGroup(std::uint8_t tcid, std::int32_t groupCellId,
                                std::int32_t dimensionCellId) {
  _my->TcidAnd(MessageCode::IPC_BEGIN_GROUP, tcid, groupCellId, dimensionCellId);
}
void OmStreamWriter::EndGroup(std::uint8_t tcid, std::int32_t dimensionCellId) {
  _my->TcidAnd(MessageCode::IPC_END_GROUP, tcid, dimensionCellId);
}
void OmStreamWriter::CellDimension(std::uint8_t tcid, std::int32_t dimensionCellId) {
  _my->TcidAnd(MessageCode::IPC_CELL_DIMENSION, tcid, dimensionCellId);
}
void OmStreamWriter::Cell(std::uint8_t tcid, std::int32_t valueCellId,
                          std::int32_t categoryCellId) {
  _my->TcidAnd(MessageCode::IPC_CELL, tcid, valueCellId, categoryCellId);
}
void OmStreamWriter::CellCategory(std::uint8_t tcid, std::int32_t categoryCellId) {
  _my->TcidAnd(MessageCode::IPC_CELL_CATEGORY, tcid, categoryCellId);
}
void OmStreamWriter::EndTable(std::uint8_t tcid) {
  _my->TcidOnly(MessageCode::IPC_END_TABLE, tcid);
}
void OmStreamWriter::Dimension(std::uint8_t tcid, std::int32_t dimensionCellId) {
  _my->TcidAnd(MessageCode::IPC_DIMENSION, tcid, dimensionCellId);
}
void OmStreamWriter::ScratchCategory(std::int32_t first, std::int32_t second) {
  _my->Ints(MessageCode::IPC_SCRATCH_CATEGORY, {first, second});
}

void OmStreamWriter::PlaceDimension(std::uint8_t tcid, std::int32_t dimensionCellId,
                                    std::int32_t position, std::int32_t axis, std::int32_t flag1,
                                    std::int32_t flag2) {
  PayloadBuilder b = _my->Payload();
  b.Byte(tcid)
      .Zeros(3)
      .Int32(dimensionCellId)
      .Int32(position)
      .Int32(axis)
      .Int32(flag1)
      .Int32(flag2);
  _my->Add(MessageCode::IPC_PLACE_DIMENSION, b);
}

void OmStreamWriter::SortGroup(std::uint8_t tcid, std::int32_t value) {
  _my->TcidAnd(MessageCode::IPC_SORT_GROUP, tcid, value);
}
void OmStreamWriter::SortDimension(std::uint8_t tcid, std::int32_t value) {
  _my->TcidAnd(MessageCode::IPC_SORT_DIMENSION, tcid, value);
}
void OmStreamWriter::SortUngroup(std::uint8_t tcid, std::int32_t value) {
  _my->TcidAnd(MessageCode::IPC_SORT_UNGROUP, tcid, value);
}
void OmStreamWriter::Ungroup(std::uint8_t tcid) { _my->TcidOnly(MessageCode::IPC_UNGROUP, tcid); }
void OmStreamWriter::CornerText(std::uint8_t tcid, std::int32_t cellId) {
  _my->TcidAnd(MessageCode::IPC_CORNER_TEXT, tcid, cellId);
}
void OmStreamWriter::ClearTableFlag(std::uint8_t tcid) {
  _my->TcidOnly(MessageCode::IPC_CLEAR_TABLE_FLAG, tcid);
}
void OmStreamWriter::TableProperty(std::uint8_t tcid, std::int32_t property, std::int32_t cellId) {
  _my->TcidAnd(MessageCode::IPC_TABLE_PROPERTY, tcid, property, cellId);
}

void OmStreamWriter::ColumnWidth(std::uint8_t tcid, std::int32_t which, std::int32_t minimum,
                                 std::int32_t maximum) {
  PayloadBuilder b = _my->Payload();
  b.Byte(tcid).Zeros(3).Int32(which).Int32(minimum).Int32(maximum);
  _my->Add(MessageCode::IPC_COLUMN_WIDTH, b);
}

void OmStreamWriter::Bold() { _my->Empty(MessageCode::IPC_BOLD); }
void OmStreamWriter::BackgroundColor(std::string_view colour) {
  _my->Colour(MessageCode::IPC_BACKGROUND_COLOR, colour, "BackgroundColor");
}
void OmStreamWriter::TextColor(std::string_view colour) {
  _my->Colour(MessageCode::IPC_TEXT_COLOR, colour, "TextColor");
}
void OmStreamWriter::Marker(std::int32_t cellId) {
  _my->Ints(MessageCode::IPC_MARKER, {0, 0, cellId});
}
void OmStreamWriter::HideCategory() { _my->Empty(MessageCode::IPC_HIDE_CATEGORY); }

void OmStreamWriter::MiscProperty(std::int32_t target, std::string_view text) {
  PayloadBuilder b = _my->Payload();
  b.Int32(target).Int32(TextLength(text, "MiscProperty")).Text(text);
  _my->Add(MessageCode::IPC_MISC_PROPERTY, b);
}

// ---- Charts, trees, models, interactive objects

void OmStreamWriter::ChartXml(std::int8_t contentType, std::int8_t contentSubtype,
                              std::string_view data) {
  PayloadBuilder b = _my->Payload();
  b.Int8(contentType).Int8(contentSubtype).Zeros(2).Int32(TextLength(data, "ChartXml")).Text(data);
  _my->Add(MessageCode::IPC_CHART_XML, b);
}

void OmStreamWriter::ModelPMML(const std::vector<MessageItem>& items, std::uint32_t parts,
                               std::uint32_t messageId) {
  _my->MultiPart(MessageCode::IPC_MODEL_PMML, EncodeMessageItems(items), parts, messageId);
}

void OmStreamWriter::TreeXml(std::int32_t index, std::int32_t type, std::string_view data,
                             std::int32_t extra) {
  PayloadBuilder b = _my->Payload();
  b.FixedInt32(index).FixedInt32(type).FixedInt32(TextLength(data, "TreeXml")).FixedInt32(extra);
  b.Text(data);
  _my->Add(MessageCode::IPC_TREE_XML, b);
}

void OmStreamWriter::InteractiveJson(std::int32_t a, std::int32_t contentType,
                                     std::string_view data) {
  PayloadBuilder b = _my->Payload();
  b.Int32(a).Int32(contentType).Int32(TextLength(data, "InteractiveJson")).Text(data);
  _my->Add(MessageCode::IPC_INTERACTIVE_JSON, b);
}
