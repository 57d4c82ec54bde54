#include "platform/outputmodel/OmNumberFormat.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

constexpr double kSysMiss = -std::numeric_limits<double>::max();
constexpr int kMaxDecimals = 20;

std::string Printf(const char* pattern, int decimals, double value) {
  char buf[400];
  std::snprintf(buf, sizeof buf, pattern, decimals, value);
  return buf;
}

// "-0", "-0.00": a value that rounds to zero shows without a sign.
std::string DropNegativeZero(std::string text) {
  if (!text.empty() && text[0] == '-' && text.find_first_not_of("-0.,") == std::string::npos) {
    text.erase(0, 1);
  }
  return text;
}

// Halves round away from zero (0.125 to two decimals is 0.13), as statistical output expects;
// printf alone would round them to even.
std::string Fixed(double value, int decimals) {
  if (decimals <= 15 && std::fabs(value) < 1e15) {
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(value * scale) / scale;
    if (std::isfinite(rounded)) value = rounded;
  }
  return DropNegativeZero(Printf("%.*f", decimals, value));
}

// Inserts group separators into the integer digits of a fixed text and swaps the decimal point.
std::string Grouped(const std::string& fixed, char group, char point) {
  std::size_t start = (!fixed.empty() && fixed[0] == '-') ? 1 : 0;
  std::size_t dot = fixed.find('.');
  std::size_t intEnd = dot == std::string::npos ? fixed.size() : dot;
  std::string out = fixed.substr(0, start);
  const std::size_t digits = intEnd - start;
  for (std::size_t i = 0; i < digits; ++i) {
    if (i > 0 && (digits - i) % 3 == 0) out += group;
    out += fixed[start + i];
  }
  if (dot != std::string::npos) {
    out += point;
    out.append(fixed, dot + 1, std::string::npos);
  }
  return out;
}

std::string Shortest(double value) {
  if (value == std::floor(value) && std::fabs(value) < 1e15) return Fixed(value, 0);
  char buf[64];
  auto result = std::to_chars(buf, buf + sizeof buf, value);
  std::string text(buf, result.ptr);
  for (char& c : text) {
    if (c == 'e') c = 'E';
  }
  return text;
}

std::string Scientific(double value, int decimals) {
  return DropNegativeZero(Printf("%.*E", decimals, value));
}

std::string ByType(double value, int type, int decimals) {
  switch (type) {
    case OmNumberFormat::kGeneral:
      return decimals > 0 ? Fixed(value, decimals) : Shortest(value);
    case OmNumberFormat::kComma:
      return Grouped(Fixed(value, decimals), ',', '.');
    case OmNumberFormat::kDollar: {
      std::string grouped = Grouped(Fixed(value, decimals), ',', '.');
      if (!grouped.empty() && grouped[0] == '-') return "-$" + grouped.substr(1);
      return "$" + grouped;
    }
    case OmNumberFormat::kE:
      return Scientific(value, decimals);
    case OmNumberFormat::kPct:
      return Fixed(value, decimals) + "%";
    case OmNumberFormat::kDot:
      return Grouped(Fixed(value, decimals), '.', ',');
    default:
      return Fixed(value, decimals);
  }
}

}  // namespace

std::string OmNumberFormat::Format(double value, std::uint32_t format) {
  if (value == kSysMiss) return ".";
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
  const int width = int(format & 0xFFFF);
  const int type = int((format >> 16) & 0xFF);
  const int decimals = std::min(int((format >> 24) & 0xFF), kMaxDecimals);
  std::string text = ByType(value, type, decimals);
  if (width <= 0 || int(text.size()) <= width) return text;
  // Too wide: scientific with as many decimals as fit, else asterisks.
  for (int d = std::min(decimals, width); d >= 0; --d) {
    std::string e = Scientific(value, d);
    if (int(e.size()) <= width) return e;
  }
  return std::string(std::size_t(width), '*');
}
