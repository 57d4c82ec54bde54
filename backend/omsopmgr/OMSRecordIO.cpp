#include "backend/omsopmgr/OMSRecordIO.h"

#include <algorithm>

#include <cstring>

#include "platform/errors/OMSException.h"

void ReverseBytes(void* p, int n) {
  if (n <= 1) return;
  auto* bytes = static_cast<unsigned char*>(p);
  std::reverse(bytes, bytes + n);
}

void OMSRecordWriter::Bytes(const void* data, std::size_t size) {
  _out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

void OMSRecordWriter::Flag(bool value) {
  const char byte = value ? 1 : 0;
  Bytes(&byte, 1);
}

void OMSRecordWriter::Int32(std::int32_t value) { Bytes(&value, sizeof value); }
void OMSRecordWriter::UInt32(std::uint32_t value) { Bytes(&value, sizeof value); }
void OMSRecordWriter::Double(double value) { Bytes(&value, sizeof value); }

void OMSRecordWriter::String(const std::string& value) {
  if (value.find('\0') != std::string::npos) {
    _out.setstate(std::ios::failbit);
    return;
  }
  Bytes(value.data(), value.size());
  Bytes("", 1);
}

void OMSRecordReader::EndsEarly(const char* field) {
  _in.setstate(std::ios::failbit | std::ios::eofbit);
  throw OMSException(std::string(_where) + " -- record ends early in " + field);
}

bool OMSRecordReader::Bytes(void* data, std::size_t size, const char* field) {
  if (!Ok()) return false;
  _in.read(static_cast<char*>(data), static_cast<std::streamsize>(size));
  if (static_cast<std::size_t>(_in.gcount()) != size) EndsEarly(field);
  return true;
}

bool OMSRecordReader::Flag(bool& value, const char* field) {
  char byte = 0;
  if (!Bytes(&byte, 1, field)) return false;
  value = byte != 0;
  return true;
}

bool OMSRecordReader::Int32(std::int32_t& value, bool swap, const char* field) {
  std::int32_t read = 0;
  if (!Bytes(&read, sizeof read, field)) return false;
  if (swap) ReverseBytes(&read, sizeof read);
  value = read;
  return true;
}

bool OMSRecordReader::UInt32(std::uint32_t& value, const char* field) {
  return Bytes(&value, sizeof value, field);
}

bool OMSRecordReader::Double(double& value, const char* field) {
  return Bytes(&value, sizeof value, field);
}

bool OMSRecordReader::String(std::string& value, const char* field) {
  if (!Ok()) return false;
  std::string read;
  for (;;) {
    const int next = _in.peek();
    if (next == std::istream::traits_type::eof()) EndsEarly(field);
    if (next == 0) {
      _in.get();
      break;
    }
    if (read.size() == kMaxString) {
      _in.setstate(std::ios::failbit);
      return false;
    }
    read.push_back(static_cast<char>(_in.get()));
  }
  value = std::move(read);
  return true;
}

bool OMSRecordReader::Count(std::int32_t& value, bool swap, const char* field) {
  if (!Int32(value, swap, field)) return false;
  if (value < 0)
    throw OMSException(std::string(_where) + " -- count < 0 in " + field, value);
  return true;
}
