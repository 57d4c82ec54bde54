#include "fuzz/OmSessionInput.h"

#include <algorithm>

#include "platform/stream/MessageCodes.h"

const std::vector<std::int16_t>& OmSessionInput::Codes() {
  static const std::vector<std::int16_t> codes = [] {
    std::vector<std::int16_t> all;
    for (const MessageCodeName& row : kMessageCodeNames) all.push_back(std::int16_t(row.code));
    all.push_back(255);
    all.push_back(260);
    return all;
  }();
  return codes;
}

std::vector<std::uint8_t> OmSessionInput::Encode(std::uint8_t flags,
                                                 const std::vector<OmStreamRecord>& records) {
  const std::vector<std::int16_t>& codes = Codes();
  std::vector<std::uint8_t> bytes{flags};
  for (const OmStreamRecord& record : records) {
    const auto known = std::find(codes.begin(), codes.end(), record.code);
    if (known != codes.end()) {
      bytes.push_back(std::uint8_t(known - codes.begin()));
    } else {
      bytes.push_back(kRawCode);
      bytes.push_back(std::uint8_t(std::uint16_t(record.code) & 0xFF));
      bytes.push_back(std::uint8_t(std::uint16_t(record.code) >> 8));
    }
    const std::size_t length = std::min<std::size_t>(record.payload.size(), 0xFFFF);
    bytes.push_back(std::uint8_t(length & 0xFF));
    bytes.push_back(std::uint8_t(length >> 8));
    bytes.insert(bytes.end(), record.payload.begin(),
                 record.payload.begin() + std::ptrdiff_t(length));
  }
  return bytes;
}
