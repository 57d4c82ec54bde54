#include "platform/outputmodel/OmChart.h"

OmChart::OmChart(const OmCellText& label, std::string codePage, std::int64_t id)
    : OmOutputPart(&label), _codePage(std::move(codePage)), _id(id) {}

void OmChart::addChartXML(const char* data, std::size_t length) {
  _contents.Add("addChartXML", data, length);
}
void OmChart::setChartXMLLength(std::size_t length) {
  _contents.Add("setChartXMLLength", std::to_string(length));
}
void OmChart::setDataLength(std::size_t length) {
  _contents.Add("setDataLength", std::to_string(length));
}
void OmChart::addDataXML(const char* data, std::size_t length) {
  _contents.Add("addDataXML", data, length);
}
void OmChart::addStyleXML(const char* data, std::size_t length) {
  _contents.Add("addStyleXML", data, length);
}
void OmChart::addTemplateXML(const char* data, std::size_t length) {
  _contents.Add("addTemplateXML", data, length);
}
void OmChart::setStyleSubtype(int subtype) {
  _contents.Add("setStyleSubtype", std::to_string(subtype));
}
OmChart* OmChart::setAuxiliaryData(const char* data) {
  _contents.Add("setAuxiliaryData", data ? std::string(data) : std::string());
  return this;
}
void OmChart::addCSVFileContent(const char* data, std::size_t length) {
  _contents.Add("addCSVFileContent", data, length);
}
void OmChart::SetMapInfo(const char* data, std::size_t length) {
  _contents.Add("SetMapInfo", data, length);
}
void OmChart::addCSVFileName(const char* data, std::size_t length) {
  _contents.Add("addCSVFileName", data, length);
}
void OmChart::setVizJSONTemplate(const char* data, std::size_t length) {
  _contents.Add("setVizJSONTemplate", data, length);
}
void OmChart::addGeoJSONFileName(const char* data, std::size_t length) {
  _contents.Add("addGeoJSONFileName", data, length);
}
void OmChart::addGeoJSONFileContent(const char* data, std::size_t length) {
  _contents.Add("addGeoJSONFileContent", data, length);
}
void OmChart::setOptions(const std::string& options) { _contents.Add("setOptions", options); }
