#include "platform/outputmodel/OmInteractive.h"

OmInteractive::OmInteractive(const OmCellText& label, std::string codePage, std::int64_t id)
    : OmOutputPart(&label), _codePage(std::move(codePage)), _id(id) {}

void OmInteractive::addGeoJSONFileName(const char* data, std::size_t length) {
  _contents.Add("addGeoJSONFileName", data, length);
}
void OmInteractive::addGeoJSONFileContent(const char* data, std::size_t length) {
  _contents.Add("addGeoJSONFileContent", data, length);
}
void OmInteractive::setInteractiveJSON(const char* data, std::size_t length) {
  _contents.Add("setInteractiveJSON", data, length);
}
void OmInteractive::setProcedureName(const std::string& name) {
  _contents.Add("setProcedureName", name);
}
void OmInteractive::setJSONPath(const std::string& path) { _contents.Add("setJSONPath", path); }
void OmInteractive::setOptions(const std::string& options) { _contents.Add("setOptions", options); }
