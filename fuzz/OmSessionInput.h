// The input format of the session fuzz target: a compact encoding of a message sequence in which
// every byte string means something, so that random mutation mostly makes messages rather than
// broken stream headers. The seed tool converts stream files into it.
//
//   byte     flags (kSwapBytes, kDestViewer, kDeclineOutput, kEarlierOutput)
//   records until the input ends:
//     byte   code index: kCodes[index % size], or kRawCode followed by a little-endian int16
//     uint16 payload length, little-endian
//     bytes  the payload; fewer when the input ends first
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/stream/OmStreamRecord.h"

// Marks the fuzz harness's own byte loops: the fuzz build leaves them uninstrumented, since their
// coverage says nothing about the factory and tracing each byte's comparison cost a tenth of every
// execution. (A clang attribute; other compilers build the harness for the tests as it is.)
#if defined(__clang__)
#define OMF_FUZZ_HARNESS __attribute__((no_sanitize("coverage")))
#else
#define OMF_FUZZ_HARNESS
#endif

class OmSessionInput {
public:
  enum Flags : std::uint8_t {
    kSwapBytes = 1,      // the session starts out swapping
    kDestViewer = 2,     // output goes to the viewer (the fast-table rule applies)
    kDeclineOutput = 4,  // the observer does not take the procedures
    kEarlierOutput = 8,  // a whole procedure comes first, and must come through the input intact
                         // (on the inputs sampled for the next procedure)
  };

  static constexpr std::uint8_t kRawCode = 0xFF;

  // Every message code, the ignored ones of the output range (255, 260) among them.
  static const std::vector<std::int16_t>& Codes();

  // The records with their payloads cut to 65535 bytes.
  static std::vector<std::uint8_t> Encode(std::uint8_t flags,
                                          const std::vector<OmStreamRecord>& records);

  // Splits data into flags and records; visit(code, payload, length) is called per record with
  // a pointer into data.
  template <class Visit>
  OMF_FUZZ_HARNESS static std::uint8_t Decode(const std::uint8_t* data, std::size_t size, Visit&& visit) {
    if (size == 0) return 0;
    const std::uint8_t flags = data[0];
    std::size_t at = 1;
    const std::vector<std::int16_t>& codes = Codes();
    while (at < size) {
      std::int16_t code = 0;
      if (data[at] == kRawCode) {
        if (size - at < 3) break;
        code = std::int16_t(data[at + 1] | (data[at + 2] << 8));
        at += 3;
      } else {
        code = codes[data[at] % codes.size()];
        at += 1;
      }
      if (size - at < 2) break;
      std::size_t length = std::size_t(data[at] | (data[at + 1] << 8));
      at += 2;
      if (length > size - at) length = size - at;
      visit(code, data + at, length);
      at += length;
    }
    return flags;
  }
};
