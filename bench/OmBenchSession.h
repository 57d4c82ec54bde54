// A factory session as a host runs it for the benchmarks: a fresh output tree, an observer that
// wants every procedure, and optionally an OMS request that keeps no table or an output that goes
// to the viewer. Feed replays a stream through OmFactory::Message record by record.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class OmFactory;
class OmOutputTree;
class OmStreamReader;
class OMSObjectSelector;

class OmBenchSession {
public:
  struct Options {
    // One OMS request that selects headings only: every table's keep flag is cleared.
    bool excludeTables = false;
    // The output goes to the viewer, which needs only the first cell of a fast table.
    bool destViewer = false;
  };

  explicit OmBenchSession(const Options& options);
  OmBenchSession(const OmBenchSession&) = delete;
  OmBenchSession& operator=(const OmBenchSession&) = delete;
  ~OmBenchSession();

  // Hands every remaining record of reader to the session; returns how many.
  std::int64_t Feed(OmStreamReader& reader);

  OmFactory& Factory();
  OmOutputTree& Tree();
  // Cells held by the pivot tables of the output tree.
  std::int64_t TableCells();
  // Procedures the observer was offered.
  int ProceduresOffered() const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
