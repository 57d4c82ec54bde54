#include "platform/errors/OMSException.h"

#include <sstream>
#include <utility>

namespace {
std::string Compose(const std::string& message, double v1, double v2) {
  std::ostringstream out;
  out << message << ", value 1 == " << v1 << ", value 2 == " << v2;
  return out.str();
}
}  // namespace

OMSException::OMSException(std::string message) : OMSException(std::move(message), 0, 0) {}

OMSException::OMSException(std::string message, double value1)
    : OMSException(std::move(message), value1, 0) {}

OMSException::OMSException(std::string message, double value1, double value2)
    : _message(std::move(message)), _value1(value1), _value2(value2),
      _what(Compose(_message, value1, value2)) {}

const char* OMSException::what() const noexcept { return _what.c_str(); }
