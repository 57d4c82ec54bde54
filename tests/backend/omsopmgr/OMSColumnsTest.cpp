#include "backend/omsopmgr/OMSColumns.h"

#include <gtest/gtest.h>

namespace {

struct TokenCase {
  const char* token;
  OmParsedColumn::COLUMNAXIS axis;
  int number;
  bool all;
  bool valid;
};

OMSColumns Sequence(std::initializer_list<const char*> tokens) {
  OMSColumns c;
  for (const char* t : tokens) c.AddColumn(OmParsedColumn(t));
  return c;
}

OMSColumns DimNames(std::initializer_list<const char*> names) {
  OMSColumns c;
  for (const char* n : names) c.AddColumn(std::string(n));
  return c;
}

}  // namespace

TEST(OMSColumns, SequenceTokensSetTheFormAndAnswerAxisQuestions) {
  const OMSColumns c = Sequence({"R1", "CALL"});
  EXPECT_EQ(c.GetColumnsForm(), OMSColumns::kSEQUENCE);
  EXPECT_TRUE(c.HasColumn(OmParsedColumn("r01")));
  EXPECT_FALSE(c.HasColumn(OmParsedColumn("R2")));
  EXPECT_TRUE(c.HasAxis(OmParsedColumn::kROWS));
  EXPECT_FALSE(c.HasAxis(OmParsedColumn::kLAYERS));
  EXPECT_TRUE(c.HasAxisAll(OmParsedColumn::kCOLUMNS));
  EXPECT_FALSE(c.HasAxisAll(OmParsedColumn::kROWS));
  ASSERT_EQ(c.GetSequences().size(), 2u);
  EXPECT_EQ(c.GetSequences()[1].GetColumnToken(), "CALL");
}

TEST(OMSColumns, EqualityComparesFormThenEntriesInOrder) {
  EXPECT_EQ(OMSColumns(), OMSColumns());
  EXPECT_EQ(Sequence({"R1", "C2"}), Sequence({"r01", "c2"}));
  EXPECT_NE(Sequence({"R1", "C2"}), Sequence({"C2", "R1"}));
  EXPECT_NE(Sequence({"R1"}), Sequence({"R1", "C2"}));
  EXPECT_EQ(DimNames({"Statistics"}), DimNames({"STATISTICS"}));
  EXPECT_NE(DimNames({"Statistics"}), DimNames({"Variables"}));
  EXPECT_NE(DimNames({"R1"}), Sequence({"R1"}));
  OMSColumns formOnly;
  formOnly.SetColumnsForm(OMSColumns::kSEQUENCE);
  EXPECT_NE(formOnly, OMSColumns());
}
