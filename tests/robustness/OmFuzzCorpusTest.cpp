// The committed corpus of one fuzz target (OMF_CORPUS names it, OMF_CORPUS_SUITE the test suite),
// replayed through the target's own entry point in the ordinary build: every input the deep runs
// kept, and every failing input they found, must pass the target's checks (which abort on a broken
// promise), each followed by a whole procedure. The inputs reach corners of the decoder that no
// hand-written stream does.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/OmFuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// libFuzzer's mutator, which the stream target's custom mutator names; a replay never mutates.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) {
  return size;
}

TEST(OMF_CORPUS_SUITE, EveryCommittedInputPassesItsTargetsChecks) {
  const char* source = std::getenv("OMF_SOURCE_DIR");
  const std::filesystem::path dir = std::filesystem::path(source ? source : "") / OMF_CORPUS;
  omfuzz::everyInput = true;
  std::size_t inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path(), std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    SCOPED_TRACE(entry.path().filename().string());
    EXPECT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
    ++inputs;
  }
  EXPECT_GT(inputs, 10u);
}
