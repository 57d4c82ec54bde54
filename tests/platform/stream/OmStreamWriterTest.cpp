#include "platform/stream/OmStreamWriter.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/stream/MessageCodes.h"
#include "tests/platform/stream/PayloadFields.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

std::int16_t Code(MessageCode code) { return static_cast<std::int16_t>(code); }

// Feeds every record of a multi-part message to a handler and returns its items.
std::vector<MessageItem> Reassemble(const std::vector<OmStreamRecord>& records) {
  MessageHandler handler;
  bool complete = false;
  for (const OmStreamRecord& record : records) {
    EXPECT_FALSE(complete) << "a part arrived after the message was complete";
    complete =
        handler.receiveMessage(record.payload.data(), static_cast<unsigned>(record.payload.size()));
  }
  EXPECT_TRUE(complete);
  std::vector<MessageItem> items;
  MessageItem item;
  unsigned kind = 0;
  unsigned extra = 0;
  bool flag = false;
  while (handler.getNextPart(kind, flag, extra, item.text)) {
    item.kind = kind;
    item.flag = flag ? 1 : 0;
    item.extra = extra;
    items.push_back(item);
  }
  return items;
}

// One field expected in a payload: an integer of a given width, a double or a text.
struct Field {
  enum Kind { kByte, kInt16, kInt32, kFixed32, kInt64, kDouble, kText } kind;
  std::size_t offset;
  std::int64_t integer = 0;
  double number = 0;
  std::string text = {};
};
Field B(std::size_t offset, std::int64_t v) { return {Field::kByte, offset, v}; }
Field I16(std::size_t offset, std::int64_t v) { return {Field::kInt16, offset, v}; }
Field I32(std::size_t offset, std::int64_t v) { return {Field::kInt32, offset, v}; }
// An int32 the factory never swaps: little-endian in either order.
Field Fixed32(std::size_t offset, std::int64_t v) { return {Field::kFixed32, offset, v}; }
Field I64(std::size_t offset, std::int64_t v) { return {Field::kInt64, offset, v}; }
Field D(std::size_t offset, double v) { return {Field::kDouble, offset, 0, v}; }
Field T(std::size_t offset, std::string v) { return {Field::kText, offset, 0, 0, std::move(v)}; }

// A message written alone: its code, its payload size and the fields at their offsets. A TCID,
// when there is one, is the first byte and the three bytes after it are reserved.
struct Layout {
  const char* name;
  std::function<void(OmStreamWriter&)> write;
  MessageCode code;
  std::size_t size;
  std::vector<Field> fields;
  int tcid = -1;
};

void ExpectField(const PayloadFields& payload, const Field& field) {
  SCOPED_TRACE(testing::Message() << "field at offset " << field.offset);
  switch (field.kind) {
  case Field::kByte: EXPECT_EQ(payload.Byte(field.offset), field.integer); break;
  case Field::kInt16: EXPECT_EQ(payload.Int16(field.offset), field.integer); break;
  case Field::kInt32: EXPECT_EQ(payload.Int32(field.offset), field.integer); break;
  case Field::kFixed32: EXPECT_EQ(payload.FixedInt32(field.offset), field.integer); break;
  case Field::kInt64: EXPECT_EQ(payload.Int64(field.offset), field.integer); break;
  case Field::kDouble: EXPECT_EQ(payload.Double(field.offset), field.number); break;
  case Field::kText:
    EXPECT_EQ(payload.Text(field.offset, field.text.size()), field.text);
    break;
  }
}

class OmStreamWriterLayoutTest : public testing::TestWithParam<ByteOrder> {};

