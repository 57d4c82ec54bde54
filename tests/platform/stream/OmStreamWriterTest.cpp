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

class OmStreamWriterLayoutTest : public testing::TestWithParam<ByteOrder> {
protected:
  bool BigEndian() const { return GetParam() == ByteOrder::BigEndian; }

  // The only record the writer holds, with its code checked.
  const OmStreamRecord& Only(const OmStreamWriter& writer, MessageCode code) {
    EXPECT_EQ(writer.Records().size(), 1u);
    EXPECT_EQ(writer.Records().front().code, Code(code));
    return writer.Records().front();
  }

  OmStreamWriter _writer{GetParam()};
};

TEST_P(OmStreamWriterLayoutTest, NumberPutsValueFormatAndCellAtTheirOffsets) {
  _writer.Number(7, -1.7976931348623157e308, 0x050802);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_NUMBER);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Size(), 16u);
  EXPECT_EQ(fields.Double(0), -1.7976931348623157e308);
  EXPECT_EQ(fields.Int32(8), 0x050802);
  EXPECT_EQ(fields.Int32(12), 7);
}

// Messages made only of int32 fields, or a TCID byte followed by int32 fields at offset 4.
struct IntLayout {
  const char* name;
  std::function<void(OmStreamWriter&)> write;
  MessageCode code;
  std::size_t size;
  std::vector<std::pair<std::size_t, std::int32_t>> ints;
  int tcid; // -1 when the message has none
};

