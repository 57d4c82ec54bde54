// OmProcedureFactory: charts, decision trees, models and interactive objects. Each arrives as a
// creating message and content messages addressed by the object's index within its kind.

#include <string>
#include <string_view>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactoryData.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/strings/NuvaroMB.h"

namespace {

// Content types shared by chart and interactive-object messages.
enum ContentType : int {
  kCreate = 0,
  kChartXML = 1,
  kChartXMLLength = 2,
  kAuxiliaryData = 3,
  kDataLength = 4,
  kCSVFileContent = 6,
  kStyleXML = 7,
  kDataXML = 8,
  kFurtherLabel = 9,
  kMapInfo = 10,
  kCSVFileName = 11,
  kTemplateXML = 12,
  kVizJSONTemplate = 13,
  kGeoJSONFileName = 14,
  kGeoJSONFileContent = 15,
  kInteractiveJSON = 16,
  kProcedureName = 17,
  kJSONPath = 18,
  kOptions = 19,
};

// Tree message types.
enum TreeType : int {
  kTreeFlags = 0,
  kTreeCreate = 1,
  kTreeXML = 2,
  kNodeXML = 3,
  kTreeStyleXML = 4,
  kTableXML = 5,
  kTreeFinish = 6,
};

// Model message part kinds.
enum ModelPart : unsigned {
  kModelCreate = 0,
  kPMML = 1,
  kStatisticsXML = 2,
  kViewerXML = 3,
  kAuxiliaryXML = 4,
  kModelFurtherLabel = 5,
};

// Object indices come from the stream. A procedure numbers its objects within a block of 2^20
// ids, so no procedure can address more objects than that; larger indices are corrupt input.
constexpr int kMaxObjectIndex = 1 << 20;

// The object table's entry for index, grown with null entries as needed.
template <class Part>
Part*& Entry(std::vector<Part*>& table, int index, const char* operation) {
  if (index < 0 || index >= kMaxObjectIndex) {
    throw OMSException(std::string("OmProcedureFactory::") + operation +
                           " -- index < 0 || index >= 2^20",
                       double(index));
  }
  if (table.size() <= std::size_t(index)) table.resize(std::size_t(index) + 1, nullptr);
  return table[std::size_t(index)];
}

// The length bytes at data; a null pointer carries no bytes.
std::string Text(const char* data, unsigned length, const char* operation) {
  if (data == nullptr) {
    if (length > 0) {
      throw OMSException(std::string("OmProcedureFactory::") + operation + " -- data == nullptr",
                         double(length));
    }
    return std::string();
  }
  return std::string(data, length);
}

void SetFurtherLabel(OmOutputPart& part, const std::string& text) {
  if (auto* label = dynamic_cast<OmStringCell*>(part.Label())) label->setFurtherText(text);
}

}  // namespace

OmChart* OmProcedureFactory::ChartXmlMessage(int index, int type, int subtype, const char* data,
                                             unsigned length) {
  Data& my = *_my;
  my.CheckOpen("ChartXmlMessage");
  OmChart*& chart = Entry(my._charts, index, "ChartXmlMessage");
  const std::string text = Text(data, length, "ChartXmlMessage");

  if (type == kCreate) {
    const std::int64_t id = my._objectCount;
    my._objectCount = std::int64_t(std::uint64_t(my._objectCount) + 1);
    // An earlier chart at this index stays in the tree; later content goes to the new one.
    chart = my.AddObject(std::make_unique<OmChart>(OmStringCell(text, false), my._codePage, id));
    return nullptr;
  }
  if (chart == nullptr) return nullptr;
  if (type == kFurtherLabel) {
    // The label belongs to the outline, which shows even a chart that OMS left out.
    SetFurtherLabel(*chart, text);
    return nullptr;
  }
  const bool kept = chart->_keep != 0;
  switch (type) {
    case kAuxiliaryData:
      // Passed as a terminated copy: the stream's bytes carry no terminator.
      return kept ? chart->setAuxiliaryData(text.c_str()) : chart;
    case kChartXML:        if (kept) chart->addChartXML(text.data(), text.size()); break;
    case kChartXMLLength:  if (kept) chart->setChartXMLLength(length); break;
    case kDataLength:      if (kept) chart->setDataLength(length); break;
    case kCSVFileContent:  if (kept) chart->addCSVFileContent(text.data(), text.size()); break;
    case kStyleXML:
      if (kept) {
        chart->addStyleXML(text.data(), text.size());
        chart->setStyleSubtype(subtype);
      }
      break;
    case kDataXML:            if (kept) chart->addDataXML(text.data(), text.size()); break;
    case kMapInfo:            if (kept) chart->SetMapInfo(text.data(), text.size()); break;
    case kCSVFileName:        if (kept) chart->addCSVFileName(text.data(), text.size()); break;
    case kTemplateXML:        if (kept) chart->addTemplateXML(text.data(), text.size()); break;
    case kVizJSONTemplate:    if (kept) chart->setVizJSONTemplate(text.data(), text.size()); break;
    case kGeoJSONFileName:    if (kept) chart->addGeoJSONFileName(text.data(), text.size()); break;
    case kGeoJSONFileContent: if (kept) chart->addGeoJSONFileContent(text.data(), text.size()); break;
    case kOptions:            if (kept) chart->setOptions(text); break;
    default: break;  // 5, 16 to 18 and anything above 19 carry nothing for a chart
  }
  return nullptr;
}

