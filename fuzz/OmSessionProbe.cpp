#include "fuzz/OmSessionProbe.h"

#include <cstring>
#include <typeinfo>

#include "fuzz/OmSampleStreams.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/outputmodel/OmTextRenderer.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

// A procedure left open by the input gets this many end messages before the check gives up:
// the first may only reset a multi-part message that the input left half done.
constexpr int kEndAttempts = 3;

// An id that no sample uses, so the check procedure is told apart in dumps.
constexpr std::int64_t kCheckProcedureId = 4242;

}  // namespace

class OmSessionProbe::Observer : public OmFactory::Observer {
public:
  bool WantsOutput() override { return wants; }
  bool wants = true;
};

OmSessionProbe::OmSessionProbe(std::vector<OMSObjectSelector> requests)
    : _requests(std::move(requests)),
      _tree(std::make_unique<OmOutputTree>()),
      _observer(std::make_unique<Observer>()),
      _factory(std::make_unique<OmFactory>(_tree.get(), std::string(), "UTF-8", _requests)) {
  _factory->Register(_observer.get());
}

OmSessionProbe::~OmSessionProbe() = default;

void OmSessionProbe::WantsOutput(bool wants) { _observer->wants = wants; }

bool OmSessionProbe::Feed(std::int16_t code, const std::uint8_t* payload, std::size_t length) {
  // Exactly length bytes, so that the sanitizers catch a read one byte past the message.
  // (memcpy, not a loop: the fuzz build traces every comparison of a loop, each byte's included.)
  std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[length]);
  if (length > 0) std::memcpy(copy.get(), payload, length);
  try {
    _factory->Message(code, unsigned(length), copy.get());
    return true;
  } catch (const std::bad_cast&) {
  } catch (const OMSException&) {
  }
  ++_escaped;
  return false;
}

bool OmSessionProbe::Feed(const OmStreamRecord& record) {
  return Feed(record.code, record.payload.data(), record.payload.size());
}

bool OmSessionProbe::Feed(const OmStreamWriter& stream) {
  bool clean = true;
  for (const OmStreamRecord& record : stream.Records()) clean = Feed(record) && clean;
  return clean;
}

void OmSessionProbe::MarkEarlierOutput() {
  _earlierNodes = _tree->Size();
  _earlierSnapshot = Snapshot(_earlierNodes);
}

void OmSessionProbe::MarkEarlierOutput(std::string snapshot) {
  _earlierNodes = _tree->Size();
  _earlierSnapshot = std::move(snapshot);
}

std::string OmSessionProbe::IntactEarlierOutput() {
  if (_tree->Size() < _earlierNodes) {
    return "the output tree shrank from " + std::to_string(_earlierNodes) + " to " +
           std::to_string(_tree->Size()) + " nodes";
  }
  const std::string now = Snapshot(_earlierNodes);
  if (now != _earlierSnapshot) {
    return "earlier output changed:\n--- before\n" + _earlierSnapshot + "--- after\n" + now;
  }
  return std::string();
}

std::string OmSessionProbe::AcceptsNextProcedure() {
  _factory->SwapBytes(false);
  _observer->wants = true;
  for (int i = 0; i < kEndAttempts && _factory->Procedure() != nullptr; ++i) {
    OmStreamWriter end;
    end.EndProcedure();
    Feed(end);
  }
  if (_factory->Procedure() != nullptr) return "a procedure stays open after its end messages";

  const std::size_t procedures = Procedures();
  const std::size_t tables = Tables();
  // The smallest whole procedure: every fuzz execution plays it, so each message it saves counts.
  static const OmStreamWriter check = [] {
    OmStreamWriter w;
    OmSampleStreams::Small(w, kCheckProcedureId);
    return w;
  }();
  if (!Feed(check)) return "the check procedure let an exception out";
  if (_factory->Procedure() != nullptr) return "the check procedure stays open";
  if (Procedures() != procedures + 1) {
    return "the check procedure was not appended (" + std::to_string(Procedures()) +
           " procedures, " + std::to_string(procedures) + " before)";
  }
  if (Tables() != tables + 1) return "the check procedure's table is missing";
  return std::string();
}

std::size_t OmSessionProbe::Procedures() { return _tree->Count<OmProcedure>(); }
std::size_t OmSessionProbe::Tables() { return _tree->Count<OmPivotTable>(); }
std::size_t OmSessionProbe::TextBlocks() { return _tree->Count<OmTextBlock>(); }

bool OmSessionProbe::HasOutputMissing() {
  for (OmOutputPart* part : *_tree) {
    if (dynamic_cast<OmTextBlock*>(part) != nullptr && part->LabelText() == "Output Missing") {
      return true;
    }
  }
  return false;
}

std::string OmSessionProbe::Snapshot(std::size_t limit) {
  const OmTextRenderer renderer;
  std::string text;
  std::size_t n = 0;
  for (OmOutputTree::Node node = _tree->Begin(); !node.IsEnd() && n < limit; ++node, ++n) {
    text += std::to_string(node.Level()) + ": ";
    text += node.Value() ? renderer.RenderPart(*node.Value(), node.Level()) : std::string("-");
    text += "\n";
  }
  return text;
}
