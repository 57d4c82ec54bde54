// OmProcedureFactory: chart, interactive-object, tree and model messages.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "tests/backend/omfactory/procedure/ProcedureFixture.h"

namespace {

using namespace proctest;

using ProcedureObjectsTest = ProcedureTest;

// The names of the content operations an object received, in order.
std::vector<std::string> Received(const OmContentList& contents) {
  std::vector<std::string> names;
  for (const auto& item : contents.Items()) names.push_back(item.name);
  return names;
}

std::string FurtherText(const OmOutputPart& part) {
  auto* label = dynamic_cast<OmStringCell*>(part.Label());
  return label ? label->FurtherText() : std::string("<not a string cell>");
}

void Chart(OmProcedureFactory& proc, int type, const std::string& data, int subtype = 0) {
  proc.ChartXmlMessage(1, type, subtype, data.data(), unsigned(data.size()));
}

// ---- charts ---------------------------------------------------------------------------------

struct ChartContentCase {
  int type;
  std::vector<std::string> operations;
};

class ChartContentTest : public ProcedureTest,
                         public ::testing::WithParamInterface<ChartContentCase> {};

TEST_P(ChartContentTest, EachContentTypeReachesItsOwnOperation) {
  auto proc = Begin("Graph");
  Chart(*proc, 0, "Chart");
  Chart(*proc, GetParam().type, "payload", 5);
  EXPECT_EQ(Received(PartsOf<OmChart>(proc->Tree()).at(0)->Contents()), GetParam().operations)
      << "type " << GetParam().type;
}

INSTANTIATE_TEST_SUITE_P(
    Types, ChartContentTest,
    ::testing::Values(
        ChartContentCase{1, {"addChartXML"}}, ChartContentCase{2, {"setChartXMLLength"}},
        ChartContentCase{3, {"setAuxiliaryData"}}, ChartContentCase{4, {"setDataLength"}},
        ChartContentCase{6, {"addCSVFileContent"}},
        ChartContentCase{7, {"addStyleXML", "setStyleSubtype"}},
        ChartContentCase{8, {"addDataXML"}}, ChartContentCase{10, {"SetMapInfo"}},
        ChartContentCase{11, {"addCSVFileName"}}, ChartContentCase{12, {"addTemplateXML"}},
        ChartContentCase{13, {"setVizJSONTemplate"}},
        ChartContentCase{14, {"addGeoJSONFileName"}},
        ChartContentCase{15, {"addGeoJSONFileContent"}}, ChartContentCase{19, {"setOptions"}},
        // Types that carry nothing for a chart.
        ChartContentCase{5, {}}, ChartContentCase{16, {}}, ChartContentCase{17, {}},
        ChartContentCase{18, {}}, ChartContentCase{20, {}}, ChartContentCase{-1, {}}));

TEST_F(ProcedureObjectsTest, ObjectIndexOutsideTheProceduresIdBlockIsRefused) {
  auto proc = Begin("Graph");
  EXPECT_THROW(proc->ChartXmlMessage(-1, 0, 0, "c", 1), OMSException);
  EXPECT_THROW(proc->InteractiveJSONMessage(1 << 20, 0, "i", 1), OMSException);
  EXPECT_THROW(proc->TreeXmlMessage(-5, 1, "t", 1, 0), OMSException);
  EXPECT_THROW(proc->ChartXmlMessage(1, 1, 0, nullptr, 4), OMSException);
  EXPECT_EQ(proc->Tree().Size(), 2u);
}

// ---- interactive objects --------------------------------------------------------------------

TEST_F(ProcedureObjectsTest, InteractiveContentTypesReachTheirSetters) {
  auto proc = Begin("Graph");
  proc->InteractiveJSONMessage(3, 0, "Map", 3);
  const std::vector<std::pair<int, std::string>> messages = {
      {14, "file.geojson"}, {15, "{}"},   {16, "{\"a\":1}"}, {17, "GRAPH"},
      {18, "$.x"},          {19, "o=1"},  {1, "ignored"},   {6, "ignored"}, {13, "ignored"}};
  for (const auto& [type, data] : messages) {
    proc->InteractiveJSONMessage(3, type, data.data(), unsigned(data.size()));
  }
  OmInteractive* object = PartsOf<OmInteractive>(proc->Tree()).at(0);
  EXPECT_EQ(Received(object->Contents()).size(), 6u);
  EXPECT_EQ(*object->Contents().Find("addGeoJSONFileName"), "file.geojson");
  EXPECT_EQ(*object->Contents().Find("addGeoJSONFileContent"), "{}");
  EXPECT_EQ(*object->Contents().Find("setInteractiveJSON"), "{\"a\":1}");
  EXPECT_EQ(*object->Contents().Find("setProcedureName"), "GRAPH");
  EXPECT_EQ(*object->Contents().Find("setJSONPath"), "$.x");
  EXPECT_EQ(*object->Contents().Find("setOptions"), "o=1");
}

TEST_F(ProcedureObjectsTest, ExcludedInteractiveObjectKeepsOnlyItsLabelsFurtherText) {
  _requests.push_back(Request(AllTypesBut(OMSObjectSelector::kModels)));
  auto proc = Begin("Graph");
  proc->InteractiveJSONMessage(1, 0, "Map", 3);
  proc->InteractiveJSONMessage(1, 16, "{}", 2);
  proc->InteractiveJSONMessage(1, 9, "more", 4);
  OmInteractive* object = PartsOf<OmInteractive>(proc->Tree()).at(0);
  EXPECT_EQ(object->_keep, 0);
  EXPECT_TRUE(object->Contents().Items().empty());
  EXPECT_EQ(FurtherText(*object), "more");
}

// ---- trees ----------------------------------------------------------------------------------

TEST_F(ProcedureObjectsTest, TreeTypesReachTheTreesOperationsInOrder) {
  auto proc = Begin("Tree");
  proc->TreeXmlMessage(0, 1, "Decision Tree", 13, 0);
  proc->TreeXmlMessage(0, 0, nullptr, 0, 7);
  proc->TreeXmlMessage(0, 2, "<tree/>", 7, 0);
  proc->TreeXmlMessage(0, 3, "<node/>", 7, 4);
  proc->TreeXmlMessage(0, 4, "<style/>", 8, 0);
  proc->TreeXmlMessage(0, 5, "<table/>", 8, 0);
  proc->TreeXmlMessage(0, 7, "<none/>", 7, 0);
  proc->TreeXmlMessage(0, 6, nullptr, 0, 0);
  OmAnswerTree* tree = PartsOf<OmAnswerTree>(proc->Tree()).at(0);
  EXPECT_EQ(Received(tree->Contents()),
            (std::vector<std::string>{"setTreeFlags", "addTreeXML", "addNodeXML:4", "addStyleXML",
                                      "addTableXML"}));
  EXPECT_EQ(*tree->Contents().Find("setTreeFlags"), "7");
  EXPECT_EQ(*tree->Contents().Find("addNodeXML:4"), "<node/>");
  EXPECT_TRUE(tree->IsFinished());
}

// ---- models ---------------------------------------------------------------------------------

// A model message body: items of kind, flag, extra, text.
class ModelBody {
public:
  ModelBody& Item(std::uint32_t kind, const std::string& text) {
    U32(kind);
    _bytes.push_back('\0');  // flag
    U32(0);                  // extra
    U32(std::uint32_t(text.size()));
    _bytes += text;
    return *this;
  }
  // The body cut into `count` parts of message `id`, each a payload of its own.
  std::vector<std::string> Parts(std::uint32_t id, std::uint32_t count) const {
    std::vector<std::string> parts;
    const std::size_t share = (_bytes.size() + count - 1) / count;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::string part = Header(id, i, count);
      const std::size_t from = std::min(_bytes.size(), i * share);
      part += _bytes.substr(from, share);
      parts.push_back(part);
    }
    return parts;
  }

private:
  void U32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) _bytes.push_back(char((v >> (8 * i)) & 0xFF));
  }
  static std::string Header(std::uint32_t id, std::uint32_t index, std::uint32_t count) {
    std::string header;
    for (std::uint32_t v : {id, index, count}) {
      for (int i = 0; i < 4; ++i) header.push_back(char((v >> (8 * i)) & 0xFF));
    }
    return header;
  }
  std::string _bytes;
};

