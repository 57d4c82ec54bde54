// The dispatcher's effect for the codes that only the sample streams took before: sort marks,
// cell and split categories, models, decision trees and interactive objects. Each case writes a
// few messages into an open procedure and checks the builder or procedure state they leave; a
// field read in the wrong byte order shows as a wrong mark, index or text.
#include <functional>

#include "SessionFixture.h"
#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"

namespace sessiontest {
namespace {

class DispatchedCodes : public BothOrdersTest {
protected:
  // The one part of type P in the open procedure.
  template <class P>
  const P& Only() {
    std::vector<P*> parts = PartsOf<P>(factory->Procedure()->Tree());
    if (parts.size() != 1) throw std::runtime_error("not exactly one such part");
    return *parts[0];
  }
};

// The data of the last content item of that name, or "(none)".
std::string ContentOf(const OmContentList& contents, const std::string& name) {
  const std::string* data = contents.Find(name);
  return data ? *data : "(none)";
}

TEST_P(DispatchedCodes, EachCodeLeavesItsMarkOnTheBuilderOrProcedure) {
  struct Case {
    const char* name;
    std::function<void()> write;  // after a procedure and table 1 are open
    std::function<void()> check;
  };
  const Case cases[] = {
      {"sort dimension marks the current dimension's root",
       [this] { writer.Dimension(1, Str("Region")); writer.SortDimension(1, 1); },
       [this] {
         EXPECT_EQ(OpenTable().Dimension(0).Root().SortMark(), 1);
         EXPECT_FALSE(OpenTable().Dimension(0).Root().UngroupMark());
       }},
      {"sort ungroup marks the open group for sorting and ungrouping",
       [this] { writer.BeginGroup(1, Str("North"), Str("Region")); writer.SortUngroup(1, 1); },
       [this] {
         const OmDimensionNode& group = *OpenTable().Dimension(0).Root().Child(0);
         EXPECT_EQ(group.Label()->Text(), "North");
         EXPECT_EQ(group.SortMark(), 1);
         EXPECT_TRUE(group.UngroupMark());
       }},
      {"cell category adds the statistic and makes it current",
       [this] {
         writer.Dimension(1, Str("Region"));
         writer.CellDimension(1, Str("Statistics"));
         writer.CellCategory(1, Str("Mean"));
         writer.Bold();
       },
       [this] {
         EXPECT_EQ(LabelAt(OpenTable(), 1), "Statistics");
         EXPECT_EQ(LabelAt(OpenTable(), 1, {0}), "Mean");
         EXPECT_TRUE(OpenTable().Dimension(1).Root().Child(0)->Label()->TextBold());
       }},
      {"split category reaches the split table only",
       [this] {
         writer.BeginTable(2, Str("Split"), Str("Descriptive Statistics"), true);
         writer.SplitCategory(Str("Gender"), Str("Female"));
       },
       [this] {
         EXPECT_EQ(LabelAt(OpenTable(1), 0), "Gender");
         EXPECT_EQ(LabelAt(OpenTable(1), 0, {0}), "Female");
         EXPECT_EQ(OpenTable(0).NDimensions(), 0);
       }},
      {"a model of two parts is made with its content",
       [this] {
         writer.ModelPMML({{0, 0, 0, "Model"}, {1, 0, 0, "<PMML/>"}, {2, 1, 0, "<stats/>"}}, 2);
       },
       [this] {
         const OmModel& model = Only<OmModel>();
         EXPECT_EQ(model.LabelText(), "Model");
         EXPECT_EQ(ContentOf(model.Contents(), "addPMML"), "<PMML/>");
         EXPECT_EQ(ContentOf(model.Contents(), "addStatisticsXML"), "<stats/>");
       }},
      {"a tree's index, type and extra are read as sent, never swapped",
       [this] {
         writer.TreeXml(3, 1, "Decision tree");
         writer.TreeXml(3, 0, "", 0x0102);
         writer.TreeXml(3, 3, "<node/>", 5);
       },
       [this] {
         const OmAnswerTree& tree = Only<OmAnswerTree>();
         EXPECT_EQ(tree.LabelText(), "Decision tree");
         EXPECT_EQ(ContentOf(tree.Contents(), "setTreeFlags"), "258");
         EXPECT_EQ(ContentOf(tree.Contents(), "addNodeXML:5"), "<node/>");
       }},
      {"an interactive object is made at its index and given its JSON",
       [this] {
         writer.InteractiveJson(2, 0, "Map");
         writer.InteractiveJson(2, 16, "{}");
         writer.InteractiveJson(2, 17, "Graph");
       },
       [this] {
         const OmInteractive& object = Only<OmInteractive>();
         EXPECT_EQ(object.LabelText(), "Map");
         EXPECT_EQ(ContentOf(object.Contents(), "setInteractiveJSON"), "{}");
         EXPECT_EQ(ContentOf(object.Contents(), "setProcedureName"), "Graph");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    UseOrder(GetParam());
    BeginProcedure();
    BeginTable(1, "Table");
    c.write();
    Feed();
    ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
    ASSERT_NE(factory->Procedure(), nullptr);
    c.check();
  }
}

TEST_P(DispatchedCodes, ByteOrderProbeSetsSwappingForTheSendersOrder) {
  EXPECT_FALSE(factory->SwapBytes());
  Feed();
  EXPECT_EQ(factory->SwapBytes(), GetParam() == ByteOrder::BigEndian);
}

OM_BOTH_ORDERS(DispatchedCodes);

}  // namespace
}  // namespace sessiontest
