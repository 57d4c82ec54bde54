#include "platform/stream/OmStreamReader.h"

#include <cstring>
#include <fstream>
#include <utility>

#include "platform/errors/OMSException.h"

namespace {

std::uint32_t GetUInt32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | (static_cast<std::uint32_t>(bytes[1]) << 8) |
         (static_cast<std::uint32_t>(bytes[2]) << 16) |
         (static_cast<std::uint32_t>(bytes[3]) << 24);
}

} // namespace

struct OmStreamReader::Data {
  std::vector<std::uint8_t> _bytes;
  std::size_t _offset = kHeaderBytes;
  std::size_t _records = 0;

  void CheckHeader() const {
    if (_bytes.size() < kHeaderBytes) {
      throw OMSException("OmStreamReader -- stream header truncated",
                         static_cast<double>(_bytes.size()), static_cast<double>(kHeaderBytes));
    }
    if (std::memcmp(_bytes.data(), "OMSTREAM", 8) != 0) {
      throw OMSException("OmStreamReader -- not a stream file (magic != OMSTREAM)");
    }
    const std::uint32_t version = GetUInt32(_bytes.data() + 8);
    if (version != 1) throw OMSException("OmStreamReader -- unsupported stream version", version);
    const std::uint32_t flags = GetUInt32(_bytes.data() + 12);
    if (flags != 0) throw OMSException("OmStreamReader -- unsupported stream flags", flags);
  }
};

OmStreamReader::OmStreamReader() : _my(std::make_unique<Data>()) {}

OmStreamReader::OmStreamReader(std::vector<std::uint8_t> bytes) : OmStreamReader() {
  _my->_bytes = std::move(bytes);
  _my->CheckHeader();
}

OmStreamReader OmStreamReader::FromFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw OMSException("OmStreamReader::FromFile -- cannot open " + path);
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  file.seekg(0, std::ios::beg);
  if (size < 0) throw OMSException("OmStreamReader::FromFile -- cannot read " + path);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
  file.read(reinterpret_cast<char*>(bytes.data()), size);
  if (file.gcount() != size) throw OMSException("OmStreamReader::FromFile -- cannot read " + path);
  return OmStreamReader(std::move(bytes));
}

OmStreamReader::OmStreamReader(OmStreamReader&& other) noexcept = default;
OmStreamReader& OmStreamReader::operator=(OmStreamReader&& other) noexcept = default;
OmStreamReader::~OmStreamReader() = default;

bool OmStreamReader::Next(OmStreamRecord& record) {
  Data& my = *_my;
  const std::size_t left = my._bytes.size() - my._offset;
  if (left == 0) return false;
  const double number = static_cast<double>(my._records + 1);
  const double offset = static_cast<double>(my._offset);
  if (left < kRecordHeaderBytes)
    throw OMSException("OmStreamReader::Next -- record header truncated", number, offset);
  const std::uint8_t* header = my._bytes.data() + my._offset;
  const std::uint32_t length = GetUInt32(header + 2);
  if (length > left - kRecordHeaderBytes) {
    throw OMSException("OmStreamReader::Next -- record payload truncated", number, offset);
  }
  record.code = static_cast<std::int16_t>(static_cast<std::uint16_t>(header[0] | (header[1] << 8)));
  record.payload.assign(header + kRecordHeaderBytes, header + kRecordHeaderBytes + length);
  my._offset += kRecordHeaderBytes + length;
  ++my._records;
  return true;
}

std::size_t OmStreamReader::RecordCount() const { return _my->_records; }
std::size_t OmStreamReader::Offset() const { return _my->_offset; }