TEST_P(OmStreamWriterLayoutTest, IntegerFieldsSitAtTheTableOffsetsInTheSendersOrder) {
  const std::vector<IntLayout> layouts = {
    {"ConversionPair", [](OmStreamWriter& w) { w.ConversionPair(-3, 70000); }, MessageCode::IPC_CONVERSION_PAIR, 8, {{0, -3}, {4, 70000}}, -1},
    {"Integer", [](OmStreamWriter& w) { w.Integer(12, -42, 0x050802); }, MessageCode::IPC_INTEGER, 12, {{0, -42}, {4, 0x050802}, {8, 12}}, -1},
    {"BeginComposite", [](OmStreamWriter& w) { w.BeginComposite(5, 6); }, MessageCode::IPC_BEGIN_COMPOSITE, 8, {{0, 5}, {4, 6}}, -1},
    {"CompositeArgument", [](OmStreamWriter& w) { w.CompositeArgument(9); }, MessageCode::IPC_COMPOSITE_ARGUMENT, 4, {{0, 9}}, -1},
    {"TableColors", [](OmStreamWriter& w) { w.TableColors(0x102030, 0x405060); }, MessageCode::IPC_TABLE_COLORS, 8, {{0, 0x102030}, {4, 0x405060}}, -1},
    {"RequiredTable", [](OmStreamWriter& w) { w.RequiredTable(1, 2); }, MessageCode::IPC_REQUIRED_TABLE, 8, {{0, 1}, {4, 2}}, -1},
    {"ScratchTable", [](OmStreamWriter& w) { w.ScratchTable(33); }, MessageCode::IPC_SCRATCH_TABLE, 4, {{0, 33}}, -1},
    {"Category", [](OmStreamWriter& w) { w.Category(200, 11, 12); }, MessageCode::IPC_CATEGORY, 12, {{4, 11}, {8, 12}}, 200},
    {"BeginGroup", [](OmStreamWriter& w) { w.BeginGroup(3, 13, 14); }, MessageCode::IPC_BEGIN_GROUP, 12, {{4, 13}, {8, 14}}, 3},
    {"EndGroup", [](OmStreamWriter& w) { w.EndGroup(3, 14); }, MessageCode::IPC_END_GROUP, 8, {{4, 14}}, 3},
    {"CellDimension", [](OmStreamWriter& w) { w.CellDimension(4, 15); }, MessageCode::IPC_CELL_DIMENSION, 8, {{4, 15}}, 4},
    {"Cell", [](OmStreamWriter& w) { w.Cell(255, 16, 17); }, MessageCode::IPC_CELL, 12, {{4, 16}, {8, 17}}, 255},
    {"CellCategory", [](OmStreamWriter& w) { w.CellCategory(0, 18); }, MessageCode::IPC_CELL_CATEGORY, 8, {{4, 18}}, 0},
    {"BeginNode", [](OmStreamWriter& w) { w.BeginNode(19); }, MessageCode::IPC_BEGIN_NODE, 4, {{0, 19}}, -1},
    {"Annotate", [](OmStreamWriter& w) { w.Annotate(3, 20); }, MessageCode::IPC_ANNOTATE, 8, {{0, 3}, {4, 20}}, -1},
    {"SplitCategory", [](OmStreamWriter& w) { w.SplitCategory(21, 22); }, MessageCode::IPC_SPLIT_CATEGORY, 8, {{0, 21}, {4, 22}}, -1},
    {"Dimension", [](OmStreamWriter& w) { w.Dimension(6, 23); }, MessageCode::IPC_DIMENSION, 8, {{4, 23}}, 6},
    {"ScratchCategory", [](OmStreamWriter& w) { w.ScratchCategory(1, 2); }, MessageCode::IPC_SCRATCH_CATEGORY, 8, {{0, 1}, {4, 2}}, -1},
    {"PlaceDimension", [](OmStreamWriter& w) { w.PlaceDimension(7, 24, 3, 1, 1, 0); }, MessageCode::IPC_PLACE_DIMENSION, 24, {{4, 24}, {8, 3}, {12, 1}, {16, 1}, {20, 0}}, 7},
    {"AnnotateMarked", [](OmStreamWriter& w) { w.AnnotateMarked(2, 25, 26); }, MessageCode::IPC_ANNOTATE_MARKED, 12, {{0, 2}, {4, 25}, {8, 26}}, -1},
    {"DiscardCell", [](OmStreamWriter& w) { w.DiscardCell(27); }, MessageCode::IPC_DISCARD_CELL, 4, {{0, 27}}, -1},
    {"CopyCell", [](OmStreamWriter& w) { w.CopyCell(28, 29); }, MessageCode::IPC_COPY_CELL, 8, {{0, 28}, {4, 29}}, -1},
    {"SortGroup", [](OmStreamWriter& w) { w.SortGroup(8, -1); }, MessageCode::IPC_SORT_GROUP, 8, {{4, -1}}, 8},
    {"SortDimension", [](OmStreamWriter& w) { w.SortDimension(8, 2); }, MessageCode::IPC_SORT_DIMENSION, 8, {{4, 2}}, 8},
    {"SortUngroup", [](OmStreamWriter& w) { w.SortUngroup(8, 1); }, MessageCode::IPC_SORT_UNGROUP, 8, {{4, 1}}, 8},
    {"BeginTextBlock", [](OmStreamWriter& w) { w.BeginTextBlock(30); }, MessageCode::IPC_BEGIN_TEXT_BLOCK, 4, {{0, 30}}, -1},
    {"CornerText", [](OmStreamWriter& w) { w.CornerText(9, 31); }, MessageCode::IPC_CORNER_TEXT, 8, {{4, 31}}, 9},
    {"TableProperty", [](OmStreamWriter& w) { w.TableProperty(10, 5, 32); }, MessageCode::IPC_TABLE_PROPERTY, 12, {{4, 5}, {8, 32}}, 10},
    {"ColumnWidth", [](OmStreamWriter& w) { w.ColumnWidth(11, 3, 40, 400); }, MessageCode::IPC_COLUMN_WIDTH, 16, {{4, 3}, {8, 40}, {12, 400}}, 11},
    {"Marker", [](OmStreamWriter& w) { w.Marker(34); }, MessageCode::IPC_MARKER, 12, {{8, 34}}, -1},
  };
  for (const IntLayout& layout : layouts) {
    SCOPED_TRACE(layout.name);
    OmStreamWriter writer(GetParam());
    layout.write(writer);
    const OmStreamRecord& record = Only(writer, layout.code);
    PayloadFields fields(record.payload, BigEndian());
    EXPECT_EQ(fields.Size(), layout.size);
    for (const auto& [offset, value] : layout.ints)
      EXPECT_EQ(fields.Int32(offset), value) << "offset " << offset;
    if (layout.tcid >= 0) {
      EXPECT_EQ(fields.Byte(0), layout.tcid);
      EXPECT_EQ(fields.Text(1, 3), std::string(3, '\0')) << "bytes after the TCID are reserved";
    }
  }
}

