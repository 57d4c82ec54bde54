#include "platform/stream/OmRecordDescriber.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fuzz/OmSampleStreams.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The records of the sample streams: between them every message the writer makes.
std::vector<OmStreamRecord> EveryMessage(ByteOrder order) {
  std::vector<OmStreamRecord> records;
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(order)) {
    for (const OmStreamRecord& record : sample.stream.Records()) records.push_back(record);
  }
  return records;
}

TEST(OmRecordDescriberTest, TextsAreQuotedEscapedAndCut) {
  OmStreamWriter writer;
  writer.LogLine(1, std::string("a\"b\\c\n\x01", 7));
  writer.LogLine(1, std::string(100, 'x'));
  OmRecordDescriber describer;
  EXPECT_TRUE(Contains(describer.Describe(writer.Records()[0]), "text=\"a\\\"b\\\\c\\n\\x01\""));
  const std::string cut = describer.Describe(writer.Records()[1]);
  EXPECT_TRUE(
      Contains(cut, "\"" + std::string(OmRecordDescriber::kTextShown, 'x') + "\"...(100 bytes)"))
      << cut;
}

TEST(OmRecordDescriberTest, EveryShortenedRecordSaysTruncatedAndStaysInsideThePayload) {
  for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
    for (const OmStreamRecord& record : EveryMessage(order)) {
      const bool multiPart =
          record.code == static_cast<std::int16_t>(MessageCode::IPC_END_PROCEDURE) ||
          record.code == static_cast<std::int16_t>(MessageCode::IPC_MODEL_PMML);
      const bool swapped = order == ByteOrder::BigEndian;
      OmRecordDescriber full;
      full.SwapBytes(swapped);
      EXPECT_FALSE(Contains(full.Describe(record), "truncated")) << full.Describe(record);
      for (std::size_t length = 0; length < record.payload.size(); ++length) {
        // A copy of exactly `length` bytes, so that the sanitizers catch any read past it.
        const std::vector<std::uint8_t> shortened(
            record.payload.begin(), record.payload.begin() + static_cast<std::ptrdiff_t>(length));
        OmRecordDescriber describer;
        describer.SwapBytes(swapped);
        const std::string text =
            describer.Describe(record.code, shortened.data(), shortened.size());
        if (multiPart && length >= 12) continue; // the share may be any length
        EXPECT_TRUE(Contains(text, "truncated")) << text;
      }
    }
  }
}

TEST(OmRecordDescriberTest, LyingLengthsAreNotFollowed) {
  OmStreamWriter writer;
  writer.Record(static_cast<std::int16_t>(MessageCode::IPC_OUTLINE_TEXT),
                std::string_view("\xE8\x03\0\0abc", 7));
  writer.Record(static_cast<std::int16_t>(MessageCode::IPC_OUTLINE_TEXT),
                std::string_view("\xFF\xFF\xFF\xFF", 4));
  writer.Record(static_cast<std::int16_t>(MessageCode::IPC_OUTPUT_SETTING), std::string(20, 'k'));
  OmRecordDescriber describer;
  EXPECT_EQ(describer.Describe(writer.Records()[0]),
            "IPC_OUTLINE_TEXT (317) 7 bytes: length=1000 text=\"abc\" truncated");
  EXPECT_EQ(describer.Describe(writer.Records()[1]),
            "IPC_OUTLINE_TEXT (317) 4 bytes: length=-1 text=<bad length -1> truncated");
  EXPECT_EQ(describer.Describe(writer.Records()[2]),
            "IPC_OUTPUT_SETTING (34) 20 bytes: keyword=\"kkkk\" truncated");
}

TEST(OmRecordDescriberTest, UnknownCodesShowTheirFirstBytes) {
  OmRecordDescriber describer;
  const std::vector<std::uint8_t> bytes(20, 0xAB);
  EXPECT_EQ(describer.Describe(1000, bytes.data(), 3), "code (1000) 3 bytes: AB AB AB");
  EXPECT_EQ(describer.Describe(-5, bytes.data(), 20),
            "code (-5) 20 bytes: AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB ...");
  EXPECT_EQ(describer.Describe(260, nullptr, 0), "code (260) 0 bytes:");
}

TEST(OmRecordDescriberTest, ExtraBytesAndContinuedStringsAreMarked) {
  OmStreamWriter writer;
  writer.Record(static_cast<std::int16_t>(MessageCode::IPC_BEGIN_NODE),
                std::string_view("\x01\0\0\0\x09\x09", 6));
  writer.String(1, std::string(40000, 's'), 0);
  OmRecordDescriber describer;
  EXPECT_EQ(describer.Describe(writer.Records()[0]),
            "IPC_BEGIN_NODE (278) 6 bytes: cell=1 (+2 extra bytes)");
  EXPECT_TRUE(Contains(describer.Describe(writer.Records()[1]), "(continued)"));
  EXPECT_FALSE(Contains(describer.Describe(writer.Records()[2]), "(continued)"));
}

} // namespace
