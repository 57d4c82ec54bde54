// Builds message streams: one method per message code, with typed fields, writing each payload's
// exact layout in the sender's byte order. Recorders, the example generator and every test that
// feeds the factory use it; the records stay in memory until saved as a stream file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/messages/MessageParts.h"
#include "platform/stream/OmStreamRecord.h"

class SvrBootstrapSpecs;

class OmStreamWriter {
public:
  // The byte order of the sending procedure. Under BigEndian every numeric field that the factory
  // swaps is written most significant byte first; fields it never swaps (the byte-order probe
  // aside, which is the integer 1 in the sender's order) stay little-endian.
  enum class ByteOrder { LittleEndian, BigEndian };

  // The longest IPC_STRING piece that ends a string; longer ones are continued.
  static constexpr std::size_t kStringChunkLimit = 32766;

  // Each message method is named after its code: BeginTable writes IPC_BEGIN_TABLE.
  explicit OmStreamWriter(ByteOrder order = ByteOrder::LittleEndian);
  OmStreamWriter(const OmStreamWriter& other);
  OmStreamWriter& operator=(const OmStreamWriter& other);
  ~OmStreamWriter();

  ByteOrder Order() const;

  // Records written so far, in order.
  const std::vector<OmStreamRecord>& Records() const;
  void Clear();
  // The stream file: "OMSTREAM", version 1, flags 0, then every record (code, length, payload).
  std::vector<std::uint8_t> FileBytes() const;
  // Writes FileBytes to a file; a file that cannot be written throws OMSException.
  void Save(const std::string& path) const;

  // Any record as given, for streams that test the reader's and the factory's defences.
  void Record(std::int16_t code, std::vector<std::uint8_t> payload);
  void Record(std::int16_t code, std::string_view payload);

  // Control messages.
  // The name has at most 255 bytes.
  void ConversionName(std::uint8_t value, std::string_view name);
  // The keyword (at most 15 bytes) at offset 16, the value at 32, each zero-terminated; neither
  // may contain a zero byte.
  void OutputSetting(std::string_view keyword, std::string_view value);
  void ConversionPair(std::int32_t first, std::int32_t second);
  // The integer 1 in the sender's order.
  void ByteOrderProbe();

  // Cells.
  void Number(std::int32_t cellId, double value, std::int32_t format);
  void Integer(std::int32_t cellId, std::int32_t value, std::int32_t format);
  // Chunked: a text longer than kStringChunkLimit goes out as pieces of chunkSize bytes (at
  // least kStringChunkLimit + 1) that the factory buffers, then a final piece of at most
  // kStringChunkLimit bytes (empty when the text divides evenly). literal 0 means translatable.
  void String(std::int32_t cellId, std::string_view text, std::int32_t literal = 0,
              std::size_t chunkSize = kStringChunkLimit + 1);
  // One IPC_STRING message whatever its length.
  void StringPiece(std::int32_t cellId, std::string_view text, std::int32_t literal = 0);
  void BeginComposite(std::int32_t compositeId, std::int32_t patternCellId);
  void BeginRepeatList();
  void EndRepeatList();
  void CompositeArgument(std::int32_t cellId);
  void DiscardCell(std::int32_t cellId);
  void CopyCell(std::int32_t sourceId, std::int32_t targetId);
  // Display 2 shows labels, 0 names, anything else both.
  void Variable(std::int32_t cellId, std::int32_t display, std::string_view name,
                std::string_view label);
  // A data value with a numeric value.
  void DataValue(std::int32_t cellId, std::int32_t display, std::int32_t format,
                 std::string_view name, std::string_view label, double value);
  // A data value with a text value of 1 to 32767 bytes.
  void DataValue(std::int32_t cellId, std::int32_t display, std::int32_t format,
                 std::string_view name, std::string_view label, std::string_view value);
  // One IPC_LONG_STRING piece: with last false the text goes to part A when partA is not empty,
  // else to part B; with last true text[0, A) goes to A and text[A, A + B) to B and the cell is
  // finished with kind (below 2 a plain string cell, translatable at 0; 2 or more a UTF-8 cell).
  void LongStringPiece(std::int32_t cellId, std::int32_t kind, std::string_view partA,
                       std::string_view partB, bool last);
  // A whole long string: parts A and B in pieces of at most pieceSize bytes, then the last.
  void LongString(std::int32_t cellId, std::int32_t kind, std::string_view partA,
                  std::string_view partB = {}, std::size_t pieceSize = 32000);
  // Up to three parts in one message (the factory keeps part C only up to 99 bytes).
  void LongText(std::int32_t cellId, std::string_view partA, std::string_view partB = {},
                std::string_view partC = {});

