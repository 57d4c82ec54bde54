// Server errors shown to the user, raised by error file and number ("omerrors.err", 101).
// They are OMSExceptions so that the session's recovery treats them like any other failure.
#pragma once

#include <string>

#include "platform/errors/OMSException.h"

class ServerError : public OMSException {
public:
  ServerError(std::string file, int number);
  const std::string& File() const noexcept { return _file; }
  int Number() const noexcept { return _number; }

private:
  std::string _file;
  int _number;
};

namespace ThrowError {
// Throws ServerError for the given error file and number; never returns.
[[noreturn]] void Simple(const std::string& file, int number);
// The readable text of a known server error, or "" when unknown.
std::string Text(const std::string& file, int number);
}  // namespace ThrowError
