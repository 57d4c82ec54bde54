#include "platform/outputmodel/OmModel.h"

OmModel::OmModel(const OmCellText& label) : OmOutputPart(&label) {}

void OmModel::addPMML(const char* data, std::size_t length) { _contents.Add("addPMML", data, length); }
void OmModel::addStatisticsXML(const char* data, std::size_t length) {
  _contents.Add("addStatisticsXML", data, length);
}
void OmModel::addViewerXML(const char* data, std::size_t length) {
  _contents.Add("addViewerXML", data, length);
}
void OmModel::addAuxiliaryXML(const char* data, std::size_t length) {
  _contents.Add("addAuxiliaryXML", data, length);
}
