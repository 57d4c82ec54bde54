#include "platform/stream/OmStreamReader.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

// The records a reader hands out before it throws, and what it throws: record number, offset.
struct Failure {
  std::vector<OmStreamRecord> records;
  std::string message;
  double number = 0;
  double offset = 0;
};

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
