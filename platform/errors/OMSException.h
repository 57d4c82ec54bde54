// The library's exception type: a message and two numbers that identify the index or count
// involved. Thrown by every layer; the factory session recovers from it while a procedure is open.
#pragma once

#include <exception>
#include <string>

class OMSException : public std::exception {
public:
  explicit OMSException(std::string message);
  OMSException(std::string message, double value1);
  OMSException(std::string message, double value1, double value2);

  // The message followed by ", value 1 == v1, value 2 == v2", numbers as an ostream writes them.
  const char* what() const noexcept override;

  const std::string& Message() const noexcept { return _message; }
  double Value1() const noexcept { return _value1; }
  double Value2() const noexcept { return _value2; }

private:
  std::string _message;
  double _value1 = 0;
  double _value2 = 0;
  std::string _what;
};
