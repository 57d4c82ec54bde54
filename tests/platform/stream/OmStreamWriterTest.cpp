#include "platform/stream/OmStreamWriter.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

TEST(OmStreamWriterTest, RefusesFieldsThatTheirMessageCannotCarry) {
  OmStreamWriter writer;
  // A chunk size that would end the string early.
  EXPECT_THROW(writer.String(5, std::string(70000, 'x'), 0, 32766), OMSException);
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
