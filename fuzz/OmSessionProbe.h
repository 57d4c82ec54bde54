// A factory session on its own output tree, driven by hostile input: the fuzz targets and the
// robustness tests feed it messages and then ask whether it recovered. Each payload goes in as a
// heap copy of exactly its length, so a sanitizer sees any read past a message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/stream/OmStreamRecord.h"

class OmStreamWriter;

class OmSessionProbe {
public:
  // A session with these OMS requests (kept by the probe) and one observer, which takes every
  // procedure's output while WantsOutput is set.
  explicit OmSessionProbe(std::vector<OMSObjectSelector> requests = {});
  ~OmSessionProbe();
  OmSessionProbe(const OmSessionProbe&) = delete;
  OmSessionProbe& operator=(const OmSessionProbe&) = delete;

  OmFactory& Factory() { return *_factory; }
  OmOutputTree& Tree() { return *_tree; }
  void WantsOutput(bool wants);

  // One message, payload copied to a buffer of exactly length bytes. A std::bad_cast (composite
  // messages on a slot holding another kind of cell) and an OMSException that escaped the
  // session's own recovery are what a host must expect: they are caught, counted and the call
  // returns false. Anything else passes through.
  bool Feed(std::int16_t code, const std::uint8_t* payload, std::size_t length);
  bool Feed(const OmStreamRecord& record);
  // Every record written so far; false when any message let an exception out.
  bool Feed(const OmStreamWriter& stream);
  std::size_t EscapedCount() const { return _escaped; }

  // Marks the parts now in the output tree as earlier output: IntactEarlierOutput then checks
  // that they are still there, unchanged as the text renderer shows them.
  void MarkEarlierOutput();
  // The same with the snapshot of those parts already known (the same procedure played before).
  void MarkEarlierOutput(std::string snapshot);
  // "" when the parts marked by MarkEarlierOutput are unchanged, else what changed.
  std::string IntactEarlierOutput();

  // Ends a procedure that the input left open, then plays one whole procedure with a table in
  // the session's byte order as it stands after a SwapBytes(false). Returns "" when it arrived
  // in the output tree with its table, else what went wrong.
  std::string AcceptsNextProcedure();

  // Parts of the output tree that are procedures, pivot tables or text blocks.
  std::size_t Procedures();
  std::size_t Tables();
  std::size_t TextBlocks();
  // Whether the output holds a text block titled "Output Missing" (a recovered failure).
  bool HasOutputMissing();

  // The output tree as text: one line per node, indented by level, each part as the text
  // renderer shows it on its own. limit stops after that many nodes.
  std::string Snapshot(std::size_t limit = std::size_t(-1));

private:
  class Observer;

  std::vector<OMSObjectSelector> _requests;
  std::unique_ptr<OmOutputTree> _tree;
  std::unique_ptr<Observer> _observer;
  std::unique_ptr<OmFactory> _factory;
  std::size_t _escaped = 0;
  std::size_t _earlierNodes = 0;
  std::string _earlierSnapshot;
};
