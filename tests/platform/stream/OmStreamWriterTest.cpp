#include "platform/stream/OmStreamWriter.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/stream/MessageCodes.h"
#include "tests/platform/stream/MessageLayouts.h"
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

class OmStreamWriterLayoutTest : public testing::TestWithParam<ByteOrder> {};

TEST_P(OmStreamWriterLayoutTest, EveryFieldSitsAtItsOffsetInTheSendersOrder) {
  for (const MessageLayouts::Layout& layout : MessageLayouts::SingleRecord()) {
    SCOPED_TRACE(layout.name);
    OmStreamWriter writer(GetParam());
    layout.write(writer);
    ASSERT_EQ(writer.Records().size(), 1u);
    const OmStreamRecord& record = writer.Records().front();
    EXPECT_EQ(record.code, Code(layout.code));
    const PayloadFields payload(record.payload, GetParam() == ByteOrder::BigEndian);
    EXPECT_EQ(payload.Size(), layout.size);
    for (const MessageLayouts::Field& field : layout.fields) {
      MessageLayouts::ExpectField(payload, field);
    }
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
