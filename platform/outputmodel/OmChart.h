// A chart: an XML chart description with optional CSV data, map and GeoJSON content, received
// message by message. Every content operation records what it got in Contents(); the names used
// there are the operation names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/outputmodel/OmContentList.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmChart : public OmOutputPart {
public:
  OmChart(const OmCellText& label, std::string codePage, std::int64_t id);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Chart"; }

  const std::string& CodePage() const { return _codePage; }
  std::int64_t Id() const { return _id; }
  const OmContentList& Contents() const { return _contents; }

  // The content operations of chart messages, in this order (message content type in brackets).
  virtual void addChartXML(const char* data, std::size_t length);            // [1]
  virtual void setChartXMLLength(std::size_t length);                        // [2]
  virtual void setDataLength(std::size_t length);                            // [4]
  virtual void addDataXML(const char* data, std::size_t length);             // [8]
  virtual void addStyleXML(const char* data, std::size_t length);            // [7], first call
  virtual void addTemplateXML(const char* data, std::size_t length);         // [12]
  virtual void setStyleSubtype(int subtype);                                 // [7], second call
  virtual OmChart* setAuxiliaryData(const char* data);                       // [3] returns this

  void addCSVFileContent(const char* data, std::size_t length);              // [6]
  void SetMapInfo(const char* data, std::size_t length);                     // [10]
  void addCSVFileName(const char* data, std::size_t length);                 // [11]
  void setVizJSONTemplate(const char* data, std::size_t length);             // [13]
  void addGeoJSONFileName(const char* data, std::size_t length);             // [14]
  void addGeoJSONFileContent(const char* data, std::size_t length);          // [15]
  void setOptions(const std::string& options);                               // [19]

private:
  std::string _codePage;
  std::int64_t _id;
  OmContentList _contents;
};
