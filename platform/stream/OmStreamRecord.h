// One record of a message stream: the 16-bit message code and its payload, as a stream file holds
// it and as OmFactory::Message takes it. Shared by the stream reader and writer.
#pragma once

#include <cstdint>
#include <vector>

struct OmStreamRecord {
  std::int16_t code = 0;
  std::vector<std::uint8_t> payload;

  bool operator==(const OmStreamRecord&) const = default;
};
