// A block of text lines under a title: a procedure's printed text, or the log, which OMS tells
// apart by the log flag.
#pragma once

#include <string>
#include <vector>

#include "platform/outputmodel/OmOutputPart.h"

class OmTextBlock : public OmOutputPart {
public:
  OmTextBlock(const OmCellText& label, std::string codePage, bool log = false);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Text"; }

  const std::string& CodePage() const { return _codePage; }
  bool IsLog() const { return _log; }
  void setLog(bool log) { _log = log; }

  const std::vector<std::string>& Lines() const { return _lines; }
  void AddLine(std::string line) { _lines.push_back(std::move(line)); }

private:
  std::string _codePage;
  bool _log;
  std::vector<std::string> _lines;
};
