// Every message that the writer puts in a single record, with the fields its payload must hold,
// shared by the writer tests (layouts) and the describer tests (one record of each kind).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"
#include "tests/platform/stream/PayloadFields.h"

namespace MessageLayouts {

// One field expected in a payload: an integer of a given width, a double or a text.
struct Field {
  enum Kind { kByte, kInt16, kInt32, kFixed32, kInt64, kDouble, kText } kind;
  std::size_t offset;
  std::int64_t integer = 0;
  double number = 0;
  std::string text = {};
};
inline Field B(std::size_t offset, std::int64_t v) { return {Field::kByte, offset, v}; }
inline Field I16(std::size_t offset, std::int64_t v) { return {Field::kInt16, offset, v}; }
inline Field I32(std::size_t offset, std::int64_t v) { return {Field::kInt32, offset, v}; }
// An int32 the factory never swaps: little-endian in either order.
inline Field Fixed32(std::size_t offset, std::int64_t v) { return {Field::kFixed32, offset, v}; }
inline Field I64(std::size_t offset, std::int64_t v) { return {Field::kInt64, offset, v}; }
inline Field D(std::size_t offset, double v) { return {Field::kDouble, offset, 0, v}; }
inline Field T(std::size_t offset, std::string v) {
  return {Field::kText, offset, 0, 0, std::move(v)};
}

// A message written alone: its code, its payload size and the fields at their offsets. A TCID,
// when there is one, is the first byte and the three bytes after it are reserved.
struct Layout {
  const char* name;
  std::function<void(OmStreamWriter&)> write;
  MessageCode code;
  std::size_t size;
  std::vector<Field> fields;
  int tcid = -1;
};

inline void ExpectField(const PayloadFields& payload, const Field& field) {
  SCOPED_TRACE(testing::Message() << "field at offset " << field.offset);
  switch (field.kind) {
  case Field::kByte: EXPECT_EQ(payload.Byte(field.offset), field.integer); break;
  case Field::kInt16: EXPECT_EQ(payload.Int16(field.offset), field.integer); break;
  case Field::kInt32: EXPECT_EQ(payload.Int32(field.offset), field.integer); break;
  case Field::kFixed32: EXPECT_EQ(payload.FixedInt32(field.offset), field.integer); break;
  case Field::kInt64: EXPECT_EQ(payload.Int64(field.offset), field.integer); break;
  case Field::kDouble: EXPECT_EQ(payload.Double(field.offset), field.number); break;
  case Field::kText:
    EXPECT_EQ(payload.Text(field.offset, field.text.size()), field.text);
    break;
  }
}

inline const std::vector<Layout>& SingleRecord() {
  using W = OmStreamWriter;
  using C = MessageCode;
  static const std::string settings = "procedure=Descriptives\nlanguage=de\n";
  static const std::string withNul("line with \0 inside", 18);
  static const std::string zeros16(16, '\0');
  // clang-format off
  static const std::vector<Layout> layouts = {
    {"ConversionPair", [](W& w) { w.ConversionPair(-3, 70000); }, C::IPC_CONVERSION_PAIR, 8, {I32(0, -3), I32(4, 70000)}},
    {"Integer", [](W& w) { w.Integer(12, -42, 0x050802); }, C::IPC_INTEGER, 12, {I32(0, -42), I32(4, 0x050802), I32(8, 12)}},
    {"BeginComposite", [](W& w) { w.BeginComposite(5, 6); }, C::IPC_BEGIN_COMPOSITE, 8, {I32(0, 5), I32(4, 6)}},
    {"CompositeArgument", [](W& w) { w.CompositeArgument(9); }, C::IPC_COMPOSITE_ARGUMENT, 4, {I32(0, 9)}},
    {"TableColors", [](W& w) { w.TableColors(0x102030, 0x405060); }, C::IPC_TABLE_COLORS, 8, {I32(0, 0x102030), I32(4, 0x405060)}},
    {"RequiredTable", [](W& w) { w.RequiredTable(1, 2); }, C::IPC_REQUIRED_TABLE, 8, {I32(0, 1), I32(4, 2)}},
    {"ScratchTable", [](W& w) { w.ScratchTable(33); }, C::IPC_SCRATCH_TABLE, 4, {I32(0, 33)}},
    {"Category", [](W& w) { w.Category(200, 11, 12); }, C::IPC_CATEGORY, 12, {I32(4, 11), I32(8, 12)}, 200},
    {"BeginGroup", [](W& w) { w.BeginGroup(3, 13, 14); }, C::IPC_BEGIN_GROUP, 12, {I32(4, 13), I32(8, 14)}, 3},
    {"EndGroup", [](W& w) { w.EndGroup(3, 14); }, C::IPC_END_GROUP, 8, {I32(4, 14)}, 3},
    {"CellDimension", [](W& w) { w.CellDimension(4, 15); }, C::IPC_CELL_DIMENSION, 8, {I32(4, 15)}, 4},
    {"Cell", [](W& w) { w.Cell(255, 16, 17); }, C::IPC_CELL, 12, {I32(4, 16), I32(8, 17)}, 255},
    {"CellCategory", [](W& w) { w.CellCategory(0, 18); }, C::IPC_CELL_CATEGORY, 8, {I32(4, 18)}, 0},
    {"BeginNode", [](W& w) { w.BeginNode(19); }, C::IPC_BEGIN_NODE, 4, {I32(0, 19)}},
    {"Annotate", [](W& w) { w.Annotate(3, 20); }, C::IPC_ANNOTATE, 8, {I32(0, 3), I32(4, 20)}},
    {"SplitCategory", [](W& w) { w.SplitCategory(21, 22); }, C::IPC_SPLIT_CATEGORY, 8, {I32(0, 21), I32(4, 22)}},
    {"Dimension", [](W& w) { w.Dimension(6, 23); }, C::IPC_DIMENSION, 8, {I32(4, 23)}, 6},
    {"ScratchCategory", [](W& w) { w.ScratchCategory(1, 2); }, C::IPC_SCRATCH_CATEGORY, 8, {I32(0, 1), I32(4, 2)}},
    {"PlaceDimension", [](W& w) { w.PlaceDimension(7, 24, 3, 1, 1, 0); }, C::IPC_PLACE_DIMENSION, 24, {I32(4, 24), I32(8, 3), I32(12, 1), I32(16, 1), I32(20, 0)}, 7},
    {"AnnotateMarked", [](W& w) { w.AnnotateMarked(2, 25, 26); }, C::IPC_ANNOTATE_MARKED, 12, {I32(0, 2), I32(4, 25), I32(8, 26)}},
    {"DiscardCell", [](W& w) { w.DiscardCell(27); }, C::IPC_DISCARD_CELL, 4, {I32(0, 27)}},
    {"CopyCell", [](W& w) { w.CopyCell(28, 29); }, C::IPC_COPY_CELL, 8, {I32(0, 28), I32(4, 29)}},
    {"SortGroup", [](W& w) { w.SortGroup(8, -1); }, C::IPC_SORT_GROUP, 8, {I32(4, -1)}, 8},
    {"SortDimension", [](W& w) { w.SortDimension(8, 2); }, C::IPC_SORT_DIMENSION, 8, {I32(4, 2)}, 8},
    {"SortUngroup", [](W& w) { w.SortUngroup(8, 1); }, C::IPC_SORT_UNGROUP, 8, {I32(4, 1)}, 8},
    {"BeginTextBlock", [](W& w) { w.BeginTextBlock(30); }, C::IPC_BEGIN_TEXT_BLOCK, 4, {I32(0, 30)}},
    {"CornerText", [](W& w) { w.CornerText(9, 31); }, C::IPC_CORNER_TEXT, 8, {I32(4, 31)}, 9},
    {"TableProperty", [](W& w) { w.TableProperty(10, 5, 32); }, C::IPC_TABLE_PROPERTY, 12, {I32(4, 5), I32(8, 32)}, 10},
    {"ColumnWidth", [](W& w) { w.ColumnWidth(11, 3, 40, 400); }, C::IPC_COLUMN_WIDTH, 16, {I32(4, 3), I32(8, 40), I32(12, 400)}, 11},
    {"Marker", [](W& w) { w.Marker(34); }, C::IPC_MARKER, 12, {I32(8, 34)}},
    // TCID-only messages and the swap flag are one byte.
    {"EndTable", [](W& w) { w.EndTable(12); }, C::IPC_END_TABLE, 1, {B(0, 12)}},
    {"Ungroup", [](W& w) { w.Ungroup(13); }, C::IPC_UNGROUP, 1, {B(0, 13)}},
    {"ClearTableFlag", [](W& w) { w.ClearTableFlag(14); }, C::IPC_CLEAR_TABLE_FLAG, 1, {B(0, 14)}},
    {"SwapBytes on", [](W& w) { w.SwapBytes(true); }, C::IPC_SWAP_BYTES, 1, {B(0, 1)}},
    {"SwapBytes off", [](W& w) { w.SwapBytes(false); }, C::IPC_SWAP_BYTES, 1, {B(0, 0)}},
    {"ByteOrderProbe", [](W& w) { w.ByteOrderProbe(); }, C::IPC_BYTE_ORDER, 4, {I32(0, 1)}},
    {"Number", [](W& w) { w.Number(7, -1.7976931348623157e308, 0x050802); }, C::IPC_NUMBER, 16, {D(0, -1.7976931348623157e308), I32(8, 0x050802), I32(12, 7)}},
    // TCID and flag stay single bytes.
    {"BeginTable", [](W& w) { w.BeginTable(250, 1, 2, true); }, C::IPC_BEGIN_TABLE, 13, {B(0, 250), I32(4, 1), I32(8, 2), B(12, 1)}},
    {"BeginProcedure", [](W& w) { w.BeginProcedure(0x0102030405060708LL, settings); }, C::IPC_BEGIN_PROCEDURE, 12 + settings.size(), {I64(0, 0x0102030405060708LL), I32(8, static_cast<std::int64_t>(settings.size())), T(12, settings)}},
    // Texts are a length, then their bytes without a terminator.
    {"PrintLine", [](W& w) { w.PrintLine(3, withNul); }, C::IPC_PRINT_LINE, 26, {I32(0, 3), I32(4, 18), T(8, withNul)}},
    {"LogLine", [](W& w) { w.LogLine(-1, "log"); }, C::IPC_LOG_LINE, 11, {I32(0, -1), I32(4, 3), T(8, "log")}},
    {"OutlineText", [](W& w) { w.OutlineText("Outline"); }, C::IPC_OUTLINE_TEXT, 11, {I32(0, 7), T(4, "Outline")}},
    {"MiscProperty", [](W& w) { w.MiscProperty(7, "merged"); }, C::IPC_MISC_PROPERTY, 14, {I32(0, 7), I32(4, 6), T(8, "merged")}},
    // One byte separates title and subtitle.
    {"PageTitle", [](W& w) { w.PageTitle("Title", "Sub"); }, C::IPC_PAGE_TITLE, 17, {I32(0, 5), I32(4, 3), T(8, "Title"), T(14, "Sub")}},
    {"BackgroundColor", [](W& w) { w.BackgroundColor("#FF0000"); }, C::IPC_BACKGROUND_COLOR, 19, {I32(4, 7), T(12, "#FF0000")}},
    {"TextColor", [](W& w) { w.TextColor("blue"); }, C::IPC_TEXT_COLOR, 16, {I32(4, 4), T(12, "blue")}},
    {"Variable", [](W& w) { w.Variable(40, 2, "age", "Age in years"); }, C::IPC_VARIABLE, 31, {I32(0, 40), I32(4, 2), I32(8, 3), I32(12, 12), T(16, "age"), T(19, "Age in years")}},
    // A numeric value has value length 0 and a double after the name.
    {"DataValue number", [](W& w) { w.DataValue(41, 0, 0x050802, "sex", "Gender", 2.0); }, C::IPC_DATA_VALUE, 39, {I32(0, 41), I32(8, 0x050802), I32(12, 3), I32(16, 6), I16(20, 0), T(22, "sex"), D(25, 2.0), T(33, "Gender")}},
    {"DataValue text", [](W& w) { w.DataValue(42, 1, 0x010A03, "city", "City", std::string_view("Bern")); }, C::IPC_DATA_VALUE, 34, {I16(20, 4), T(22, "city"), T(26, "Bern"), T(30, "City")}},
    {"ChartXml", [](W& w) { w.ChartXml(-2, 19, "<chart/>"); }, C::IPC_CHART_XML, 16, {B(0, 0xFE), B(1, 19), I32(4, 8), T(8, "<chart/>")}},
    {"TreeXml", [](W& w) { w.TreeXml(2, 1, "<tree/>", 300); }, C::IPC_TREE_XML, 23, {Fixed32(0, 2), Fixed32(4, 1), Fixed32(8, 7), Fixed32(12, 300), T(16, "<tree/>")}},
    {"InteractiveJson", [](W& w) { w.InteractiveJson(1, 16, "{}"); }, C::IPC_INTERACTIVE_JSON, 14, {I32(0, 1), I32(4, 16), I32(8, 2), T(12, "{}")}},
    {"LongStringPiece", [](W& w) { w.LongStringPiece(43, 2, "e", "f", true); }, C::IPC_LONG_STRING, 19, {I32(0, 1), I32(4, 1), I32(8, 43), I32(12, 2), B(16, 1), T(17, "ef")}},
    {"LongText", [](W& w) { w.LongText(44, "aa", "bbb", "c"); }, C::IPC_LONG_TEXT, 22, {I32(0, 2), I32(4, 3), I32(8, 1), I32(12, 44), T(16, "aabbbc")}},
    {"ConversionName", [](W& w) { w.ConversionName(9, "windows-1252"); }, C::IPC_CONVERSION_NAME, 14, {B(0, 9), B(1, 12), T(2, "windows-1252")}},
    {"OutputSetting", [](W& w) { w.OutputSetting("OLANG", "German"); }, C::IPC_OUTPUT_SETTING, 39, {T(0, zeros16), T(16, std::string("OLANG\0", 6)), T(32, std::string("German\0", 7))}},
  };
  // clang-format on
  return layouts;
}

} // namespace MessageLayouts