  // Procedures, headings, text.
  void BeginProcedure(std::int64_t procedureId, std::string_view settings);
  // Carries the serialized specifications (empty when not bootstrapped), split into `parts`
  // payloads of one multi-part message.
  void EndProcedure(std::string_view specs = {}, std::uint32_t parts = 1,
                    std::uint32_t messageId = 1);
  void EndProcedure(const SvrBootstrapSpecs& specs, std::uint32_t parts = 1,
                    std::uint32_t messageId = 1);
  void BeginNode(std::int32_t cellId);
  void EndNode();
  void Annotate(std::int32_t target, std::int32_t textCellId);
  void SplitCategory(std::int32_t variableCellId, std::int32_t categoryCellId);
  void AnnotateMarked(std::int32_t target, std::int32_t textCellId, std::int32_t markerCellId);
  void PrintLine(std::int32_t lineSkip, std::string_view text);
  void LogLine(std::int32_t lineSkip, std::string_view text);
  void FlushLog();
  void BeginTextBlock(std::int32_t cellId);
  void Refresh();
  void SwapBytes(bool on);
  void PageTitle(std::string_view title, std::string_view subtitle);
  void OutlineText(std::string_view text);

  // Tables.
  void TableColors(std::int32_t start, std::int32_t end);
  void RequiredTable(std::int32_t first, std::int32_t second);
  void ScratchTable(std::int32_t titleCellId);
  void BeginTable(std::uint8_t tcid, std::int32_t titleCellId, std::int32_t subtypeCellId,
                  bool flag = false);
  void Category(std::uint8_t tcid, std::int32_t categoryCellId, std::int32_t dimensionCellId);
  void BeginGroup(std::uint8_t tcid, std::int32_t groupCellId, std::int32_t dimensionCellId);
  void EndGroup(std::uint8_t tcid, std::int32_t dimensionCellId);
  void CellDimension(std::uint8_t tcid, std::int32_t dimensionCellId);
  void Cell(std::uint8_t tcid, std::int32_t valueCellId, std::int32_t categoryCellId);
  void CellCategory(std::uint8_t tcid, std::int32_t categoryCellId);
  void EndTable(std::uint8_t tcid);
  void Dimension(std::uint8_t tcid, std::int32_t dimensionCellId);
  void ScratchCategory(std::int32_t first, std::int32_t second);
  // Axis 0 rows, 1 columns, 2 layers; position from 1.
  void PlaceDimension(std::uint8_t tcid, std::int32_t dimensionCellId, std::int32_t position,
                      std::int32_t axis, std::int32_t flag1 = 0, std::int32_t flag2 = 0);
  void SortGroup(std::uint8_t tcid, std::int32_t value);
  void SortDimension(std::uint8_t tcid, std::int32_t value);
  void SortUngroup(std::uint8_t tcid, std::int32_t value);
  void Ungroup(std::uint8_t tcid);
  void CornerText(std::uint8_t tcid, std::int32_t cellId);
  void ClearTableFlag(std::uint8_t tcid);
  void TableProperty(std::uint8_t tcid, std::int32_t property, std::int32_t cellId);
  // Which 1 sets the minimum, 2 the maximum, 3 both.
  void ColumnWidth(std::uint8_t tcid, std::int32_t which, std::int32_t minimum,
                   std::int32_t maximum);
  void Bold();
  void BackgroundColor(std::string_view colour);
  void TextColor(std::string_view colour);
  void Marker(std::int32_t cellId);
  void HideCategory();
  void MiscProperty(std::int32_t target, std::string_view text);

  // Charts, trees, models, interactive objects.
  void ChartXml(std::int8_t contentType, std::int8_t contentSubtype, std::string_view data);
  // The items of the model operations (kind 0 creates a model, 1 to 4 content, 5 the
  // label's further text), split into `parts` payloads of one multi-part message.
  void ModelPMML(const std::vector<MessageItem>& items, std::uint32_t parts = 1,
                 std::uint32_t messageId = 1);
  // Index, type, the data's length and extra, then the data. The factory never swaps these
  // integers, so they are written little-endian in either byte order.
  void TreeXml(std::int32_t index, std::int32_t type, std::string_view data,
               std::int32_t extra = 0);
  void InteractiveJson(std::int32_t a, std::int32_t contentType, std::string_view data);

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
