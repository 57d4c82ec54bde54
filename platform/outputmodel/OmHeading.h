// A heading of the outline: a label with child parts below it in the tree and footnotes that
// reach every table beneath it.
#pragma once

#include <vector>

#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmHeading : public OmOutputPart {
public:
  explicit OmHeading(const OmCellText& label);
  explicit OmHeading(std::unique_ptr<OmCellText> label);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Heading"; }

  const std::vector<OmFootnote>& Footnotes() const { return _footnotes; }
  // Appends a copy of footnote.
  void AddFootnote(const OmFootnote& footnote) { _footnotes.push_back(footnote); }

private:
  std::vector<OmFootnote> _footnotes;
};
