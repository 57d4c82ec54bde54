#include "platform/stream/OmStreamReader.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

TEST(OmStreamReaderTest, RefusesMissingFilesAndFilesThatAreNotVersionOneStreams) {
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
  EXPECT_THROW(OmStreamReader::FromFile("/nonexistent/folder/stream.oms"), OMSException);
}

} // namespace
