// A file-system path name in its generic form (forward slashes, UTF-8), as the host and the
// factory session pass string-table locations around. A plain value; empty means "no path".
#pragma once

#include <string>
#include <utility>

class ExtNameStr {
public:
  ExtNameStr() = default;
  explicit ExtNameStr(std::string generic) : _generic(std::move(generic)) {}

  // Replaces the path with the given generic path text.
  void SetGeneric(std::string generic) { _generic = std::move(generic); }
  const std::string& GetGeneric() const noexcept { return _generic; }
  bool IsEmpty() const noexcept { return _generic.empty(); }

  friend bool operator==(const ExtNameStr&, const ExtNameStr&) = default;

private:
  std::string _generic;
};