TEST_P(OmStreamWriterLayoutTest, EveryFieldSitsAtItsOffsetInTheSendersOrder) {
  using W = OmStreamWriter;
  using C = MessageCode;
  const std::string settings = "procedure=Descriptives\nlanguage=de\n";
  const std::string withNul("line with \0 inside", 18);
  const std::string zeros16(16, '\0');
  // clang-format off
  const std::vector<Layout> layouts = {
    {"ConversionPair", [](W& w) { w.ConversionPair(-3, 70000); }, C::IPC_CONVERSION_PAIR, 8, {I32(0, -3), I32(4, 70000)}},
    {"Integer", [](W& w) { w.Integer(12, -42, 0x050802); }, C::IPC_INTEGER, 12, {I32(0, -42), I32(4, 0x050802), I32(8, 12)}},
    {"BeginComposite", [](W& w) { w.BeginComposite(5, 6); }, C::IPC_BEGIN_COMPOSITE, 8, {I32(0, 5), I32(4, 6)}},
    {"CompositeArgument", [](W& w) { w.CompositeArgument(9); }, C::IPC_COMPOSITE_ARGUMENT, 4, {I32(0, 9)}},
    {"TableColors", [](W& w) { w.TableColors(0x102030, 0x405060); }, C::IPC_TABLE_COLORS, 8, {I32(0, 0x102030), I32(4, 0x405060)}},
    {"RequiredTable", [](W& w) { w.RequiredTable(1, 2); }, C::IPC_REQUIRED_TABLE, 8, {I32(0, 1), I32(4, 2)}},
    {"ScratchTable", [](W& w) { w.ScratchTable(33); }, C::IPC_SCRATCH_TABLE, 4, {I32(0, 33)}},
    {"Category", [](W& w) { w.Category(200, 11, 12); }, C::IPC_CATEGORY, 12, {I32(4, 11), I32(8, 12)}, 200},
    {"BeginGroup", [](W& w) { w.BeginGroup(3, 13, 14); }, C::IPC_BEGIN_GROUP, 12, {I32(4, 13), I32(8, 14)}, 3},
    {"EndGroup", [](W& w) { w.EndGroup(3, 14); }, C::IPC_END_GROUP, 8, {I32(4, 14)}, 3},
    {"CellDimension", [](W& w) { w.CellDimension(4, 15); }, C::IPC_CELL_DIMENSION, 8, {I32(4, 15)}, 4},
    {"Cell", [](W& w) { w.Cell(255, 16, 17); }, C::IPC_CELL, 12, {I32(4, 16), I32(8, 17)}, 255},
    {"CellCategory", [](W& w) { w.CellCategory(0, 18); }, C::IPC_CELL_CATEGORY, 8, {I32(4, 18)}, 0},
    {"BeginNode", [](W& w) { w.BeginNode(19); }, C::IPC_BEGIN_NODE, 4, {I32(0, 19)}},
    {"Annotate", [](W& w) { w.Annotate(3, 20); }, C::IPC_ANNOTATE, 8, {I32(0, 3), I32(4, 20)}},
    {"SplitCategory", [](W& w) { w.SplitCategory(21, 22); }, C::IPC_SPLIT_CATEGORY, 8, {I32(0, 21), I32(4, 22)}},
    {"Dimension", [](W& w) { w.Dimension(6, 23); }, C::IPC_DIMENSION, 8, {I32(4, 23)}, 6},
    {"ScratchCategory", [](W& w) { w.ScratchCategory(1, 2); }, C::IPC_SCRATCH_CATEGORY, 8, {I32(0, 1), I32(4, 2)}},
    {"PlaceDimension", [](W& w) { w.PlaceDimension(7, 24, 3, 1, 1, 0); }, C::IPC_PLACE_DIMENSION, 24, {I32(4, 24), I32(8, 3), I32(12, 1), I32(16, 1), I32(20, 0)}, 7},
    {"AnnotateMarked", [](W& w) { w.AnnotateMarked(2, 25, 26); }, C::IPC_ANNOTATE_MARKED, 12, {I32(0, 2), I32(4, 25), I32(8, 26)}},
    {"DiscardCell", [](W& w) { w.DiscardCell(27); }, C::IPC_DISCARD_CELL, 4, {I32(0, 27)}},
    {"CopyCell", [](W& w) { w.CopyCell(28, 29); }, C::IPC_COPY_CELL, 8, {I32(0, 28), I32(4, 29)}},
    {"SortGroup", [](W& w) { w.SortGroup(8, -1); }, C::IPC_SORT_GROUP, 8, {I32(4, -1)}, 8},
    {"SortDimension", [](W& w) { w.SortDimension(8, 2); }, C::IPC_SORT_DIMENSION, 8, {I32(4, 2)}, 8},
    {"SortUngroup", [](W& w) { w.SortUngroup(8, 1); }, C::IPC_SORT_UNGROUP, 8, {I32(4, 1)}, 8},
    {"BeginTextBlock", [](W& w) { w.BeginTextBlock(30); }, C::IPC_BEGIN_TEXT_BLOCK, 4, {I32(0, 30)}},
    {"CornerText", [](W& w) { w.CornerText(9, 31); }, C::IPC_CORNER_TEXT, 8, {I32(4, 31)}, 9},
    {"TableProperty", [](W& w) { w.TableProperty(10, 5, 32); }, C::IPC_TABLE_PROPERTY, 12, {I32(4, 5), I32(8, 32)}, 10},
    {"ColumnWidth", [](W& w) { w.ColumnWidth(11, 3, 40, 400); }, C::IPC_COLUMN_WIDTH, 16, {I32(4, 3), I32(8, 40), I32(12, 400)}, 11},
    {"Marker", [](W& w) { w.Marker(34); }, C::IPC_MARKER, 12, {I32(8, 34)}},
    // TCID-only messages and the swap flag are one byte.
    {"EndTable", [](W& w) { w.EndTable(12); }, C::IPC_END_TABLE, 1, {B(0, 12)}},
    {"Ungroup", [](W& w) { w.Ungroup(13); }, C::IPC_UNGROUP, 1, {B(0, 13)}},
    {"ClearTableFlag", [](W& w) { w.ClearTableFlag(14); }, C::IPC_CLEAR_TABLE_FLAG, 1, {B(0, 14)}},
    {"SwapBytes on", [](W& w) { w.SwapBytes(true); }, C::IPC_SWAP_BYTES, 1, {B(0, 1)}},
    {"SwapBytes off", [](W& w) { w.SwapBytes(false); }, C::IPC_SWAP_BYTES, 1, {B(0, 0)}},
    {"ByteOrderProbe", [](W& w) { w.ByteOrderProbe(); }, C::IPC_BYTE_ORDER, 4, {I32(0, 1)}},
    {"Number", [](W& w) { w.Number(7, -1.7976931348623157e308, 0x050802); }, C::IPC_NUMBER, 16, {D(0, -1.7976931348623157e308), I32(8, 0x050802), I32(12, 7)}},
    // TCID and flag stay single bytes.
    {"BeginTable", [](W& w) { w.BeginTable(250, 1, 2, true); }, C::IPC_BEGIN_TABLE, 13, {B(0, 250), I32(4, 1), I32(8, 2), B(12, 1)}},
    {"BeginProcedure", [&](W& w) { w.BeginProcedure(0x0102030405060708LL, settings); }, C::IPC_BEGIN_PROCEDURE, 12 + settings.size(), {I64(0, 0x0102030405060708LL), I32(8, static_cast<std::int64_t>(settings.size())), T(12, settings)}},
    // Texts are a length, then their bytes without a terminator.
    {"PrintLine", [&](W& w) { w.PrintLine(3, withNul); }, C::IPC_PRINT_LINE, 26, {I32(0, 3), I32(4, 18), T(8, withNul)}},
    {"LogLine", [](W& w) { w.LogLine(-1, "log"); }, C::IPC_LOG_LINE, 11, {I32(0, -1), I32(4, 3), T(8, "log")}},
    {"OutlineText", [](W& w) { w.OutlineText("Outline"); }, C::IPC_OUTLINE_TEXT, 11, {I32(0, 7), T(4, "Outline")}},
    {"MiscProperty", [](W& w) { w.MiscProperty(7, "merged"); }, C::IPC_MISC_PROPERTY, 14, {I32(0, 7), I32(4, 6), T(8, "merged")}},
    // One byte separates title and subtitle.
    {"PageTitle", [](W& w) { w.PageTitle("Title", "Sub"); }, C::IPC_PAGE_TITLE, 17, {I32(0, 5), I32(4, 3), T(8, "Title"), T(14, "Sub")}},
    {"BackgroundColor", [](W& w) { w.BackgroundColor("#FF0000"); }, C::IPC_BACKGROUND_COLOR, 19, {I32(4, 7), T(12, "#FF0000")}},
    {"TextColor", [](W& w) { w.TextColor("blue"); }, C::IPC_TEXT_COLOR, 16, {I32(4, 4), T(12, "blue")}},
    {"Variable", [](W& w) { w.Variable(40, 2, "age", "Age in years"); }, C::IPC_VARIABLE, 31, {I32(0, 40), I32(4, 2), I32(8, 3), I32(12, 12), T(16, "age"), T(19, "Age in years")}},
    // A numeric value has value length 0 and a double after the name.
    {"DataValue number", [](W& w) { w.DataValue(41, 0, 0x050802, "sex", "Gender", 2.0); }, C::IPC_DATA_VALUE, 39, {I32(0, 41), I32(8, 0x050802), I32(12, 3), I32(16, 6), I16(20, 0), T(22, "sex"), D(25, 2.0), T(33, "Gender")}},
    {"DataValue text", [](W& w) { w.DataValue(42, 1, 0x010A03, "city", "City", std::string_view("Bern")); }, C::IPC_DATA_VALUE, 34, {I16(20, 4), T(22, "city"), T(26, "Bern"), T(30, "City")}},
    {"ChartXml", [](W& w) { w.ChartXml(-2, 19, "<chart/>"); }, C::IPC_CHART_XML, 16, {B(0, 0xFE), B(1, 19), I32(4, 8), T(8, "<chart/>")}},
    {"TreeXml", [](W& w) { w.TreeXml(2, 1, "<tree/>", 300); }, C::IPC_TREE_XML, 23, {Fixed32(0, 2), Fixed32(4, 1), Fixed32(8, 7), Fixed32(12, 300), T(16, "<tree/>")}},
    {"InteractiveJson", [](W& w) { w.InteractiveJson(1, 16, "{}"); }, C::IPC_INTERACTIVE_JSON, 14, {I32(0, 1), I32(4, 16), I32(8, 2), T(12, "{}")}},
    {"LongStringPiece", [](W& w) { w.LongStringPiece(43, 2, "e", "f", true); }, C::IPC_LONG_STRING, 19, {I32(0, 1), I32(4, 1), I32(8, 43), I32(12, 2), B(16, 1), T(17, "ef")}},
    {"LongText", [](W& w) { w.LongText(44, "aa", "bbb", "c"); }, C::IPC_LONG_TEXT, 22, {I32(0, 2), I32(4, 3), I32(8, 1), I32(12, 44), T(16, "aabbbc")}},
    {"ConversionName", [](W& w) { w.ConversionName(9, "windows-1252"); }, C::IPC_CONVERSION_NAME, 14, {B(0, 9), B(1, 12), T(2, "windows-1252")}},
    {"OutputSetting", [](W& w) { w.OutputSetting("OLANG", "German"); }, C::IPC_OUTPUT_SETTING, 39, {T(0, zeros16), T(16, std::string("OLANG\0", 6)), T(32, std::string("German\0", 7))}},
  };
  // clang-format on
  for (const Layout& layout : layouts) {
    SCOPED_TRACE(layout.name);
    OmStreamWriter writer(GetParam());
    layout.write(writer);
    ASSERT_EQ(writer.Records().size(), 1u);
    const OmStreamRecord& record = writer.Records().front();
    EXPECT_EQ(record.code, Code(layout.code));
    const PayloadFields payload(record.payload, GetParam() == ByteOrder::BigEndian);
    EXPECT_EQ(payload.Size(), layout.size);
    for (const Field& field : layout.fields) ExpectField(payload, field);
    if (layout.tcid >= 0) {
      EXPECT_EQ(payload.Byte(0), layout.tcid);
      EXPECT_EQ(payload.Text(1, 3), std::string(3, '\0')) << "bytes after the TCID are reserved";
    }
  }
}

