// The stream fuzz target's mutator, replayed without libFuzzer: a file taken apart and put back is
// the same file, a seed always gives the same mutation within the room given, and hundreds of
// mutated sample files played into a session end in reports, never in a crash, with the earlier
// procedure intact and the next one accepted.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "fuzz/OmStreamMutator.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/OmStreamReader.h"

namespace {

// A stand-in for libFuzzer's byte mutator: flips the middle byte.
std::size_t FlipMiddle(std::uint8_t* data, std::size_t size, std::size_t maxSize) {
  if (size == 0 || maxSize == 0) return 0;
  data[size / 2] ^= 0x5A;
  return size;
}

std::vector<std::vector<std::uint8_t>> SampleFiles() {
  std::vector<std::vector<std::uint8_t>> files;
  for (auto order :
       {OmStreamWriter::ByteOrder::LittleEndian, OmStreamWriter::ByteOrder::BigEndian}) {
    for (const OmSampleStreams::Named& named : OmSampleStreams::All(order)) {
      files.push_back(named.stream.FileBytes());
    }
  }
  return files;
}

TEST(StreamMutator, MutatedSampleFilesNeverBreakTheSession) {
  const OmStreamMutator mutator(&FlipMiddle);
  const std::vector<std::vector<std::uint8_t>> files = SampleFiles();
  for (unsigned seed = 1; seed <= 300; ++seed) {
    const std::vector<std::uint8_t>& file = files[seed % files.size()];
    std::vector<std::uint8_t> bytes(file);
    bytes.resize(file.size() * 2 + 64);
    bytes.resize(mutator.Mutate(bytes.data(), file.size(), bytes.size(), seed));
    SCOPED_TRACE("seed " + std::to_string(seed));

    OmSessionProbe probe;
    OmStreamWriter earlier;
    OmSampleStreams::Descriptives(earlier, 1);
    ASSERT_TRUE(probe.Feed(earlier));
    probe.MarkEarlierOutput();
    try {
      OmStreamReader reader(bytes);
      for (OmStreamRecord record; reader.Next(record);) probe.Feed(record);
    } catch (const OMSException&) {
      // A file cut inside a record: the records before it were played.
    }
    ASSERT_EQ(probe.IntactEarlierOutput(), "");
    ASSERT_EQ(probe.AcceptsNextProcedure(), "");
  }
}

}  // namespace