TEST_P(OmStreamWriterLayoutTest, TcidOnlyMessagesAndSwapBytesAreOneByte) {
  _writer.EndTable(12);
  _writer.Ungroup(13);
  _writer.ClearTableFlag(14);
  _writer.SwapBytes(true);
  _writer.SwapBytes(false);
  const std::vector<std::pair<MessageCode, std::uint8_t>> expected = {
      {MessageCode::IPC_END_TABLE, 12},
      {MessageCode::IPC_UNGROUP, 13},
      {MessageCode::IPC_CLEAR_TABLE_FLAG, 14},
      {MessageCode::IPC_SWAP_BYTES, 1},
      {MessageCode::IPC_SWAP_BYTES, 0}};
  ASSERT_EQ(_writer.Records().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(_writer.Records()[i].code, Code(expected[i].first));
    EXPECT_EQ(_writer.Records()[i].payload, std::vector<std::uint8_t>{expected[i].second});
  }
}

TEST_P(OmStreamWriterLayoutTest, ByteOrderProbeIsTheIntegerOneInTheSendersOrder) {
  _writer.ByteOrderProbe();
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_BYTE_ORDER);
  const std::vector<std::uint8_t> expected =
      BigEndian() ? std::vector<std::uint8_t>{0, 0, 0, 1} : std::vector<std::uint8_t>{1, 0, 0, 0};
  EXPECT_EQ(record.payload, expected);
}

TEST_P(OmStreamWriterLayoutTest, BeginTableKeepsTcidAndFlagAsSingleBytes) {
  _writer.BeginTable(250, 1, 2, true);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_BEGIN_TABLE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Size(), 13u);
  EXPECT_EQ(fields.Byte(0), 250);
  EXPECT_EQ(fields.Int32(4), 1);
  EXPECT_EQ(fields.Int32(8), 2);
  EXPECT_EQ(fields.Byte(12), 1);
}

TEST_P(OmStreamWriterLayoutTest, BeginProcedureCarriesAn8ByteIdThenTheSettingsText) {
  const std::string settings = "procedure=Descriptives\nlanguage=de\n";
  _writer.BeginProcedure(0x0102030405060708LL, settings);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_BEGIN_PROCEDURE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int64(0), 0x0102030405060708LL);
  EXPECT_EQ(fields.Int32(8), static_cast<std::int32_t>(settings.size()));
  EXPECT_EQ(fields.Text(12, settings.size()), settings);
  EXPECT_EQ(fields.Size(), 12 + settings.size());
}

TEST_P(OmStreamWriterLayoutTest, TextMessagesCarryLengthThenUnterminatedBytes) {
  const std::string text("line with \0 inside", 18);
  _writer.PrintLine(3, text);
  _writer.LogLine(-1, "log");
  _writer.OutlineText("Outline");
  _writer.MiscProperty(7, "merged");
  const auto& records = _writer.Records();
  ASSERT_EQ(records.size(), 4u);

  PayloadFields print(records[0].payload, BigEndian());
  EXPECT_EQ(records[0].code, Code(MessageCode::IPC_PRINT_LINE));
  EXPECT_EQ(print.Int32(0), 3);
  EXPECT_EQ(print.Int32(4), 18);
  EXPECT_EQ(print.Text(8, 18), text);
  EXPECT_EQ(print.Size(), 26u);

  PayloadFields log(records[1].payload, BigEndian());
  EXPECT_EQ(records[1].code, Code(MessageCode::IPC_LOG_LINE));
  EXPECT_EQ(log.Int32(0), -1);
  EXPECT_EQ(log.Text(8, 3), "log");

  PayloadFields outline(records[2].payload, BigEndian());
  EXPECT_EQ(outline.Int32(0), 7);
  EXPECT_EQ(outline.Text(4, 7), "Outline");

  PayloadFields misc(records[3].payload, BigEndian());
  EXPECT_EQ(misc.Int32(0), 7);
  EXPECT_EQ(misc.Int32(4), 6);
  EXPECT_EQ(misc.Text(8, 6), "merged");
}

TEST_P(OmStreamWriterLayoutTest, PageTitleSeparatesTitleAndSubtitleByOneByte) {
  _writer.PageTitle("Title", "Sub");
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_PAGE_TITLE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 5);
  EXPECT_EQ(fields.Int32(4), 3);
  EXPECT_EQ(fields.Text(8, 5), "Title");
  EXPECT_EQ(fields.Text(8 + 5 + 1, 3), "Sub");
  EXPECT_EQ(fields.Size(), 17u);
}

