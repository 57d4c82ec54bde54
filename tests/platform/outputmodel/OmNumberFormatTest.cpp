#include "platform/outputmodel/OmNumberFormat.h"

#include <cmath>

#include <gtest/gtest.h>

#include "platform/outputmodel/OmNumber.h"

namespace {

std::string F(double v, int type, int width, int decimals) {
  return OmNumberFormat::Format(v, OmNumber::MakeFormat(type, width, decimals));
}

TEST(OmNumberFormat, GroupedAndCurrencyAndPercentTypes) {
  EXPECT_EQ(F(1234567.891, 3, 20, 2), "1,234,567.89");
  EXPECT_EQ(F(-1234.5, 3, 20, 1), "-1,234.5");
  EXPECT_EQ(F(999, 3, 20, 0), "999");
  EXPECT_EQ(F(1234.5, 4, 20, 2), "$1,234.50");
  EXPECT_EQ(F(-1234.5, 4, 20, 2), "-$1,234.50");
  EXPECT_EQ(F(12.5, 7, 20, 1), "12.5%");
  EXPECT_EQ(F(1234567.5, 8, 20, 1), "1.234.567,5");
}

TEST(OmNumberFormat, ScientificAndGeneral) {
  EXPECT_EQ(F(1234.5, 6, 20, 2), "1.23E+03");
  EXPECT_EQ(F(0.000123, 6, 20, 1), "1.2E-04");
  EXPECT_EQ(F(3, 0, 20, 0), "3");
  EXPECT_EQ(F(0.125, 0, 20, 0), "0.125");
  EXPECT_EQ(F(1e20, 0, 20, 0), "1E+20");
  EXPECT_EQ(F(0.125, 0, 20, 2), "0.13");
  // Types this renderer does not know are shown fixed; text formats show numbers fixed too.
  EXPECT_EQ(F(1.5, 42, 8, 2), "1.50");
  EXPECT_EQ(F(1.5, 1, 8, 1), "1.5");
}

TEST(OmNumberFormat, TooWideFallsBackToScientificThenAsterisks) {
  EXPECT_EQ(F(1000000, 5, 5, 0), "1E+06");
  EXPECT_EQ(F(123456.789, 5, 8, 2), "1.23E+05");
  EXPECT_EQ(F(123456.789, 5, 3, 2), "***");
  EXPECT_EQ(F(123456.789, 5, 0, 2), "123456.79");  // width 0: no limit
}

TEST(OmNumberFormat, SpecialValues) {
  EXPECT_EQ(OmNumberFormat::Format(-1.7976931348623157e308, 0x2050008), ".");
  EXPECT_EQ(OmNumberFormat::Format(NAN, 0x2050008), "NaN");
  EXPECT_EQ(OmNumberFormat::Format(INFINITY, 0x2050008), "Inf");
  EXPECT_EQ(OmNumberFormat::Format(-INFINITY, 0x2050008), "-Inf");
}

}  // namespace
