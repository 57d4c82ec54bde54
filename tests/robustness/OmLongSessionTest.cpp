// A long session: thousands of procedures with tables, log lines and page titles through one
// session whose observer takes each procedure and releases it, as a host that streams output
// elsewhere does. The memory the session holds must not grow with the number of procedures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "fuzz/OmSampleStreams.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "tests/robustness/OmCountingAllocator.h"

namespace {

using robustness::CountingAllocator;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

// Counts what arrives and releases everything the session appended.
class Releaser : public OmFactory::Observer {
 public:
  bool WantsOutput() override { return true; }
  void OutputAppended(OmOutputTree& tree) override {
    procedures += tree.Count<OmProcedure>();
    tables += tree.Count<OmPivotTable>();
    while (tree.Root().HasChildren()) tree.Erase(tree.Root().FirstChild());
  }
  void LogLine(const std::string&) override { ++logLines; }
  void PageTitle(const std::string&, const std::string&) override { ++pageTitles; }

  std::size_t procedures = 0;
  std::size_t tables = 0;
  std::size_t logLines = 0;
  std::size_t pageTitles = 0;
};

TEST(LongSession, MemoryStaysFlatOverThousandsOfReleasedProcedures) {
  // Under the sanitizers every message costs several times more: the same check on fewer
  // procedures keeps the run to seconds.
  const std::size_t total = kSanitized ? 3000 : 10000;
  const std::size_t measureFrom = total / 10;

  OmOutputTree tree;
  Releaser releaser;
  const std::vector<OMSObjectSelector> requests;
  OmFactory session(&tree, std::string(), "UTF-8", requests);
  session.Register(&releaser);

  // One round: a page title, log lines, then a procedure with a table and a text block.
  std::vector<std::vector<OmStreamRecord>> rounds(2);
  for (std::size_t r = 0; r < rounds.size(); ++r) {
    OmStreamWriter w;
    w.PageTitle("Page " + std::to_string(r), "");
    w.LogLine(1, "DESCRIPTIVES height weight.");
    w.LogLine(2, "  /STATISTICS=MEAN.");
    OmSampleStreams::Descriptives(w, std::int64_t(r) + 1);
    rounds[r] = w.Records();
  }
  std::vector<std::uint8_t> payload;
  payload.reserve(1 << 16);

  std::size_t bytesAtMeasureFrom = 0;
  for (std::size_t p = 1; p <= total; ++p) {
    for (const OmStreamRecord& record : rounds[p % rounds.size()]) {
      // The session rewrites payloads in place: each message gets a fresh copy.
      payload.assign(record.payload.begin(), record.payload.end());
      session.Message(record.code, unsigned(payload.size()), payload.data());
    }
    if (p == measureFrom) bytesAtMeasureFrom = CountingAllocator::LiveBytes();
  }
  const std::size_t bytesAtEnd = CountingAllocator::LiveBytes();

  EXPECT_EQ(releaser.procedures, total);
  EXPECT_EQ(releaser.tables, total);
  // The second log line skips one line: an empty line goes before it.
  EXPECT_EQ(releaser.logLines, 3 * total);
  EXPECT_EQ(releaser.pageTitles, total);
  EXPECT_EQ(session.RecoveredErrorCount(), 0u);
  EXPECT_EQ(tree.Size(), 1u);  // only the root: everything else was released
  // Less than one byte per procedure: a single leaked node per procedure would be many times
  // more than this.
  const std::size_t procedures = total - measureFrom;
  EXPECT_LT(bytesAtEnd, bytesAtMeasureFrom + procedures)
      << "grew by " << (bytesAtEnd - bytesAtMeasureFrom) << " bytes over " << procedures
      << " procedures";
}

}  // namespace
