// Fuzz target: one whole factory session fed arbitrary records in the compact form of
// OmSessionInput: any code (the control messages and unknown codes included), any payload,
// starting in either byte order. The session must never crash, leak or read past a payload; a
// procedure completed before the input stays intact and the next procedure is accepted. Both are
// played for a sample of the inputs only (one in eight, omfuzz::PlaysNextProcedure), the earlier
// one only where the input's flags also ask for it: each costs about as much as a typical input,
// and what they guard (a session left unusable, output already handed over changed) is rarely
// what an input reaches.
#include <cstddef>
#include <cstdint>

#include "fuzz/OmFuzzChecks.h"
#include "fuzz/OmSessionInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OmSessionProbe probe;
  const std::uint8_t flags = size > 0 ? data[0] : 0;
  const bool next = omfuzz::PlaysNextProcedure(data, size);
  if (next && (flags & OmSessionInput::kEarlierOutput) != 0) omfuzz::PlayEarlierProcedure(probe);
  probe.Factory().SwapBytes((flags & OmSessionInput::kSwapBytes) != 0);
  probe.Factory().setDestViewer((flags & OmSessionInput::kDestViewer) != 0);
  probe.WantsOutput((flags & OmSessionInput::kDeclineOutput) == 0);
  OmSessionInput::Decode(data, size,
                         [&probe](std::int16_t code, const std::uint8_t* payload,
                                  std::size_t length) { probe.Feed(code, payload, length); });

  omfuzz::CheckRecovered(probe, next);
  return 0;
}
