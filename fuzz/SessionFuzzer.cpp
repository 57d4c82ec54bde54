// Fuzz target: one whole factory session fed arbitrary records in the compact form of
// OmSessionInput: any code (the control messages and unknown codes included), any payload,
// starting in either byte order. The session must never crash, leak or read past a payload; a
// procedure completed before the input stays intact and the next procedure is accepted. The
// earlier procedure is played only where the input's flags ask for it: it doubles the cost of an
// execution, and what it guards (output already handed over) is rarely what an input reaches.
#include <cstddef>
#include <cstdint>

#include "fuzz/OmFuzzChecks.h"
#include "fuzz/OmSessionInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OmSessionProbe probe;
  const std::uint8_t flags = size > 0 ? data[0] : 0;
  if ((flags & OmSessionInput::kEarlierOutput) != 0) omfuzz::PlayEarlierProcedure(probe);
  probe.Factory().SwapBytes((flags & OmSessionInput::kSwapBytes) != 0);
  probe.Factory().setDestViewer((flags & OmSessionInput::kDestViewer) != 0);
  probe.WantsOutput((flags & OmSessionInput::kDeclineOutput) == 0);
  OmSessionInput::Decode(data, size,
                         [&probe](std::int16_t code, const std::uint8_t* payload,
                                  std::size_t length) { probe.Feed(code, payload, length); });

  omfuzz::CheckRecovered(probe);
  return 0;
}
