// The binary record that carries OMS requests between processes: field order, byte-order
// reversal, the string limit and records that end early or carry absurd counts.
#include <algorithm>
#include <cstdint>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backend/omsopmgr/OMSColumns.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "backend/omsopmgr/OMSSelector.h"
#include "platform/errors/OMSException.h"

namespace {

// Writes record fields as a machine of this or of the other byte order would.
class RecordBuilder {
public:
  explicit RecordBuilder(bool otherByteOrder = false) : _other(otherByteOrder) {}

  RecordBuilder& Flag(bool v) { return Append(std::string(1, char(v)), false); }
  RecordBuilder& Int32(std::int32_t v) { return Number(&v, sizeof v); }
  RecordBuilder& UInt32(std::uint32_t v) { return Number(&v, sizeof v); }
  RecordBuilder& Double(double v) { return Number(&v, sizeof v); }
  RecordBuilder& String(const std::string& s) { return Append(s + '\0', false); }
  RecordBuilder& Strings(const std::vector<std::string>& list) {
    Int32(static_cast<std::int32_t>(list.size()));
    for (const std::string& s : list) String(s);
    return *this;
  }
  RecordBuilder& Selector(const std::vector<std::string>& commands,
                          const std::vector<std::string>& subtypes,
                          const std::vector<std::string>& names, const std::vector<int>& instances,
                          bool last) {
    Strings(commands).Strings(subtypes).Strings(names);
    Int32(static_cast<std::int32_t>(instances.size()));
    for (int i : instances) Int32(i);
    return Flag(last);
  }
  RecordBuilder& Column(std::int32_t axis, const std::string& token, std::int32_t number, bool all) {
    return Int32(axis).String(token).Int32(number).Flag(all);
  }
  const std::string& Bytes() const { return _bytes; }

private:
  RecordBuilder& Number(const void* p, std::size_t n) {
    return Append(std::string(static_cast<const char*>(p), n), _other);
  }
  RecordBuilder& Append(std::string bytes, bool reverse) {
    if (reverse) std::reverse(bytes.begin(), bytes.end());
    _bytes += bytes;
    return *this;
  }
  bool _other;
  std::string _bytes;
};

// The record of the request that Sample() makes.
std::string SampleRecord() {
  RecordBuilder b;
  b.Flag(false).UInt32(16 | 32);
  b.Selector({"FREQUENCIES", "DESC*"}, {"STATISTICS"}, {}, {1, 3}, true);
  b.Selector({}, {"NOTES"}, {"MEAN AGE"}, {2}, false);
  b.Int32(2).Int32(2).Column(1, "R1", 1, false).Column(2, "CALL", -100, true).Int32(0);
  b.Flag(true).Flag(false).String("Row").Flag(false).Flag(true).Int32(3).Flag(true);
  b.String("img").Double(75.5).String("75.5").Flag(true).String("tag1").Flag(true);
  return b.Bytes();
}

OMSObjectSelector Sample() {
  OMSObjectSelector r;
  r.ShowNotesTables(false);
  r.SelectType(16 | 32);
  OMSSelector in;
  in.AddCommands("Frequencies");
  in.AddCommands("Desc*");
  in.AddSubtypes("Statistics");
  in.AddInstances(1);
  in.AddInstances(3);
  in.AddLastInstance();
  r.AddIfOption(in);
  OMSSelector out;
  out.AddSubtypes("Notes");
  out.AddNames("Mean Age");
  out.AddInstances(2);
  r.AddExceptIfOption(out);
  OMSColumns columns;
  columns.AddColumn(OmParsedColumn("R1"));
  columns.AddColumn(OmParsedColumn("CALL"));
  r.SetColumn(columns);
  r.SetDestinationIsViewer(false);
  r.SetNumberedColumnName("Row", false);
  r.SetExportImages(false);
  r.SetImageFormat(3);
  r.SetImageRootName("img");
  r.SetChartSize(75.5, "75.5");
  r.SetOMSTag("tag1");
  r.SetNoWarning();
  return r;
}

std::string Written(const OMSObjectSelector& r) {
  std::ostringstream out;
  out << r;
  return out.str();
}

void Read(const std::string& bytes, OMSObjectSelector& r) {
  std::istringstream in(bytes);
  in >> r;
}

}  // namespace

TEST(OMSRecord, WritesTheFieldsInRecordOrderWithoutPaddingAndNeverReverses) {
  OMSObjectSelector r = Sample();
  EXPECT_EQ(Written(r), SampleRecord());
  r.SwapBytes(true);
  EXPECT_EQ(Written(r), SampleRecord());
}

