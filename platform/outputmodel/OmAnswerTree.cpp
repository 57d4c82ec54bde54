#include "platform/outputmodel/OmAnswerTree.h"

OmAnswerTree::OmAnswerTree(const OmCellText& label, std::string codePage)
    : OmOutputPart(&label), _codePage(std::move(codePage)) {}

void OmAnswerTree::setTreeFlags(unsigned extra) {
  _contents.Add("setTreeFlags", std::to_string(extra));
}
void OmAnswerTree::addTreeXML(const char* data, std::size_t length) {
  _contents.Add("addTreeXML", data, length);
}
void OmAnswerTree::addNodeXML(const char* data, std::size_t length, unsigned extra) {
  _contents.Add("addNodeXML:" + std::to_string(extra), data, length);
}
void OmAnswerTree::addStyleXML(const char* data, std::size_t length) {
  _contents.Add("addStyleXML", data, length);
}
void OmAnswerTree::addTableXML(const char* data, std::size_t length) {
  _contents.Add("addTableXML", data, length);
}
void OmAnswerTree::Finish() { _finished = true; }
