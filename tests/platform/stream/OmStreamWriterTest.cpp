#include "platform/stream/OmStreamWriter.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"
#include "tests/platform/stream/MessageLayouts.h"
#include "tests/platform/stream/PayloadFields.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

std::int16_t Code(MessageCode code) { return static_cast<std::int16_t>(code); }

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

INSTANTIATE_TEST_SUITE_P(BothByteOrders, OmStreamWriterLayoutTest,
                         testing::Values(ByteOrder::LittleEndian, ByteOrder::BigEndian),
                         [](const testing::TestParamInfo<ByteOrder>& info) {
                           return info.param == ByteOrder::BigEndian ? "BigEndian" : "LittleEndian";
                         });

TEST(OmStreamWriterChunkingTest, ChunksThatWouldEndTheStringEarlyAreRefused) {
  OmStreamWriter writer;
  EXPECT_THROW(writer.String(5, std::string(70000, 'x'), 0, 32766), OMSException);
  EXPECT_TRUE(writer.Records().empty());
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

} // namespace
