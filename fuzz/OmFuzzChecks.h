// What every session fuzz target checks after its input: a procedure played before the input is
// still in the output tree unchanged, and the session takes a whole procedure afterwards. A
// broken promise is reported and aborts, which libFuzzer records as a crash with its input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/OmSampleStreams.h"
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
    OmSampleStreams::Descriptives(w, 1);
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

// The earlier output is compared once, after the next procedure: a change made by the input
// stays a change, since the next procedure only appends.
inline void CheckRecovered(OmSessionProbe& probe) {
  Require(probe.AcceptsNextProcedure(), "next procedure");
  Require(probe.IntactEarlierOutput(), "earlier output after the input and the next procedure");
}

}  // namespace omfuzz