// The writer, pinned above, writes every streamed field back: what it writes of a request read
// from the record is the record again only when every field was read into its place.
TEST(OMSRecord, RoundTripKeepsEveryStreamedField) {
  OMSObjectSelector copy;
  Read(SampleRecord(), copy);
  EXPECT_EQ(Written(copy), SampleRecord());
}

TEST(OMSRecord, ReadingLeavesTheFieldsOutsideTheRecordAlone) {
  OMSObjectSelector reader;
  reader.SetTableStyle("Compact");
  reader.SetPivotingAllowed(false);
  reader.addURL("Home", "http://example.invalid/");
  reader.SetChartFormat(OMSObjectSelector::kImageSvg);
  reader.SetNumberedColumnName("Old", true);
  reader.SelectType(1);
  reader.SetInfoSelection();
  Read(SampleRecord(), reader);
  EXPECT_EQ(reader.GetTableStyle(), "Compact");
  EXPECT_FALSE(reader.GetPivitingAllowed());
  EXPECT_EQ(reader.getURLs().size(), 1u);
  EXPECT_EQ(reader.GetChartFormat(), OMSObjectSelector::kImageSvg);
  EXPECT_TRUE(reader.IsNumberedColumnNameDefault());  // the flag is not streamed
  EXPECT_EQ(reader.GetNumberedColumnName(), "Row");   // the name is
  EXPECT_EQ(reader.GetInfoSelection(), 1u);
  // The notes choice is streamed but its "specified" mark is not: the reader's stays unset.
  EXPECT_FALSE(reader.ShowNotesTables());
  EXPECT_FALSE(reader.IsObjectSelected(16, "Frequencies", "Notes", "Notes"));
  reader.ShowNotesTables(true);  // an explicit choice decides for notes tables, not the types
  EXPECT_TRUE(reader.IsObjectSelected(16, "Frequencies", "Notes", "Notes"));
}

TEST(OMSRecord, NegativeOrHugeCountsAreExceptionsNotAllocations) {
  OMSSelector s;
  std::istringstream negative(RecordBuilder().Int32(-1).Bytes());
  EXPECT_THAT([&] { negative >> s; }, testing::ThrowsMessage<OMSException>(testing::HasSubstr(
                                         "OMSSelector::operator>> -- count < 0 in commands, value 1 == -1")));
  std::istringstream huge(RecordBuilder().Strings({}).Strings({}).Strings({}).Int32(0x7FFFFFFF)
                              .Int32(1).Bytes());
  EXPECT_THROW(huge >> s, OMSException);
  OMSColumns c;
  std::istringstream columns(RecordBuilder().Int32(2).Int32(0x40000000).Bytes());
  EXPECT_THROW(columns >> c, OMSException);
}

TEST(OMSRecord, LongStringInsideAListEndsTheListAtThatEntry) {
  std::istringstream in(RecordBuilder().Strings({"A", std::string(2000, 'B'), "C"}).Bytes());
  OMSSelector s;
  in >> s;
  EXPECT_TRUE(in.fail());
  EXPECT_EQ(s.GetCommands(), (std::vector<std::string>{"A", ""}));
}

TEST(OMSRecord, StringWithAZeroByteFailsTheWriter) {
  OMSObjectSelector r;
  r.SetOMSTag(std::string("a\0b", 3));
  std::ostringstream out;
  out << r;
  EXPECT_TRUE(out.fail());
}

TEST(OMSRecord, ColumnsRecordGivesItsSwapFlagToEveryColumnRead) {
  OMSColumns columns;
  columns.SwapBytes(true);
  std::istringstream in(RecordBuilder(true)
                            .Int32(2).Int32(2).Column(3, "L2", 2, false).Column(1, "RALL", -100, true)
                            .Int32(0).Bytes());
  in >> columns;
  EXPECT_FALSE(in.fail());
  ASSERT_EQ(columns.GetSequences().size(), 2u);
  EXPECT_EQ(columns.GetSequences()[0].GetAxis(), OmParsedColumn::kLAYERS);
  EXPECT_EQ(columns.GetSequences()[0].GetNumber(), 2);
  EXPECT_TRUE(columns.HasAxisAll(OmParsedColumn::kROWS));

  OMSColumns names;
  std::istringstream nameRecord(RecordBuilder().Int32(1).Int32(0).Strings({"Statistics", "Vars"})
                                    .Bytes());
  nameRecord >> names;
  EXPECT_EQ(names.GetDimNames(), (std::vector<std::string>{"Statistics", "Vars"}));

  OmParsedColumn column("R1");  // one column as a record of its own
  std::istringstream columnRecord(RecordBuilder().Column(3, "L2", 2, false).Bytes());
  columnRecord >> column;
  EXPECT_EQ(column.GetColumnToken(), "L2");
}

