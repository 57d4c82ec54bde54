#include "platform/stream/OmStreamReader.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

// A small procedure: a settings text, cells, one table, a multi-part end.
OmStreamWriter SampleStream(ByteOrder order) {
  OmStreamWriter writer(order);
  writer.ByteOrderProbe();
  writer.BeginProcedure(2, "procedure=Descriptives\n");
  writer.String(1, "Descriptive Statistics", 0);
  writer.String(2, "Descriptives", 1);
  writer.BeginTable(0, 1, 2);
  writer.Number(3, 12.5, 0x050802);
  writer.Cell(0, 3, 4);
  writer.EndTable(0);
  writer.EndProcedure("", 2);
  return writer;
}

std::vector<OmStreamRecord> ReadAll(OmStreamReader& reader) {
  std::vector<OmStreamRecord> records;
  OmStreamRecord record;
  while (reader.Next(record)) records.push_back(record);
  return records;
}

// The records a reader hands out before it throws, and what it throws: record number, offset.
struct Failure {
  std::vector<OmStreamRecord> records;
  std::string message;
  double number = 0;
  double offset = 0;
};

Failure ReadUntilFailure(OmStreamReader& reader) {
  Failure failure;
  OmStreamRecord record;
  try {
    while (reader.Next(record)) failure.records.push_back(record);
    ADD_FAILURE() << "the reader reached the end without reporting the truncation";
  } catch (const OMSException& e) {
    failure.number = e.Value1();
    failure.offset = e.Value2();
    failure.message = e.Message();
  }
  return failure;
}

// Offset of record `index` (from 0) in the file bytes of the writer.
std::size_t RecordOffset(const OmStreamWriter& writer, std::size_t index) {
  std::size_t offset = OmStreamReader::kHeaderBytes;
  for (std::size_t i = 0; i < index; ++i) offset += 6 + writer.Records()[i].payload.size();
  return offset;
}

TEST(OmStreamReaderTest, MemoryRoundTripGivesBackEveryRecordInBothByteOrders) {
  for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
    const OmStreamWriter writer = SampleStream(order);
    OmStreamReader reader(writer.FileBytes());
    EXPECT_EQ(ReadAll(reader), writer.Records());
    EXPECT_EQ(reader.RecordCount(), writer.Records().size());
    EXPECT_EQ(reader.Offset(), writer.FileBytes().size());
    OmStreamRecord record;
    EXPECT_FALSE(reader.Next(record)) << "the end stays the end";
  }
}

TEST(OmStreamReaderTest, FileRoundTripMatchesTheMemoryOne) {
  const OmStreamWriter writer = SampleStream(ByteOrder::BigEndian);
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("omstream_reader_" + std::to_string(::getpid()) + ".oms"))
                               .string();
  writer.Save(path);
  OmStreamReader reader = OmStreamReader::FromFile(path);
  EXPECT_EQ(ReadAll(reader), writer.Records());
  std::filesystem::remove(path);
}

TEST(OmStreamReaderTest, HeaderOnlyStreamHasNoRecords) {
  OmStreamReader reader(OmStreamWriter().FileBytes());
  OmStreamRecord record;
  EXPECT_FALSE(reader.Next(record));
  EXPECT_EQ(reader.RecordCount(), 0u);
}

TEST(OmStreamReaderTest, NegativeAndUnknownCodesArePassedOn) {
  OmStreamWriter writer;
  writer.Record(-5, std::string_view("abc"));
  writer.Record(1000, std::string_view());
  writer.Record(-32768, std::string_view("\xff", 1));
  OmStreamReader reader(writer.FileBytes());
  EXPECT_EQ(ReadAll(reader), writer.Records());
}

TEST(OmStreamReaderTest, TruncatedPayloadIsReportedAfterTheCompleteRecords) {
  const OmStreamWriter writer = SampleStream(ByteOrder::LittleEndian);
  std::vector<std::uint8_t> bytes = writer.FileBytes();
  bytes.pop_back(); // the last record (the second end part) loses one payload byte
  OmStreamReader reader(std::move(bytes));
  const Failure failure = ReadUntilFailure(reader);
  const std::size_t last = writer.Records().size() - 1;
  EXPECT_EQ(failure.records,
            std::vector<OmStreamRecord>(writer.Records().begin(), writer.Records().begin() + last));
  EXPECT_EQ(failure.message, "OmStreamReader::Next -- record payload truncated");
  EXPECT_EQ(failure.number, static_cast<double>(last + 1));
  EXPECT_EQ(failure.offset, static_cast<double>(RecordOffset(writer, last)));
}

TEST(OmStreamReaderTest, TruncatedRecordHeaderIsReportedWithItsNumberAndOffset) {
  OmStreamWriter writer;
  writer.Bold();
  writer.DiscardCell(4);
  std::vector<std::uint8_t> bytes = writer.FileBytes();
  for (std::size_t extra = 1; extra < OmStreamReader::kRecordHeaderBytes; ++extra) {
    SCOPED_TRACE(extra);
    std::vector<std::uint8_t> cut = bytes;
    cut.insert(cut.end(), extra, 0x01);
    OmStreamReader reader(std::move(cut));
    const Failure failure = ReadUntilFailure(reader);
    EXPECT_EQ(failure.records, writer.Records());
    EXPECT_EQ(failure.message, "OmStreamReader::Next -- record header truncated");
    EXPECT_EQ(failure.number, 3.0);
    EXPECT_EQ(failure.offset, static_cast<double>(bytes.size()));
  }
}

TEST(OmStreamReaderTest, HugeLengthFieldIsATruncationNotAnAllocation) {
  std::vector<std::uint8_t> bytes = OmStreamWriter().FileBytes();
  const std::vector<std::uint8_t> record = {0x01, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
  bytes.insert(bytes.end(), record.begin(), record.end());
  OmStreamReader reader(std::move(bytes));
  const Failure failure = ReadUntilFailure(reader);
  EXPECT_TRUE(failure.records.empty());
  EXPECT_EQ(failure.message, "OmStreamReader::Next -- record payload truncated");
  EXPECT_EQ(failure.number, 1.0);
  EXPECT_EQ(failure.offset, 16.0);
}

TEST(OmStreamReaderTest, RefusesFilesThatAreNotVersionOneStreams) {
  const std::vector<std::uint8_t> good = OmStreamWriter().FileBytes();
  auto with = [&](std::size_t offset, std::uint8_t value) {
    std::vector<std::uint8_t> bytes = good;
    bytes[offset] = value;
    return bytes;
  };
  EXPECT_THROW(OmStreamReader(std::vector<std::uint8_t>(good.begin(), good.begin() + 15)),
               OMSException);
  EXPECT_THROW(OmStreamReader(std::vector<std::uint8_t>()), OMSException);
  EXPECT_THROW(OmStreamReader(with(0, 'X')), OMSException);
  EXPECT_THROW(OmStreamReader(with(8, 2)), OMSException);
  EXPECT_THROW(OmStreamReader(with(12, 1)), OMSException);
  EXPECT_NO_THROW(OmStreamReader(std::vector<std::uint8_t>(good)));
}

TEST(OmStreamReaderTest, MissingFileIsAnOMSException) {
  EXPECT_THROW(OmStreamReader::FromFile("/nonexistent/folder/stream.oms"), OMSException);
}

} // namespace
