#include "platform/errors/ThrowError.h"

namespace {
struct KnownError {
  const char* file;
  int number;
  const char* text;
};

constexpr KnownError kKnownErrors[] = {
    {"omerrors.err", 101, "The procedure ended a table that was never begun."},
    {"omerrors.err", 102, "The procedure ended a table while one of its groups was still open."},
    {"omerrors.err", 103,
     "The procedure styled or annotated the current category while no category was current."},
};

std::string Describe(const std::string& file, int number) {
  std::string text = ThrowError::Text(file, number);
  std::string head = "Server error " + std::to_string(number) + " of " + file;
  return text.empty() ? head : head + ": " + text;
}
}  // namespace

ServerError::ServerError(std::string file, int number)
    : OMSException(Describe(file, number), number), _file(std::move(file)), _number(number) {}

namespace ThrowError {
void Simple(const std::string& file, int number) { throw ServerError(file, number); }

std::string Text(const std::string& file, int number) {
  for (const KnownError& e : kKnownErrors)
    if (file == e.file && number == e.number) return e.text;
  return "";
}
}  // namespace ThrowError