TEST_P(OmStreamWriterLayoutTest, ColourTextStartsAtOffset12) {
  _writer.BackgroundColor("#FF0000");
  _writer.TextColor("blue");
  const auto& records = _writer.Records();
  ASSERT_EQ(records.size(), 2u);
  PayloadFields background(records[0].payload, BigEndian());
  EXPECT_EQ(records[0].code, Code(MessageCode::IPC_BACKGROUND_COLOR));
  EXPECT_EQ(background.Int32(4), 7);
  EXPECT_EQ(background.Text(12, 7), "#FF0000");
  PayloadFields text(records[1].payload, BigEndian());
  EXPECT_EQ(records[1].code, Code(MessageCode::IPC_TEXT_COLOR));
  EXPECT_EQ(text.Int32(4), 4);
  EXPECT_EQ(text.Text(12, 4), "blue");
}

TEST_P(OmStreamWriterLayoutTest, VariableCarriesNameThenLabel) {
  _writer.Variable(40, 2, "age", "Age in years");
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_VARIABLE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 40);
  EXPECT_EQ(fields.Int32(4), 2);
  EXPECT_EQ(fields.Int32(8), 3);
  EXPECT_EQ(fields.Int32(12), 12);
  EXPECT_EQ(fields.Text(16, 3), "age");
  EXPECT_EQ(fields.Text(19, 12), "Age in years");
}

TEST_P(OmStreamWriterLayoutTest, NumericDataValueHasZeroValueLengthAndADoubleAfterTheName) {
  _writer.DataValue(41, 0, 0x050802, "sex", "Gender", 2.0);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_DATA_VALUE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 41);
  EXPECT_EQ(fields.Int32(8), 0x050802);
  EXPECT_EQ(fields.Int32(12), 3);
  EXPECT_EQ(fields.Int32(16), 6);
  EXPECT_EQ(fields.Int16(20), 0);
  EXPECT_EQ(fields.Text(22, 3), "sex");
  EXPECT_EQ(fields.Double(25), 2.0);
  EXPECT_EQ(fields.Text(33, 6), "Gender");
  EXPECT_EQ(fields.Size(), 39u);
}

TEST_P(OmStreamWriterLayoutTest, TextDataValueCarriesItsLengthAsInt16) {
  _writer.DataValue(42, 1, 0x010A03, "city", "City", std::string_view("Bern"));
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_DATA_VALUE);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int16(20), 4);
  EXPECT_EQ(fields.Text(22, 4), "city");
  EXPECT_EQ(fields.Text(26, 4), "Bern");
  EXPECT_EQ(fields.Text(30, 4), "City");
  EXPECT_EQ(fields.Size(), 34u);
}

TEST_P(OmStreamWriterLayoutTest, ChartBytesAreSignedAndTheLengthSitsAtOffset4) {
  _writer.ChartXml(-2, 19, "<chart/>");
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_CHART_XML);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(static_cast<std::int8_t>(fields.Byte(0)), -2);
  EXPECT_EQ(fields.Byte(1), 19);
  EXPECT_EQ(fields.Int32(4), 8);
  EXPECT_EQ(fields.Text(8, 8), "<chart/>");
}

TEST_P(OmStreamWriterLayoutTest, TreeIntegersAreNeverSwapped) {
  _writer.TreeXml(2, 1, "<tree/>", 300);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_TREE_XML);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.FixedInt32(0), 2);
  EXPECT_EQ(fields.FixedInt32(4), 1);
  EXPECT_EQ(fields.FixedInt32(8), 7);
  EXPECT_EQ(fields.FixedInt32(12), 300);
  EXPECT_EQ(fields.Text(16, 7), "<tree/>");
}

TEST_P(OmStreamWriterLayoutTest, InteractiveJsonLengthSitsAtOffset8) {
  _writer.InteractiveJson(1, 16, "{}");
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_INTERACTIVE_JSON);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 1);
  EXPECT_EQ(fields.Int32(4), 16);
  EXPECT_EQ(fields.Int32(8), 2);
  EXPECT_EQ(fields.Text(12, 2), "{}");
}

