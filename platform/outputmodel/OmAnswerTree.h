// A decision tree received as XML pieces. Content operations record what they got in Contents(),
// under the operation names.
#pragma once

#include <cstddef>
#include <string>

#include "platform/outputmodel/OmContentList.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmAnswerTree : public OmOutputPart {
public:
  OmAnswerTree(const OmCellText& label, std::string codePage);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Tree"; }

  const std::string& CodePage() const { return _codePage; }
  const OmContentList& Contents() const { return _contents; }

  // The content operations of tree messages, in this order (message type in brackets).
  virtual void setTreeFlags(unsigned extra);                                        // [0]
  virtual void addTreeXML(const char* data, std::size_t length);                    // [2]
  virtual void addNodeXML(const char* data, std::size_t length, unsigned extra);    // [3]
  virtual void addStyleXML(const char* data, std::size_t length);                   // [4]
  virtual void addTableXML(const char* data, std::size_t length);                   // [5]
  virtual void Finish();                                                            // [6]

  bool IsFinished() const { return _finished; }

private:
  std::string _codePage;
  OmContentList _contents;
  bool _finished = false;
};
