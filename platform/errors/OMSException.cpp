#include "platform/errors/OMSException.h"

#include <cstdio>
#include <utility>

namespace {
// The values as a stream prints a double by default ("%g", 6 significant digits). Formatted
// without a stream: a hostile input can make every message fail, and a stream's construction
// cost more than the rest of the failure.
void AppendValue(std::string& text, double value) {
  char digits[32];  // "%g" writes at most 13 characters ("-1.79769e+308")
  const int n = std::snprintf(digits, sizeof digits, "%g", value);
  if (n > 0) text.append(digits, std::size_t(n));
}

std::string Compose(const std::string& message, double v1, double v2) {
  std::string text = message;
  text += ", value 1 == ";
  AppendValue(text, v1);
  text += ", value 2 == ";
  AppendValue(text, v2);
  return text;
}
}  // namespace

OMSException::OMSException(std::string message) : OMSException(std::move(message), 0, 0) {}

OMSException::OMSException(std::string message, double value1)
    : OMSException(std::move(message), value1, 0) {}

OMSException::OMSException(std::string message, double value1, double value2)
    : _message(std::move(message)), _value1(value1), _value2(value2),
      _what(Compose(_message, value1, value2)) {}

const char* OMSException::what() const noexcept { return _what.c_str(); }