void SendModel(OmProcedureFactory& proc, const std::string& part) {
  proc.ModelPMMLMessage(part.data(), unsigned(part.size()));
}

TEST_F(ProcedureObjectsTest, ModelMessageOverThreeCallsCreatesItsModelsOnTheThird) {
  auto proc = Begin("Regression");
  ModelBody body;
  body.Item(0, "Linear model").Item(1, "<PMML/>").Item(2, "<stats/>").Item(5, "further")
      .Item(0, "Second model").Item(3, "<viewer/>").Item(4, "<aux/>");
  const auto parts = body.Parts(77, 3);
  SendModel(*proc, parts[0]);
  SendModel(*proc, parts[1]);
  EXPECT_TRUE(PartsOf<OmModel>(proc->Tree()).empty());
  SendModel(*proc, parts[2]);
  auto models = PartsOf<OmModel>(proc->Tree());
  ASSERT_EQ(models.size(), 2u);
  EXPECT_EQ(models[0]->LabelText(), "Linear model");
  EXPECT_EQ(Received(models[0]->Contents()),
            (std::vector<std::string>{"addPMML", "addStatisticsXML"}));
  EXPECT_EQ(*models[0]->Contents().Find("addPMML"), "<PMML/>");
  EXPECT_EQ(FurtherText(*models[0]), "further");
  EXPECT_EQ(Received(models[1]->Contents()),
            (std::vector<std::string>{"addViewerXML", "addAuxiliaryXML"}));
  EXPECT_FALSE(dynamic_cast<OmStringCell&>(*models[1]->Label()).Translatable());
}

}  // namespace