TEST_P(OmStreamWriterLayoutTest, EndProcedureDeliversTheSpecsTextThroughTheMessageHandler) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(200);
  specs.SetJackknifeBoundaries({201, 221});
  OmStreamWriter writer(GetParam());
  writer.EndProcedure(specs, 3, 77);
  ASSERT_EQ(writer.Records().size(), 3u);
  for (const OmStreamRecord& record : writer.Records()) {
    EXPECT_EQ(record.code, Code(MessageCode::IPC_END_PROCEDURE));
    PayloadFields header(record.payload, GetParam() == ByteOrder::BigEndian);
    EXPECT_EQ(header.FixedInt32(0), 77) << "the part header is little-endian in either order";
    EXPECT_EQ(header.FixedInt32(8), 3);
  }
  const std::vector<MessageItem> items = Reassemble(writer.Records());
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].kind, 0u);
  SvrBootstrapSpecs read;
  SvrBootstrapSpecsSerializer::deserializeSpecs(items[0].text, read);
  EXPECT_EQ(read, specs);
}

TEST_P(OmStreamWriterLayoutTest, ModelItemsSurviveAnySplit) {
  const std::vector<MessageItem> items = {{0, 0, 0, "Model label"},
                                          {1, 1, 42, std::string(1000, 'p')},
                                          {5, 0, 0, "further"},
                                          {3, 0, 7, ""}};
  for (std::uint32_t parts : {1u, 2u, 7u, 5000u}) {
    SCOPED_TRACE(parts);
    OmStreamWriter writer(GetParam());
    writer.ModelPMML(items, parts, 9);
    ASSERT_EQ(writer.Records().size(), parts);
    const std::vector<MessageItem> read = Reassemble(writer.Records());
    ASSERT_EQ(read.size(), items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      EXPECT_EQ(read[i].kind, items[i].kind);
      EXPECT_EQ(read[i].flag, items[i].flag);
      EXPECT_EQ(read[i].extra, items[i].extra);
      EXPECT_EQ(read[i].text, items[i].text);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BothByteOrders, OmStreamWriterLayoutTest,
                         testing::Values(ByteOrder::LittleEndian, ByteOrder::BigEndian),
                         [](const testing::TestParamInfo<ByteOrder>& info) {
                           return info.param == ByteOrder::BigEndian ? "BigEndian" : "LittleEndian";
                         });

// The texts of the IPC_STRING pieces, checked to follow the chunking rule.
std::vector<std::size_t> PieceLengths(const OmStreamWriter& writer, const std::string& text) {
  std::vector<std::size_t> lengths;
  std::string joined;
  for (const OmStreamRecord& record : writer.Records()) {
    EXPECT_EQ(record.code, Code(MessageCode::IPC_STRING));
    PayloadFields fields(record.payload, false);
    const auto length = static_cast<std::size_t>(fields.Int32(0));
    EXPECT_EQ(fields.Int32(4), 5);
    EXPECT_EQ(fields.Int32(8), 1);
    EXPECT_EQ(fields.Size(), 12 + length);
    joined += fields.Text(12, length);
    lengths.push_back(length);
  }
  EXPECT_EQ(joined, text);
  for (std::size_t i = 0; i + 1 < lengths.size(); ++i) {
    EXPECT_GT(lengths[i], 32766u) << "piece " << i;
  }
  if (!lengths.empty()) {
    EXPECT_LE(lengths.back(), 32766u);
  }
  return lengths;
}

TEST(OmStreamWriterChunkingTest, LongTextsSplitIntoFullPiecesAndAShortOrEmptyLastOne) {
  std::string alphabet;
  for (int i = 0; i < 70000; ++i) alphabet += static_cast<char>('a' + i % 26);
  const struct {
    std::string text;
    std::size_t chunk; // 0: the standard one
    std::vector<std::size_t> pieces;
  } cases[] = {
      {std::string(32766, 'x'), 0, {32766}},
      {std::string(32767, 'x'), 0, {32767, 0}}, // one byte more needs an empty closing piece
      {alphabet, 40000, {40000, 30000}},
      {alphabet, 0, {32767, 32767, 4466}},
      {std::string(2 * 32767, 'y'), 0, {32767, 32767, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.text.size() << " bytes in chunks of " << c.chunk);
    OmStreamWriter writer;
    if (c.chunk == 0) {
      writer.String(5, c.text, 1);
    } else {
      writer.String(5, c.text, 1, c.chunk);
    }
    EXPECT_EQ(PieceLengths(writer, c.text), c.pieces);
  }
}

TEST(OmStreamWriterChunkingTest, ChunksThatWouldEndTheStringEarlyAreRefused) {
  OmStreamWriter writer;
  EXPECT_THROW(writer.String(5, std::string(70000, 'x'), 0, 32766), OMSException);
  EXPECT_TRUE(writer.Records().empty());
}

// Applies the factory's long-string rule to the records and returns parts A and B of the cell.
std::pair<std::string, std::string> AssembleLongString(const OmStreamWriter& writer,
                                                       std::int32_t& kind) {
  std::string partA;
  std::string partB;
  for (const OmStreamRecord& record : writer.Records()) {
    EXPECT_EQ(record.code, Code(MessageCode::IPC_LONG_STRING));
    PayloadFields fields(record.payload, writer.Order() == ByteOrder::BigEndian);
    const auto lengthA = static_cast<std::size_t>(fields.Int32(0));
    const auto lengthB = static_cast<std::size_t>(fields.Int32(4));
    EXPECT_EQ(fields.Int32(8), 50);
    kind = fields.Int32(12);
    if (fields.Byte(16) == 1) {
      partA += fields.Text(17, lengthA);
      partB += fields.Text(17 + lengthA, lengthB);
      EXPECT_EQ(&record, &writer.Records().back()) << "only the final piece may be marked last";
    } else if (lengthA != 0) {
      partA += fields.Text(17, lengthA);
    } else if (lengthB != 0) {
      partB += fields.Text(17, lengthB);
    }
  }
  return {partA, partB};
}

TEST(OmStreamWriterLongStringTest, PartsArriveInPiecesAndFinishWithTheLastMessage) {
  const std::string partA(70001, 'a');
  const std::string partB = std::string(2500, 'b') + "end";
  for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
    OmStreamWriter writer(order);
    writer.LongString(50, 3, partA, partB, 1000);
    EXPECT_EQ(writer.Records().size(), 70u + 2u + 1u);
    std::int32_t kind = 0;
    const auto [a, b] = AssembleLongString(writer, kind);
    EXPECT_EQ(a, partA);
    EXPECT_EQ(b, partB);
    EXPECT_EQ(kind, 3);
  }
}

TEST(OmStreamWriterLongStringTest, ShortPartsGoInTheLastMessageAlone) {
  OmStreamWriter writer;
  writer.LongString(50, 0, "abc");
  ASSERT_EQ(writer.Records().size(), 1u);
  std::int32_t kind = -1;
  const auto [a, b] = AssembleLongString(writer, kind);
  EXPECT_EQ(a, "abc");
  EXPECT_EQ(b, "");
  EXPECT_EQ(kind, 0);
}

TEST(OmStreamWriterTest, RefusesFieldsThatTheirMessageCannotCarry) {
  OmStreamWriter writer;
  EXPECT_THROW(writer.OutputSetting("SIXTEEN_LETTERS_", "x"), OMSException);
  EXPECT_THROW(writer.OutputSetting("OLANG", std::string("a\0b", 3)), OMSException);
  EXPECT_THROW(writer.ConversionName(1, std::string(256, 'n')), OMSException);
  EXPECT_THROW(writer.DataValue(1, 0, 0, "v", "l", std::string_view()), OMSException);
  EXPECT_THROW(writer.DataValue(1, 0, 0, "v", "l", std::string_view(std::string(32768, 'v'))),
               OMSException);
  EXPECT_THROW(writer.ModelPMML({}, 0), OMSException);
  EXPECT_THROW(writer.LongString(1, 0, "a", "b", 0), OMSException);
  EXPECT_TRUE(writer.Records().empty());
  writer.OutputSetting("FIFTEEN_LETTERS", "x");
  EXPECT_EQ(writer.Records().size(), 1u);
}

TEST(OmStreamWriterTest, RawRecordsKeepTheirCodeAndBytes) {
  OmStreamWriter writer(ByteOrder::BigEndian);
  writer.Record(-5, std::string_view("\x01\x02", 2));
  writer.Record(1000, std::vector<std::uint8_t>{});
  ASSERT_EQ(writer.Records().size(), 2u);
  EXPECT_EQ(writer.Records()[0], (OmStreamRecord{-5, {1, 2}}));
  EXPECT_EQ(writer.Records()[1], (OmStreamRecord{1000, {}}));
}

TEST(OmStreamWriterTest, FileBytesStartWithTheHeaderAndListRecordsLittleEndian) {
  OmStreamWriter writer(ByteOrder::BigEndian);
  writer.Integer(1, 2, 3);
  writer.Record(-2, std::string_view("z"));
  const std::vector<std::uint8_t> bytes = writer.FileBytes();
  const std::string header(bytes.begin(), bytes.begin() + 16);
  EXPECT_EQ(header, std::string("OMSTREAM\x01\0\0\0\0\0\0\0", 16));
  PayloadFields fields(bytes, false);
  EXPECT_EQ(fields.Int16(16), 257);
  EXPECT_EQ(fields.Int32(18), 12);
  EXPECT_EQ(fields.Int16(34), -2);
  EXPECT_EQ(fields.Int32(36), 1);
  EXPECT_EQ(fields.Text(40, 1), "z");
  EXPECT_EQ(bytes.size(), 41u);
}

} // namespace
