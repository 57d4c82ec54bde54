#include "bench/OmBenchSession.h"

#include <string>

#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/stream/OmStreamRecord.h"

namespace {

class WantingObserver : public OmFactory::Observer {
public:
  void ProcedureOutput(OmOutputTree&) override { ++offered; }
  bool WantsOutput() override { return true; }
  int offered = 0;
};

}  // namespace

struct OmBenchSession::Data {
  std::vector<OMSObjectSelector> requests;
  OmOutputTree tree;
  WantingObserver observer;
  std::unique_ptr<OmFactory> factory;
  OmStreamRecord record;
};

OmBenchSession::OmBenchSession(const Options& options) : _my(std::make_unique<Data>()) {
  if (options.excludeTables) {
    OMSObjectSelector headingsOnly;
    headingsOnly.SelectType(OMSObjectSelector::kHeadings);
    _my->requests.push_back(headingsOnly);
  }
  _my->factory = std::make_unique<OmFactory>(&_my->tree, std::string(), "UTF-8", _my->requests);
  _my->factory->Register(&_my->observer);
  _my->factory->setDestViewer(options.destViewer);
}

OmBenchSession::~OmBenchSession() = default;

std::int64_t OmBenchSession::Feed(OmStreamReader& reader) {
  Data& my = *_my;
  std::int64_t records = 0;
  // The record's buffer is writable and reused: the session decodes in place.
  while (reader.Next(my.record)) {
    my.factory->Message(my.record.code, unsigned(my.record.payload.size()),
                        my.record.payload.data());
    ++records;
  }
  return records;
}

OmFactory& OmBenchSession::Factory() { return *_my->factory; }
OmOutputTree& OmBenchSession::Tree() { return _my->tree; }

std::int64_t OmBenchSession::TableCells() {
  std::int64_t cells = 0;
  for (OmOutputPart* part : _my->tree) {
    if (auto* table = dynamic_cast<OmPivotTable*>(part)) cells += std::int64_t(table->NCells());
  }
  return cells;
}

int OmBenchSession::ProceduresOffered() const { return _my->observer.offered; }
