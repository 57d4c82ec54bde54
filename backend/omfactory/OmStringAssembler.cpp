#include "backend/omfactory/OmStringAssembler.h"

#include "platform/errors/OMSException.h"

void OmStringAssembler::AppendChunk(std::string_view text) {
  if (!Fits(text.size())) {
    throw OMSException("OmStringAssembler::AppendChunk -- pending text above limit",
                       double(PendingBytes() + text.size()), double(kMaxBytes));
  }
  _chunks.append(text);
}

std::string OmStringAssembler::FinishChunks(std::string_view last) {
  std::string text = std::move(_chunks);
  _chunks = std::string();
  text.append(last);
  return text;
}

void OmStringAssembler::DropChunks() { _chunks = std::string(); }

void OmStringAssembler::AppendPart(int id, int part, std::string_view text) {
  if (text.empty()) return;
  if (!Fits(text.size())) {
    throw OMSException("OmStringAssembler::AppendPart -- pending text above limit",
                       double(PendingBytes() + text.size()), double(kMaxBytes));
  }
  Parts& parts = _parts[id];
  std::string& target = part == 0 ? parts.a : part == 1 ? parts.b : parts.c;
  target.append(text);
  _partBytes += text.size();
}

OmStringAssembler::Parts OmStringAssembler::TakeParts(int id) {
  Parts taken;
  auto found = _parts.find(id);
  if (found == _parts.end()) return taken;
  taken = std::move(found->second);
  _partBytes -= taken.a.size() + taken.b.size() + taken.c.size();
  _parts.erase(found);
  return taken;
}

void OmStringAssembler::DropParts(int id) { TakeParts(id); }
