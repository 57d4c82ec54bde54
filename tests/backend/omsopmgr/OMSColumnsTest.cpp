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

// Columns given as Column entries: OmParsedColumn tokens (a sequence) or std::string dimension names.
template <class Column>
OMSColumns Of(std::initializer_list<const char*> entries) {
  OMSColumns c;
  for (const char* e : entries) c.AddColumn(Column(e));
  return c;
}
const auto Sequence = Of<OmParsedColumn>;
const auto DimNames = Of<std::string>;

}  // namespace

TEST(OmParsedColumn, ParsesAxisLetterAndNumberOrAll) {
  using C = OmParsedColumn;
  const TokenCase cases[] = {
      {"R1", C::kROWS, 1, false, true},       {"c2", C::kCOLUMNS, 2, false, true},
      {"L3", C::kLAYERS, 3, false, true},     {"C10", C::kCOLUMNS, 10, false, true},
      {"C010", C::kCOLUMNS, 10, false, true}, {"RALL", C::kROWS, -100, true, true},
      {"Rall", C::kROWS, -100, true, true},   {"rall", C::kROWS, -100, true, true},
      {"lAlL", C::kLAYERS, -100, true, true}, {"R0", C::kROWS, -1, false, false},
      {"R1.5", C::kROWS, -1, false, false},   {"R1A", C::kROWS, -1, false, false},
      {"RC1", C::kNOAXIS, -1, false, false},  {"X1", C::kNOAXIS, -1, false, false},
      {"", C::kNOAXIS, -1, false, false},     {"RCL", C::kNOAXIS, -1, false, false},
      {"1", C::kNOAXIS, -1, false, false},    {"R99999999999", C::kROWS, -1, false, false},
  };
  for (const TokenCase& c : cases) {
    const OmParsedColumn column(c.token);
    EXPECT_EQ(column.GetAxis(), c.axis) << c.token;
    EXPECT_EQ(column.GetNumber(), c.number) << c.token;
    EXPECT_EQ(column.IsAll(), c.all) << c.token;
    EXPECT_EQ(column.IsValidToken(), c.valid) << c.token;
    EXPECT_EQ(column.GetColumnToken(), c.token);
  }
}

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

TEST(OMSColumns, DimensionNamesAreComparedWithoutRegardToCase) {
  const OMSColumns c = DimNames({"Statistics", "Größe"});
  EXPECT_EQ(c.GetColumnsForm(), OMSColumns::kDIMNAMES);
  EXPECT_TRUE(c.HasColumn(std::string("STATISTICS")));
  EXPECT_TRUE(c.HasColumn(std::string("GRÖSSE")));
  EXPECT_FALSE(c.HasColumn(std::string("Variables")));
  EXPECT_EQ(c.GetDimNames(), (std::vector<std::string>{"Statistics", "Größe"}));
  EXPECT_FALSE(c.HasAxisAll(OmParsedColumn::kROWS));
}

TEST(OMSColumns, EqualityComparesFormThenEntriesInOrder) {
  EXPECT_EQ(OMSColumns(), OMSColumns());
  EXPECT_EQ(Sequence({"R1", "C2"}), Sequence({"r01", "c2"}));
  EXPECT_NE(Sequence({"R1", "C2"}), Sequence({"C2", "R1"}));
  EXPECT_NE(Sequence({"R1"}), Sequence({"R1", "C2"}));
  EXPECT_EQ(DimNames({"Statistics"}), DimNames({"STATISTICS"}));
  EXPECT_NE(DimNames({"Statistics"}), DimNames({"Variables"}));
  EXPECT_NE(DimNames({"Statistics"}), DimNames({"Statistics", "Variables"}));
  EXPECT_NE(DimNames({"R1"}), Sequence({"R1"}));
  OMSColumns formOnly;
  formOnly.SetColumnsForm(OMSColumns::kSEQUENCE);
  EXPECT_NE(formOnly, OMSColumns());
}

