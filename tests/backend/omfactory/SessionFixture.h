// Shared set-up of the factory session tests: a session on a fresh output tree, a stream writer in
// the byte order under test whose records are fed to the session, an observer that keeps the
// output, and helpers that open procedures and tables and read what they built.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backend/omfactory/OmFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/stream/OmStreamWriter.h"
#include "tests/backend/omfactory/OutputTreeViews.h"

namespace sessiontest {

using treeviews::Outline;
using treeviews::PartsOf;

using ByteOrder = OmStreamWriter::ByteOrder;

// Takes every procedure's output into the tree.
class KeepOutput : public OmFactory::Observer {
public:
  bool WantsOutput() override { return true; }
};

inline std::string Settings(const std::string& procedure = "Descriptives",
                            const std::string& extra = "") {
  return "procedure=" + procedure + "\ntranslated=" + procedure + "\n" + extra;
}

// Hands every record written so far to session and forgets them. Each payload is a copy: the
// session decodes in place.
inline void Deliver(OmFactory& session, OmStreamWriter& writer) {
  std::vector<OmStreamRecord> records = writer.Records();
  writer.Clear();
  for (OmStreamRecord& record : records) {
    session.Message(record.code, unsigned(record.payload.size()), record.payload.data());
  }
}

// The label text of dimension d's root (path empty) or of the node reached by child indices.
inline std::string LabelAt(const OmPivotTable& table, int d, std::initializer_list<std::size_t> path = {}) {
  const OmDimensionNode* node = &table.Dimension(d).Root();
  for (std::size_t i : path) node = node->Child(i);
  return node->Label()->Text();
}

class SessionTest : public ::testing::Test {
protected:
  SessionTest() { Reopen(); }

  // Writes as a sender of that byte order from now on, on a new session.
  void UseOrder(ByteOrder order) {
    writer = OmStreamWriter(order);
    Reopen();
  }

  // A new session on a new tree with the current request list; observers are registered again.
  void Reopen() {
    factory.reset();
    tree = std::make_unique<OmOutputTree>();
    factory = std::make_unique<OmFactory>(tree.get(), std::string(), "UTF-8", requests);
    factory->Register(&observer);
    writer.Clear();
    // A big-endian sender announces itself; the session starts out not swapping.
    writer.ByteOrderProbe();
  }

  void Feed() { Deliver(*factory, writer); }

  // A raw message, fed at once.
  void Send(std::int16_t code, std::vector<std::uint8_t> payload) {
    factory->Message(code, unsigned(payload.size()), payload.data());
  }

  // The next free cell id holding a non-translatable string.
  std::int32_t Str(const std::string& text) {
    const std::int32_t id = _nextCell++;
    writer.String(id, text, 1);
    return id;
  }
  std::int32_t Num(double value) {
    const std::int32_t id = _nextCell++;
    writer.Number(id, value, 0x050802);
    return id;
  }

  void BeginProcedure(std::int64_t id = 1, const std::string& settings = Settings()) {
    writer.BeginProcedure(id, settings);
    Feed();
  }
  void EndProcedure() {
    writer.EndProcedure();
    Feed();
  }

  // Opens table tcid labelled title with subtype "Descriptive Statistics".
  void BeginTable(std::uint8_t tcid, const std::string& title) {
    writer.BeginTable(tcid, Str(title), Str("Descriptive Statistics"));
    Feed();
  }

  // The tables of the open procedure.
  std::vector<OmPivotTable*> OpenTables() {
    if (factory->Procedure() == nullptr) return {};
    return PartsOf<OmPivotTable>(factory->Procedure()->Tree());
  }
  OmPivotTable& OpenTable(std::size_t index = 0) {
    std::vector<OmPivotTable*> tables = OpenTables();
    if (index >= tables.size()) throw std::runtime_error("no such open table");
    return *tables[index];
  }

  std::vector<OMSObjectSelector> requests;
  std::unique_ptr<OmOutputTree> tree;
  KeepOutput observer;
  std::unique_ptr<OmFactory> factory;
  OmStreamWriter writer;

private:
  std::int32_t _nextCell = 1;
};

// The same tests in both byte orders of the sender.
class BothOrdersTest : public SessionTest, public ::testing::WithParamInterface<ByteOrder> {
protected:
  void SetUp() override { UseOrder(GetParam()); }
};

inline std::string OrderName(const ::testing::TestParamInfo<ByteOrder>& info) {
  return info.param == ByteOrder::LittleEndian ? "LittleEndian" : "BigEndian";
}

#define OM_BOTH_ORDERS(Suite) \
  INSTANTIATE_TEST_SUITE_P(BothOrders, Suite, \
                           ::testing::Values(ByteOrder::LittleEndian, ByteOrder::BigEndian), OrderName)

}  // namespace sessiontest
