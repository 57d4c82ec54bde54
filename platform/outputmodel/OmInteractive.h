// An interactive output object described by JSON, with optional GeoJSON content. Content
// operations record what they got in Contents(), under the operation names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/outputmodel/OmContentList.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmInteractive : public OmOutputPart {
public:
  OmInteractive(const OmCellText& label, std::string codePage, std::int64_t id);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Interactive"; }

  const std::string& CodePage() const { return _codePage; }
  std::int64_t Id() const { return _id; }
  const OmContentList& Contents() const { return _contents; }

  void addGeoJSONFileName(const char* data, std::size_t length);
  void addGeoJSONFileContent(const char* data, std::size_t length);
  void setInteractiveJSON(const char* data, std::size_t length);
  void setProcedureName(const std::string& name);
  void setJSONPath(const std::string& path);
  void setOptions(const std::string& options);

private:
  std::string _codePage;
  std::int64_t _id;
  OmContentList _contents;
};