void OmProcedureFactory::InteractiveJSONMessage(int index, int type, const char* data,
                                                unsigned length) {
  Data& my = *_my;
  my.CheckOpen("InteractiveJSONMessage");
  OmInteractive*& object = Entry(my._interactives, index, "InteractiveJSONMessage");
  const std::string text = Text(data, length, "InteractiveJSONMessage");

  if (type == kCreate) {
    // Charts and interactive objects draw their ids from one counter.
    const std::int64_t id = my._objectCount;
    my._objectCount = std::int64_t(std::uint64_t(my._objectCount) + 1);
    object = my.AddObject(
        std::make_unique<OmInteractive>(OmStringCell(text, false), my._codePage, id));
    return;
  }
  if (object == nullptr) return;
  if (type == kFurtherLabel) {
    SetFurtherLabel(*object, text);
    return;
  }
  if (object->_keep == 0) return;
  switch (type) {
    case kGeoJSONFileName:    object->addGeoJSONFileName(text.data(), text.size()); break;
    case kGeoJSONFileContent: object->addGeoJSONFileContent(text.data(), text.size()); break;
    case kInteractiveJSON:    object->setInteractiveJSON(text.data(), text.size()); break;
    case kProcedureName:      object->setProcedureName(text); break;
    case kJSONPath:           object->setJSONPath(text); break;
    case kOptions:            object->setOptions(text); break;
    default: break;
  }
}

void OmProcedureFactory::TreeXmlMessage(int index, int type, const char* data, unsigned length,
                                        unsigned extra) {
  Data& my = *_my;
  my.CheckOpen("TreeXmlMessage");
  OmAnswerTree*& tree = Entry(my._answerTrees, index, "TreeXmlMessage");
  const std::string text = Text(data, length, "TreeXmlMessage");

  if (type == kTreeCreate) {
    std::string label;
    NuvaroMBU8ToGeneric(label, text);
    tree = my.AddObject(std::make_unique<OmAnswerTree>(OmStringCell(label, true), my._codePage));
    return;
  }
  if (tree == nullptr || tree->_keep == 0) return;
  switch (type) {
    case kTreeFlags:     tree->setTreeFlags(extra); break;
    case kTreeXML:       tree->addTreeXML(text.data(), text.size()); break;
    case kNodeXML:       tree->addNodeXML(text.data(), text.size(), extra); break;
    case kTreeStyleXML:  tree->addStyleXML(text.data(), text.size()); break;
    case kTableXML:      tree->addTableXML(text.data(), text.size()); break;
    case kTreeFinish:    tree->Finish(); break;
    default: break;  // negative types and types above 6 carry nothing
  }
}

void OmProcedureFactory::ModelPMMLMessage(const void* payload, unsigned length) {
  Data& my = *_my;
  my.CheckOpen("ModelPMMLMessage");
  if (payload == nullptr && length > 0) {
    throw OMSException("OmProcedureFactory::ModelPMMLMessage -- payload == nullptr",
                       double(length));
  }
  if (my._modelMessages == nullptr) my._modelMessages = std::make_unique<MessageHandler>();
  if (!my._modelMessages->receiveMessage(payload, length)) return;

  // Complete: the handler goes with this call, whether or not its parts read cleanly.
  std::unique_ptr<MessageHandler> message = std::move(my._modelMessages);
  OmModel* model = nullptr;
  unsigned kind = 0;
  bool flag = false;
  unsigned extra = 0;
  std::string text;
  while (message->getNextPart(kind, flag, extra, text)) {
    switch (kind) {
      case kModelCreate:
        model = my.AddObject(std::make_unique<OmModel>(OmStringCell(text, false)));
        my._models.push_back(model);
        break;
      // Model content is stored whether or not OMS keeps the model.
      case kPMML:          if (model) model->addPMML(text.data(), text.size()); break;
      case kStatisticsXML: if (model) model->addStatisticsXML(text.data(), text.size()); break;
      case kViewerXML:     if (model) model->addViewerXML(text.data(), text.size()); break;
      case kAuxiliaryXML:  if (model) model->addAuxiliaryXML(text.data(), text.size()); break;
      case kModelFurtherLabel:
        if (model) SetFurtherLabel(*model, text);
        break;
      default: break;
    }
  }
}

void OmProcedureFactory::GraphicsMessage(bool, const char*, unsigned long, bool) {}
