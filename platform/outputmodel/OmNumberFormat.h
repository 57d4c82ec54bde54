// Turns numbers into display text by their 32-bit format word (bits 0-15 width, 16-23 type,
// 24-31 decimals). Used by number and data-value cells and by the text renderer.
//
// Types (d = decimals, w = width):
//   0  general: d decimals when d > 0, else the shortest exact form ("3", "0.125", "1E+20")
//   1  A   text format; a number shows as with F
//   2  AHEX  a number shows as with F
//   3  COMMA  grouped thousands with ",", d decimals: 1,234.50
//   4  DOLLAR  "$" then as COMMA: $1,234.50
//   5  F   fixed, d decimals: 1234.50
//   6  E   scientific, d decimals, two-digit signed exponent: 1.23E+03
//   7  PCT  as F followed by "%": 12.5%
//   8  DOT  grouped with ".", decimal ",": 1.234,50
//   any other type: as F
// Width: when w > 0 and the text is longer than w, the number is shown in E with as many
// decimals as fit, or as w asterisks when even that does not fit. Negative zero shows as 0.
// The system-missing value shows as "." and NaN as "NaN"; infinities as "Inf" and "-Inf".
#pragma once

#include <cstdint>
#include <string>

namespace OmNumberFormat {

enum Type : int {
  kGeneral = 0,
  kA = 1,
  kAHex = 2,
  kComma = 3,
  kDollar = 4,
  kF = 5,
  kE = 6,
  kPct = 7,
  kDot = 8,
};

std::string Format(double value, std::uint32_t format);

}  // namespace OmNumberFormat
