// A model (PMML and its companions) received through multi-part model messages. Content
// operations record what they got in Contents(), under the operation names.
#pragma once

#include <cstddef>
#include <string>

#include "platform/outputmodel/OmContentList.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmModel : public OmOutputPart {
public:
  explicit OmModel(const OmCellText& label);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Model"; }

  const OmContentList& Contents() const { return _contents; }

  // The content operations of model message parts, in this order (part kind in brackets).
  virtual void addPMML(const char* data, std::size_t length);            // [1]
  virtual void addStatisticsXML(const char* data, std::size_t length);   // [2]
  virtual void addViewerXML(const char* data, std::size_t length);       // [3]
  virtual void addAuxiliaryXML(const char* data, std::size_t length);    // [4]

private:
  OmContentList _contents;
};
