// Field readers and writers of the OMS binary records that requests travel in between processes:
// integers in the writer's byte order, bytes for flags, zero-terminated strings. Used only by the
// stream operators of OMSSelector, OMSObjectSelector, OMSColumns and OmParsedColumn.
//
// Reading: a string of more than 1023 bytes puts the stream into its fail state; the field keeps
// its value and every later read returns false, so the record's later fields are left as they were.
// A record that ends inside a field, or a negative count, is an OMSException naming the operator
// and the field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

// Reverses the n bytes at p in place (a field of the other byte order); n <= 1 leaves them.
void ReverseBytes(void* p, int n);

class OMSRecordWriter {
public:
  explicit OMSRecordWriter(std::ostream& out) : _out(out) {}
  void Flag(bool value);
  void Int32(std::int32_t value);
  void UInt32(std::uint32_t value);
  void Double(double value);
  // A string holding a zero byte could not be read back: the stream fails instead.
  void String(const std::string& value);

private:
  void Bytes(const void* data, std::size_t size);
  std::ostream& _out;
};

class OMSRecordReader {
public:
  static constexpr std::size_t kMaxString = 1023;

  // where names the operator in error messages ("OMSSelector::operator>>").
  OMSRecordReader(std::istream& in, const char* where) : _in(in), _where(where) {}

  // False once the stream has failed (a string was too long); then nothing is read.
  bool Ok() const { return !_in.fail(); }

  bool Flag(bool& value, const char* field);
  // swap: the record came from a machine of the other byte order.
  bool Int32(std::int32_t& value, bool swap, const char* field);
  bool UInt32(std::uint32_t& value, const char* field);
  bool Double(double& value, const char* field);
  bool String(std::string& value, const char* field);
  // A count of entries; negative counts are an OMSException.
  bool Count(std::int32_t& value, bool swap, const char* field);

  const char* Where() const { return _where; }

private:
  bool Bytes(void* data, std::size_t size, const char* field);
  [[noreturn]] void EndsEarly(const char* field);
  std::istream& _in;
  const char* _where;
};
