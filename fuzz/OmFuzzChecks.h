// What the session fuzz targets check after an input: a procedure played before the input is
// still in the output tree unchanged, and (for a sample of the inputs) the session takes a whole
// procedure afterwards. A
// broken promise is reported and aborts, which libFuzzer records as a crash with its input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionInput.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/stream/OmStreamWriter.h"

namespace omfuzz {

inline void Require(const std::string& problem, const char* check) {
  if (problem.empty()) return;
  std::fprintf(stderr, "omfactory fuzz check failed: %s: %s\n", check, problem.c_str());
  std::abort();
}

// Plays one whole procedure and marks it as the output that the input must leave intact. The
// procedure and its rendering are the same for every input: both are made once per process.
inline void PlayEarlierProcedure(OmSessionProbe& probe) {
  static const OmStreamWriter earlier = [] {
    OmStreamWriter w;
    OmSampleStreams::Small(w, 1);
    return w;
  }();
  static std::string snapshot;
  if (!probe.Feed(earlier) || probe.Procedures() != 1) {
    Require("the earlier procedure did not arrive", "earlier procedure");
  }
  if (snapshot.empty()) {
    probe.MarkEarlierOutput();
    snapshot = probe.Snapshot(probe.Tree().Size());
  } else {
    probe.MarkEarlierOutput(snapshot);
  }
}

// Whether this input is one of those followed by the next procedure: one in kNextEvery, chosen by
// a hash of the input so that a failing input fails again when replayed. The next procedure costs
// as much as a typical input; every input still runs through the session, its teardown with an
// open procedure included, under the sanitizers. One in eight rather than four bought a tenth of
// the executions a second; a session that an input leaves unusable is still caught within a
// few hundred executions of its kind. The corpus replay in the tests sets everyInput: there each
// kept input gets the whole check.
inline bool everyInput = false;
OMF_FUZZ_HARNESS inline bool PlaysNextProcedure(const std::uint8_t* data, std::size_t size) {
  if (everyInput) return true;
  constexpr std::uint32_t kNextEvery = 8;
  std::uint32_t hash = 2166136261u;  // FNV-1a
  for (std::size_t i = 0; i < size; ++i) hash = (hash ^ data[i]) * 16777619u;
  return hash % kNextEvery == 0;
}

// The earlier output is compared after the next procedure, when there is one: a change made by
// the input stays a change, since the next procedure only appends.
inline void CheckRecovered(OmSessionProbe& probe, bool next) {
  if (next) Require(probe.AcceptsNextProcedure(), "next procedure");
  Require(probe.IntactEarlierOutput(), "earlier output after the input and the next procedure");
}

}  // namespace omfuzz