TEST_P(OmStreamWriterLayoutTest, LongStringPieceCarriesLastByteAtOffset16) {
  _writer.LongStringPiece(43, 2, "e", "f", true);
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_LONG_STRING);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 1);
  EXPECT_EQ(fields.Int32(4), 1);
  EXPECT_EQ(fields.Int32(8), 43);
  EXPECT_EQ(fields.Int32(12), 2);
  EXPECT_EQ(fields.Byte(16), 1);
  EXPECT_EQ(fields.Text(17, 2), "ef");
}

TEST_P(OmStreamWriterLayoutTest, LongTextPutsThreeLengthsBeforeTheCellId) {
  _writer.LongText(44, "aa", "bbb", "c");
  const OmStreamRecord& record = Only(_writer, MessageCode::IPC_LONG_TEXT);
  PayloadFields fields(record.payload, BigEndian());
  EXPECT_EQ(fields.Int32(0), 2);
  EXPECT_EQ(fields.Int32(4), 3);
  EXPECT_EQ(fields.Int32(8), 1);
  EXPECT_EQ(fields.Int32(12), 44);
  EXPECT_EQ(fields.Text(16, 6), "aabbbc");
}

TEST_P(OmStreamWriterLayoutTest, ConversionNameAndOutputSettingAreBytesAndTerminatedTexts) {
  _writer.ConversionName(9, "windows-1252");
  _writer.OutputSetting("OLANG", "German");
  const auto& records = _writer.Records();
  ASSERT_EQ(records.size(), 2u);
  PayloadFields name(records[0].payload, BigEndian());
  EXPECT_EQ(name.Byte(0), 9);
  EXPECT_EQ(name.Byte(1), 12);
  EXPECT_EQ(name.Text(2, 12), "windows-1252");

  PayloadFields setting(records[1].payload, BigEndian());
  EXPECT_EQ(setting.Text(0, 16), std::string(16, '\0'));
  EXPECT_EQ(setting.Text(16, 6), std::string("OLANG\0", 6));
  EXPECT_EQ(setting.Text(32, 7), std::string("German\0", 7));
  EXPECT_EQ(setting.Size(), 39u);
}

TEST_P(OmStreamWriterLayoutTest, EndProcedureDeliversTheSpecsTextThroughTheMessageHandler) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(200);
  specs.SetJackknifeBoundaries({201, 221});
  _writer.EndProcedure(specs, 3, 77);
  ASSERT_EQ(_writer.Records().size(), 3u);
  for (const OmStreamRecord& record : _writer.Records()) {
    EXPECT_EQ(record.code, Code(MessageCode::IPC_END_PROCEDURE));
    PayloadFields header(record.payload, BigEndian());
    EXPECT_EQ(header.FixedInt32(0), 77) << "the part header is little-endian in either order";
    EXPECT_EQ(header.FixedInt32(8), 3);
  }
  const std::vector<MessageItem> items = Reassemble(_writer.Records());
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

TEST(OmStreamWriterChunkingTest, TextOfExactly32766BytesIsOneMessage) {
  OmStreamWriter writer;
  const std::string text(32766, 'x');
  writer.String(5, text, 1);
  EXPECT_EQ(PieceLengths(writer, text), (std::vector<std::size_t>{32766}));
}

TEST(OmStreamWriterChunkingTest, OneByteMoreNeedsAnEmptyClosingPiece) {
  OmStreamWriter writer;
  const std::string text(32767, 'x');
  writer.String(5, text, 1);
  EXPECT_EQ(PieceLengths(writer, text), (std::vector<std::size_t>{32767, 0}));
}

TEST(OmStreamWriterChunkingTest, LongTextsSplitIntoBufferedPiecesAndAShortLastOne) {
  std::string text;
  for (int i = 0; i < 70000; ++i) text += static_cast<char>('a' + i % 26);
  OmStreamWriter writer;
  writer.String(5, text, 1, 40000);
  EXPECT_EQ(PieceLengths(writer, text), (std::vector<std::size_t>{40000, 30000}));

  OmStreamWriter standard;
  standard.String(5, text, 1);
  EXPECT_EQ(PieceLengths(standard, text), (std::vector<std::size_t>{32767, 32767, 4466}));

  OmStreamWriter even;
  const std::string twice(2 * 32767, 'y');
  even.String(5, twice, 1);
  EXPECT_EQ(PieceLengths(even, twice), (std::vector<std::size_t>{32767, 32767, 0}));
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
