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

TEST(StreamMutator, ParseAndEncodeGiveBackTheFileCutOrWhole) {
  for (const std::vector<std::uint8_t>& file : SampleFiles()) {
    for (std::size_t cut : {file.size(), file.size() - 1, std::size_t(20), std::size_t(16)}) {
      OmStreamMutator::Parsed parsed;
      ASSERT_TRUE(OmStreamMutator::Parse(file.data(), cut, parsed));
      EXPECT_EQ(OmStreamMutator::Encode(parsed),
                std::vector<std::uint8_t>(file.begin(), file.begin() + std::ptrdiff_t(cut)));
      if (cut == file.size()) {
        EXPECT_TRUE(parsed.tail.empty());
      }
    }
    OmStreamMutator::Parsed parsed;
    EXPECT_FALSE(OmStreamMutator::Parse(file.data(), 15, parsed));
  }
}

TEST(StreamMutator, TheSameSeedGivesTheSameMutationWithinTheRoom) {
  const OmStreamMutator mutator(&FlipMiddle);
  const std::vector<std::uint8_t> file = SampleFiles()[2];
  std::size_t changed = 0;
  for (unsigned seed = 1; seed <= 200; ++seed) {
    const std::size_t room = file.size() + 64;
    std::vector<std::uint8_t> first(file), second(file);
    first.resize(room);
    second.resize(room);
    const std::size_t a = mutator.Mutate(first.data(), file.size(), room, seed);
    const std::size_t b = mutator.Mutate(second.data(), file.size(), room, seed);
    ASSERT_LE(a, room);
    ASSERT_EQ(a, b);
    EXPECT_EQ(std::memcmp(first.data(), second.data(), a), 0) << "seed " << seed;
    changed += a != file.size() || std::memcmp(first.data(), file.data(), a) != 0;
  }
  EXPECT_GT(changed, 150u);
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
