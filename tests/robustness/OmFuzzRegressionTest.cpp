// Faults the fuzz targets found, rebuilt as streams that show them. (Failing inputs kept as the
// targets found them go into fuzz/corpus/, which the corpus tests replay.)
#include <gtest/gtest.h>

#include <typeinfo>
#include <vector>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"

namespace {

// An IPC_END_NODE at the procedure node sends the chart after it out of the procedure, next to
// it; the procedure node, left empty, is pruned at the end and what comes first is no procedure.
// That end let std::bad_cast out and left the procedure open, refusing the next one.
TEST(FuzzRegression, OutputOutsideTheProcedureNodeClosesTheProcedureAtItsEnd) {
  for (int endNodes : {1, 2}) {
    SCOPED_TRACE(std::to_string(endNodes) + " end node messages");
    OmSessionProbe probe;
    OmStreamWriter w;
    w.BeginProcedure(3, OmSampleStreams::Settings("Graph"));
    for (int i = 0; i < endNodes; ++i) w.EndNode();
    w.ChartXml(0, 0, "Bar chart of income");
    w.ChartXml(1, 0, "<chart><bar/></chart>");
    w.ChartXml(9, 0, "");
    probe.Feed(w);
    OmStreamWriter end;
    end.EndProcedure();
    std::vector<std::uint8_t> payload = end.Records().back().payload;
    const std::size_t procedures = probe.Procedures();
    if (probe.Factory().Procedure() != nullptr) {
      EXPECT_THROW(probe.Factory().Message(end.Records().back().code, unsigned(payload.size()),
                                           payload.data()),
                   std::bad_cast);
    }
    EXPECT_EQ(probe.Factory().Procedure(), nullptr);
    EXPECT_EQ(probe.Procedures(), procedures);
    EXPECT_EQ(probe.AcceptsNextProcedure(), "");
  }
}

}  // namespace
