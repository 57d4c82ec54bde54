#include "platform/stream/OmRecordDescriber.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fuzz/OmSampleStreams.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(OmRecordDescriberTest, TextsAreQuotedEscapedAndCut) {
  OmStreamWriter writer;
  writer.LogLine(1, std::string("a\"b\\c\n\x01", 7));
  writer.LogLine(1, std::string(100, 'x'));
  OmRecordDescriber describer;
  EXPECT_THAT(describer.Describe(writer.Records()[0]), HasSubstr("text=\"a\\\"b\\\\c\\n\\x01\""));
  const std::string shown(OmRecordDescriber::kTextShown, 'x');
  EXPECT_THAT(describer.Describe(writer.Records()[1]), HasSubstr('"' + shown + "\"...(100 bytes)"));
}

// The records of the sample streams hold between them every message the writer makes.
TEST(OmRecordDescriberTest, EveryShortenedRecordSaysTruncatedAndStaysInsideThePayload) {
  for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
    for (const OmSampleStreams::Named& sample : OmSampleStreams::All(order)) {
      for (const OmStreamRecord& record : sample.stream.Records()) {
        const bool multiPart =
            record.code == static_cast<std::int16_t>(MessageCode::IPC_END_PROCEDURE) ||
            record.code == static_cast<std::int16_t>(MessageCode::IPC_MODEL_PMML);
        // A fresh describer for every description: one may switch the byte order it reads.
        const auto describe = [&](const std::uint8_t* payload, std::size_t length) {
          OmRecordDescriber describer;
          describer.SwapBytes(order == ByteOrder::BigEndian);
          return describer.Describe(record.code, payload, length);
        };
        EXPECT_THAT(describe(record.payload.data(), record.payload.size()),
                    AllOf(Not(HasSubstr("truncated")), Not(HasSubstr("extra bytes"))));
        for (std::size_t length = 0; length < record.payload.size(); ++length) {
          // A copy of exactly `length` bytes, so that the sanitizers catch any read past it.
          const std::vector<std::uint8_t> shortened(
              record.payload.begin(), record.payload.begin() + static_cast<std::ptrdiff_t>(length));
          const std::string text = describe(shortened.data(), shortened.size());
          // A multi-part message's share may be any length.
          if (!multiPart || length < 12) { EXPECT_THAT(text, HasSubstr("truncated")); }
        }
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
  writer.String(1, std::string(32766, 's'), 0); // the longest that fits one record
  OmRecordDescriber describer;
  EXPECT_EQ(describer.Describe(writer.Records()[0]),
            "IPC_BEGIN_NODE (278) 6 bytes: cell=1 (+2 extra bytes)");
  EXPECT_THAT(describer.Describe(writer.Records()[1]), HasSubstr("(continued)"));
  EXPECT_THAT(describer.Describe(writer.Records()[2]), Not(HasSubstr("(continued)")));
  ASSERT_EQ(writer.Records().size(), 4u);
  EXPECT_THAT(describer.Describe(writer.Records()[3]), Not(HasSubstr("(continued)")));
}

} // namespace
