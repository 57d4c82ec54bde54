// The message dispatcher: one handler per message code, grouped by family. Each handler checks
// its fixed fields against the message length before it reads or reverses any of them (OmPayload),
// takes the cells it names, and only then decides whether the message has any effect.
#include <cstring>
#include <typeinfo>

#include "backend/omfactory/OmFactoryData.h"
#include "backend/omfactory/OmPayload.h"
#include "backend/omfactory/OmPivotFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "platform/errors/OMSException.h"
#include "platform/errors/ThrowError.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmStringDataValue.h"
#include "platform/outputmodel/OmVariable.h"
#include "platform/settings/BackendSettings.h"
#include "platform/settings/iocvset.h"
#include "platform/stream/MessageCodes.h"

namespace {

// IPC_STRING texts longer than this come in several messages.
constexpr std::int32_t kChunkLimit = 32766;
// IPC_LONG_TEXT drops a third part of this many bytes or more.
constexpr std::int32_t kLongTextThirdLimit = 99;
// Empty lines one line-skip count may ask for; more is taken for a corrupt field.
constexpr std::int32_t kMaxLineSkip = 1000;
// Axis positions are 1-based indices into lists of 16-bit dimension numbers.
constexpr std::int32_t kMaxAxisPosition = 32767;
// The output messages; codes in this range without a handler are ignored.
constexpr short kFirstOutputCode = 255;
constexpr short kLastOutputCode = 322;

// The cell a handler goes on to use; an empty slot there is a protocol error.
OmCellText& Required(const OmPayload& payload, const std::unique_ptr<OmCellText>& cell, int id,
                     const char* field) {
  if (!cell) payload.Fail(std::string(field) + " empty", id);
  return *cell;
}

// The zero-terminated text at offset; its terminator must lie inside the payload.
std::string_view TerminatedText(const OmPayload& payload, unsigned offset, const char* field) {
  payload.Need(std::uint64_t(offset) + 1);
  const char* begin = payload.Bytes() + offset;
  const void* end = std::memchr(begin, 0, payload.Length() - offset);
  if (end == nullptr) payload.Fail(std::string(field) + " not terminated", offset);
  return std::string_view(begin, std::size_t(static_cast<const char*>(end) - begin));
}

// Display mode of IPC_VARIABLE and IPC_DATA_VALUE: 2 leaves it unset (the session's mode
// applies), 0 asks for names or values, anything else for labels.
unsigned VariableDisplay(std::int32_t display) {
  if (display == 2) return 0;
  if (display == 0) return 1;
  return 2;
}

}  // namespace

void OmFactory::Data::ProcessMessage(short code, unsigned length, const void* payload) {
  using enum MessageCode;
  // The session messages all lie below the output range.
  if (code < kFirstOutputCode) return ProcessNonBagpipeMessage(code, length, payload);
  if (code > kLastOutputCode) return;
  OmPayload message(code, length, payload, _swapBytes);
  switch (message.Code()) {
    case IPC_NUMBER:
    case IPC_INTEGER:
    case IPC_STRING:
    case IPC_VARIABLE:
    case IPC_DATA_VALUE:
    case IPC_DISCARD_CELL:
    case IPC_COPY_CELL:
      OnCellMessage(message);
      break;
    case IPC_BEGIN_COMPOSITE:
    case IPC_BEGIN_REPEAT_LIST:
    case IPC_END_REPEAT_LIST:
    case IPC_COMPOSITE_ARGUMENT:
      OnCompositeMessage(message);
      break;
    case IPC_LONG_STRING:
      OnLongString(message);
      break;
    case IPC_LONG_TEXT:
      OnLongText(message);
      break;
    case IPC_TABLE_COLORS:
    case IPC_BEGIN_TABLE:
    case IPC_CATEGORY:
    case IPC_BEGIN_GROUP:
    case IPC_END_GROUP:
    case IPC_CELL_DIMENSION:
    case IPC_CELL:
    case IPC_CELL_CATEGORY:
    case IPC_END_TABLE:
    case IPC_DIMENSION:
    case IPC_PLACE_DIMENSION:
    case IPC_SORT_GROUP:
    case IPC_SORT_DIMENSION:
    case IPC_SORT_UNGROUP:
    case IPC_UNGROUP:
    case IPC_CORNER_TEXT:
    case IPC_CLEAR_TABLE_FLAG:
    case IPC_TABLE_PROPERTY:
    case IPC_COLUMN_WIDTH:
    case IPC_BOLD:
    case IPC_BACKGROUND_COLOR:
    case IPC_TEXT_COLOR:
    case IPC_MARKER:
    case IPC_HIDE_CATEGORY:
    case IPC_MISC_PROPERTY:
      OnTableMessage(message);
      break;
    case IPC_REQUIRED_TABLE:
      throw OMSException(
          "OmFactory::Data::ProcessMessage() -- IPC_REQUIRED_TABLE not implemented");
    case IPC_SCRATCH_CATEGORY:
      throw OMSException(
          "OmFactory::Data::ProcessMessage() -- IPC_SCRATCH_CATEGORY not implemented");
    case IPC_SCRATCH_TABLE:
    case IPC_BEGIN_PROCEDURE:
    case IPC_BEGIN_NODE:
    case IPC_END_NODE:
    case IPC_ANNOTATE:
    case IPC_ANNOTATE_MARKED:
    case IPC_SPLIT_CATEGORY:
    case IPC_END_PROCEDURE:
    case IPC_BEGIN_TEXT_BLOCK:
    case IPC_CHART_XML:
    case IPC_MODEL_PMML:
    case IPC_TREE_XML:
    case IPC_OUTLINE_TEXT:
    case IPC_INTERACTIVE_JSON:
      OnProcedureMessage(message);
      break;
    case IPC_PRINT_LINE:
      OnLines(message, false);
      break;
    case IPC_LOG_LINE:
      OnLines(message, true);
      break;
    case IPC_FLUSH_LOG:
    case IPC_REFRESH:
    case IPC_SWAP_BYTES:
    case IPC_PAGE_TITLE:
      OnSessionMessage(message);
      break;
    default:
      // 255 and the gaps of the range (260, 264, 277, 294, 301, 303, 306) have no handler.
      break;
  }
}

void OmFactory::Data::ProcessNonBagpipeMessage(short code, unsigned length, const void* payload) {
  using enum MessageCode;
  OmPayload message(code, length, payload, _swapBytes);
  const MessageCode kind = message.Code();
  if (kind != IPC_CONVERSION_NAME && kind != IPC_OUTPUT_SETTING && kind != IPC_CONVERSION_PAIR &&
      kind != IPC_BYTE_ORDER) {
    return;
  }
  switch (kind) {
    case IPC_CONVERSION_NAME: {
      message.Need(2);
      const std::uint8_t value = message.Byte(0);
      std::uint8_t n = message.Byte(1);
      if (n > 16) {
        message.SetByte(1, 16);
        n = 16;
      }
      const std::string_view name = message.Text(2, n, "name");
      IocvConversionName record;
      record.value = value;
      if (!name.empty()) std::memcpy(record.name, name.data(), name.size());
      iocvset_(kIocvConversionName, &record);
      break;
    }
    case IPC_OUTPUT_SETTING: {
      message.Need(33);
      const std::string_view keyword = TerminatedText(message, 16, "keyword");
      const std::string_view value = TerminatedText(message, 32, "value");
      OutputSetting(keyword, value);
      break;
    }
    case IPC_CONVERSION_PAIR: {
      message.Need(8);
      IocvConversionPair record;
      record.first = message.Int32(0);
      record.second = message.Int32(4);
      iocvset_(kIocvConversionPair, &record);
      break;
    }
    case IPC_BYTE_ORDER:
      message.Need(4);
      // The sender writes 1 in its own byte order.
      _swapBytes = message.RawInt32(0) != 1;
      break;
    default:
      break;
  }
}

// Cells.

inline void OmFactory::Data::OnCellMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_NUMBER: {
      message.Need(16);
      const double value = message.F64(0);
      const std::uint32_t format = message.Format(8);
      const int id = message.CellId(12, "cell id");
      _cells.StoreNumber(id, value, format, _tracker);
      break;
    }
    case IPC_INTEGER: {
      message.Need(12);
      const double value = message.Int32(0);
      const std::uint32_t format = message.Format(4);
      const int id = message.CellId(8, "cell id");
      _cells.StoreNumber(id, value, format, _tracker);
      break;
    }
    case IPC_STRING: {
      message.Need(12);
      const std::int32_t length = message.Int32(0);
      const std::int32_t id = message.Int32(4);
      const std::int32_t literal = message.Int32(8);
      const std::string_view text = message.Text(12, length, "text");
      if (length > kChunkLimit) {
        if (!_strings.Fits(text.size())) {
          const double pending = double(_strings.PendingBytes() + text.size());
          _strings.DropChunks();
          message.Fail("chunked text above limit", pending, double(OmStringAssembler::kMaxBytes));
        }
        _strings.AppendChunk(text);
        break;
      }
      message.CheckCellId(id, "cell id");
      if (!_strings.HasChunks()) {
        _cells.StoreText(id, text, literal == 0, _tracker);
        break;
      }
      StoreCell(id, std::make_unique<OmStringCell>(_strings.FinishChunks(text), literal == 0));
      break;
    }
    case IPC_VARIABLE: {
      message.Need(16);
      const int id = message.CellId(0, "cell id");
      const unsigned mode = VariableDisplay(message.Int32(4));
      const std::int32_t nameLength = message.Int32(8);
      const std::int32_t labelLength = message.Int32(12);
      const std::string_view name = message.Text(16, nameLength, "name");
      const std::string_view label = message.Text(16 + name.size(), labelLength, "label");
      StoreCell(id, std::make_unique<OmVariable>(std::string(name), std::string(label), mode));
      break;
    }
    case IPC_DATA_VALUE: {
      message.Need(22);
      const int id = message.CellId(0, "cell id");
      const unsigned mode = VariableDisplay(message.Int32(4));
      const std::uint32_t format = message.Format(8);
      const std::int32_t nameLength = message.Int32(12);
      const std::int32_t labelLength = message.Int32(16);
      const std::int16_t valueLength = message.Int16(20);
      const std::string_view name = message.Text(22, nameLength, "name");
      std::uint64_t offset = 22 + name.size();
      if (valueLength < 0) message.Fail("value length out of range", valueLength);
      if (valueLength == 0) {
        message.Need(offset + 8);
        const double value = message.F64(unsigned(offset));
        const std::string_view label = message.Text(offset + 8, labelLength, "label");
        StoreCell(id, std::make_unique<OmNumDataValue>(std::string(name), std::string(label),
                                                       value, format, mode));
      } else {
        const std::string_view value = message.Text(offset, valueLength, "value");
        offset += value.size();
        const std::string_view label = message.Text(offset, labelLength, "label");
        StoreCell(id, std::make_unique<OmStringDataValue>(std::string(name), std::string(label),
                                                          std::string(value), format, mode));
      }
      break;
    }
    case IPC_DISCARD_CELL: {
      message.Need(4);
      _cells.Discard(message.CellId(0, "cell id"));
      break;
    }
    case IPC_COPY_CELL: {
      message.Need(8);
      const int source = message.CellId(0, "source cell id");
      const int target = message.CellId(4, "target cell id");
      if (source == target) message.Fail("source and target cell ids equal", source);
      _cells.Discard(target);
      const OmCellText* cell = _cells.Peek(source);
      if (cell == nullptr) message.Fail("source cell id empty", source);
      _cells.Store(target, cell->Clone());
      break;
    }
    default:
      break;
  }
}

// Composites.

OmComposite& OmFactory::Data::CurrentComposite(OmPayload& message) {
  OmCellText* cell = _cells.Peek(_currentComposite);
  if (cell == nullptr) message.Fail("current composite slot empty", _currentComposite);
  return dynamic_cast<OmComposite&>(*cell);
}

void OmFactory::Data::OnCompositeMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_BEGIN_COMPOSITE: {
      message.Need(8);
      const int compositeId = message.CellId(0, "composite id");
      const int patternId = message.CellId(4, "pattern cell id");
      _currentComposite = compositeId;
      std::unique_ptr<OmCellText> pattern = _cells.Take(patternId);
      Required(message, pattern, patternId, "pattern cell id");
      std::unique_ptr<OmCellText> composite;
      if (pattern->Kind() == OmCellText::kComposite) {
        composite = std::move(pattern);
      } else {
        composite = std::make_unique<OmComposite>(std::move(pattern));
      }
      StoreCell(compositeId, std::move(composite));
      break;
    }
    case IPC_BEGIN_REPEAT_LIST:
      CurrentComposite(message).BeginRepeatList();
      break;
    case IPC_END_REPEAT_LIST:
      CurrentComposite(message).EndRepeatList();
      break;
    case IPC_COMPOSITE_ARGUMENT: {
      message.Need(4);
      const int id = message.CellId(0, "cell id");
      OmComposite& composite = CurrentComposite(message);
      // A composite cannot be its own argument.
      if (id == _currentComposite) message.Fail("cell id names the current composite", id);
      std::unique_ptr<OmCellText> argument = _cells.Take(id);
      Required(message, argument, id, "cell id");
      argument->setICUTracker(composite.getICUTracker());
      composite.Add(std::move(argument));
      break;
    }
    default:
      break;
  }
}

// Long strings.

void OmFactory::Data::OnLongString(OmPayload& message) {
  message.Need(17);
  const std::int32_t lengthA = message.Int32(0);
  const std::int32_t lengthB = message.Int32(4);
  const int id = message.CellId(8, "cell id");
  const std::int32_t kind = message.Int32(12);
  const bool last = message.Byte(16) == 1;

  std::string_view a;
  std::string_view b;
  if (last) {
    a = message.Text(17, lengthA, "length A");
    b = message.Text(17 + a.size(), lengthB, "length B");
  } else if (lengthA != 0) {
    a = message.Text(17, lengthA, "length A");
  } else if (lengthB != 0) {
    b = message.Text(17, lengthB, "length B");
  }
  if (!_strings.Fits(a.size() + b.size())) {
    const double pending = double(_strings.PendingBytes() + a.size() + b.size());
    _strings.DropParts(id);
    message.Fail("parts above limit", pending, double(OmStringAssembler::kMaxBytes));
  }
  _strings.AppendPart(id, 0, a);
  _strings.AppendPart(id, 1, b);
  if (!last) return;

  OmStringAssembler::Parts parts = _strings.TakeParts(id, false);
  std::unique_ptr<OmCellText> cell;
  if (kind < 2) {
    cell = std::make_unique<OmStringCell>(std::move(parts.a), kind == 0);
  } else if (parts.b.empty()) {
    cell = std::make_unique<OmStringCellUTF8>(std::move(parts.a));
  } else {
    cell = std::make_unique<OmStringCellUTF8>(std::move(parts.a), std::move(parts.b));
  }
  StoreCell(id, std::move(cell));
}

void OmFactory::Data::OnLongText(OmPayload& message) {
  message.Need(16);
  const std::int32_t lengthA = message.Int32(0);
  const std::int32_t lengthB = message.Int32(4);
  const std::int32_t lengthC = message.Int32(8);
  const int id = message.CellId(12, "cell id");
  const std::string_view a = message.Text(16, lengthA, "length A");
  const std::string_view b = message.Text(16 + a.size(), lengthB, "length B");
  if (lengthC < 0) message.Fail("length C length out of range", lengthC);
  std::string_view c;
  if (lengthC <= kLongTextThirdLimit) {
    c = message.Text(16 + a.size() + b.size(), lengthC, "length C");
  }
  if (!_strings.Fits(a.size() + b.size() + c.size())) {
    const double pending = double(_strings.PendingBytes() + a.size() + b.size() + c.size());
    _strings.DropParts(id);
    message.Fail("parts above limit", pending, double(OmStringAssembler::kMaxBytes));
  }
  _strings.AppendPart(id, 0, a);
  _strings.AppendPart(id, 1, b);
  _strings.AppendPart(id, 2, c);

  OmStringAssembler::Parts parts = _strings.TakeParts(id, true);
  std::unique_ptr<OmCellText> cell;
  if (parts.b.empty()) {
    cell = std::make_unique<OmStringCellUTF8>(std::move(parts.a));
  } else if (parts.c.empty()) {
    cell = std::make_unique<OmStringCellUTF8>(std::move(parts.a), std::move(parts.b));
  } else {
    cell = std::make_unique<OmStringCellUTF8>(std::move(parts.a), std::move(parts.b),
                                              std::move(parts.c));
  }
  StoreCell(id, std::move(cell));
}

// Tables.

void OmFactory::Data::OnTableMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_TABLE_COLORS: {
      message.Need(8);
      const std::int32_t start = message.Int32(0);
      const std::int32_t end = message.Int32(4);
      if (OmPivotFactory* builder = TableBuilder(_currentTCID)) {
        builder->Table().setStartColor(start);
        builder->Table().setEndColor(end);
      }
      break;
    }
    case IPC_BEGIN_TABLE: {
      message.Need(13);
      const int tcid = message.Byte(0);
      const int titleId = message.CellId(4, "title cell id");
      const int subtypeId = message.CellId(8, "subtype cell id");
      const bool split = message.Byte(12) != 0;
      std::unique_ptr<OmCellText> title = _cells.Take(titleId);
      std::unique_ptr<OmCellText> subtype = _cells.Take(subtypeId);
      if (!_pProc) break;
      Required(message, title, titleId, "title cell id");
      Required(message, subtype, subtypeId, "subtype cell id");
      std::unique_ptr<OmCellText> tableTitle = title->Clone();
      title->Accept(_outlineFixer);
      tableTitle->Accept(_tableFixer);
      OmPivotFactory* builder =
          _pProc->CreateTable(*title, *subtype, *tableTitle, split, _destViewer);
      if (builder == nullptr) message.Fail("table has no builder", tcid);
      _pivots[std::size_t(tcid)] = builder;
      OmPivotTable& table = builder->Table();
      const BackendSettings& settings = _pProc->getSettings();
      table.setBackendSettings(_pProc->SharedSettings());
      table.setFastTable(settings.getFastTables());
      table.setLabelsOnly(_labelsOnly);
      table.MaxCells(settings.getMaxCells());
      if (table.getICUTracker() == nullptr) table.setICUTracker(_tracker);
      _currentTCID = tcid;
      break;
    }
    case IPC_CATEGORY:
    case IPC_BEGIN_GROUP: {
      message.Need(12);
      const int tcid = message.Byte(0);
      const int labelId = message.CellId(4, "category cell id");
      const int dimensionId = message.CellId(8, "dimension cell id");
      OmPivotFactory* builder =
          BuilderOrDiscard(tcid, message.Code() == IPC_CATEGORY, labelId, dimensionId);
      if (builder == nullptr) break;
      std::unique_ptr<OmCellText> label = _cells.Take(labelId);
      std::unique_ptr<OmCellText> dimension = _cells.Take(dimensionId);
      Required(message, label, labelId, "category cell id");
      Required(message, dimension, dimensionId, "dimension cell id");
      label->Accept(_tableFixer);
      dimension->Accept(_tableFixer);
      label->setICUTracker(builder->Table().getICUTracker());
      const int d = builder->Dimension(*dimension);
      if (message.Code() == IPC_CATEGORY) {
        builder->SetCategory(d, *label);
      } else {
        builder->Group(d, *label);
      }
      break;
    }
    case IPC_END_GROUP:
    case IPC_CELL_DIMENSION:
    case IPC_DIMENSION: {
      message.Need(8);
      const int tcid = message.Byte(0);
      const int dimensionId = message.CellId(4, "dimension cell id");
      std::unique_ptr<OmCellText> dimension = _cells.Take(dimensionId);
      OmPivotFactory* builder = TableBuilder(tcid);
      if (builder == nullptr) break;
      Required(message, dimension, dimensionId, "dimension cell id");
      dimension->Accept(_tableFixer);
      const int d = builder->Dimension(*dimension);
      if (message.Code() == IPC_END_GROUP) {
        builder->EndGroup(d);
      } else if (message.Code() == IPC_CELL_DIMENSION) {
        builder->SetCellDimension(d);
      }
      break;
    }
    case IPC_CELL: {
      message.Need(12);
      const int tcid = message.Byte(0);
      const int valueId = message.CellId(4, "value cell id");
      const int categoryId = message.CellId(8, "category cell id");
      OmPivotFactory* builder = BuilderOrDiscard(tcid, true, valueId, categoryId);
      if (builder == nullptr) break;
      std::unique_ptr<OmCellText> value = _cells.Take(valueId);
      // A plain text label (nearly every cell's) is looked up as text; its cell is made only
      // for a category the dimension does not have yet.
      bool translatable = false;
      const bool text = _cells.TakeText(categoryId, _labelText, translatable);
      std::unique_ptr<OmCellText> category = text ? nullptr : _cells.Take(categoryId);
      Required(message, value, valueId, "value cell id");
      if (!text) Required(message, category, categoryId, "category cell id");
      value->Accept(_tableFixer);
      if (category) category->Accept(_tableFixer);
      const int d = builder->CellDimension();
      builder->SelectCellDimension();
      if (text && !builder->SetExistingCategory(d, _labelText)) {
        category = std::make_unique<OmStringCell>(_labelText, translatable);
      }
      if (category) {
        category->setICUTracker(builder->Table().getICUTracker());
        builder->SetCategory(d, *category);
      }
      builder->Cell(std::move(value));
      break;
    }
    case IPC_CELL_CATEGORY: {
      message.Need(8);
      const int tcid = message.Byte(0);
      const int categoryId = message.CellId(4, "category cell id");
      std::unique_ptr<OmCellText> category = _cells.Take(categoryId);
      OmPivotFactory* builder = TableBuilder(tcid, true);
      if (builder == nullptr) break;
      Required(message, category, categoryId, "category cell id");
      category->Accept(_tableFixer);
      category->setICUTracker(builder->Table().getICUTracker());
      builder->SetCategory(builder->CellDimension(), *category);
      builder->SelectCellDimension();
      break;
    }
    case IPC_END_TABLE: {
      message.Need(1);
      const std::size_t tcid = message.Byte(0);
      if (!_pProc) break;
      if (_pivots[tcid] == nullptr) ThrowError::Simple("omerrors.err", 101);
      if (!_pivots[tcid]->AllGroupsClosed()) ThrowError::Simple("omerrors.err", 102);
      _pivots[tcid]->EndTable();
      _pivots[tcid] = nullptr;
      break;
    }
    case IPC_PLACE_DIMENSION: {
      message.Need(24);
      const int tcid = message.Byte(0);
      const int dimensionId = message.CellId(4, "dimension cell id");
      const std::int32_t position = message.Int32(8);
      const std::int32_t axis = message.Int32(12);
      const bool flag1 = message.Int32(16) != 0;
      const bool flag2 = message.Int32(20) != 0;
      std::unique_ptr<OmCellText> dimension = _cells.Take(dimensionId);
      OmPivotFactory* builder = TableBuilder(tcid);
      if (builder == nullptr) break;
      Required(message, dimension, dimensionId, "dimension cell id");
      if (axis < 0 || axis > 2) message.Fail("axis out of range", axis);
      if (position < 1 || position > kMaxAxisPosition) {
        message.Fail("position out of range", position, kMaxAxisPosition);
      }
      dimension->Accept(_tableFixer);
      const int d = builder->Dimension(*dimension);
      builder->PlaceDimension(d, axis, position, flag1, flag2);
      break;
    }
    case IPC_SORT_GROUP:
    case IPC_SORT_DIMENSION:
    case IPC_SORT_UNGROUP: {
      message.Need(8);
      const int tcid = message.Byte(0);
      const std::int32_t value = message.Int32(4);
      OmPivotFactory* builder = TableBuilder(tcid);
      if (builder == nullptr) break;
      if (message.Code() == IPC_SORT_DIMENSION) {
        builder->MarkSortDimension(value);
      } else {
        builder->MarkSortGroup(value);
        if (message.Code() == IPC_SORT_UNGROUP) builder->MarkUngroup();
      }
      break;
    }
    case IPC_UNGROUP: {
      message.Need(1);
      if (OmPivotFactory* builder = TableBuilder(message.Byte(0))) builder->MarkUngroup();
      break;
    }
    case IPC_CORNER_TEXT: {
      message.Need(8);
      const int tcid = message.Byte(0);
      const int id = message.CellId(4, "cell id");
      std::unique_ptr<OmCellText> corner = _cells.Take(id);
      if (corner) corner->Accept(_tableFixer);
      if (!_pProc) break;
      OmPivotFactory& builder = CheckTCID(tcid, false);
      if (!builder.Table()._keep) break;
      builder.Table().CornerText(Required(message, corner, id, "cell id"));
      break;
    }
    case IPC_CLEAR_TABLE_FLAG: {
      message.Need(1);
      const int tcid = message.Byte(0);
      if (!_pProc) break;
      CheckTCID(tcid, false).Table()._firstPart = 0;
      break;
    }
    case IPC_TABLE_PROPERTY: {
      message.Need(12);
      const int tcid = message.Byte(0);
      const std::int32_t property = message.Int32(4);
      const int id = message.CellId(8, "cell id");
      TableProperty(message, tcid, property, id, _cells.Take(id));
      break;
    }
    case IPC_COLUMN_WIDTH: {
      message.Need(16);
      const int tcid = message.Byte(0);
      const std::int32_t which = message.Int32(4);
      const std::int32_t minimum = message.Int32(8);
      const std::int32_t maximum = message.Int32(12);
      if (!_pProc) break;
      OmPivotTable& table = CheckTCID(tcid, false).Table();
      if (which == 1 || which == 3) table.MinColumnWidth(minimum);
      if (which == 2 || which == 3) table.MaxColumnWidth(maximum);
      break;
    }
    case IPC_BOLD:
      if (OmPivotFactory* builder = TableBuilder(_currentTCID)) builder->Bold();
      break;
    case IPC_HIDE_CATEGORY:
      if (OmPivotFactory* builder = TableBuilder(_currentTCID)) builder->HideCategory();
      break;
    case IPC_BACKGROUND_COLOR:
    case IPC_TEXT_COLOR: {
      message.Need(12);
      const std::int32_t length = message.Int32(4);
      const std::string_view colour = message.Text(12, length, "colour");
      OmPivotFactory* builder = TableBuilder(_currentTCID);
      if (builder == nullptr) break;
      if (message.Code() == IPC_TEXT_COLOR) {
        builder->TextColor(std::string(colour));
      } else {
        builder->BackgroundColor(std::string(colour));
      }
      break;
    }
    case IPC_MARKER: {
      message.Need(12);
      const int id = message.CellId(8, "cell id");
      std::unique_ptr<OmCellText> marker = _cells.Take(id);
      if (marker) marker->Accept(_tableFixer);
      OmPivotFactory* builder = TableBuilder(_currentTCID);
      if (builder == nullptr) break;
      builder->addMarker(Required(message, marker, id, "cell id"));
      break;
    }
    case IPC_MISC_PROPERTY: {
      message.Need(8);
      const std::int32_t target = message.Int32(0);
      const std::int32_t length = message.Int32(4);
      const std::string_view text = message.Text(8, length, "text");
      if (!_pProc) break;
      if (target < 1 || target > 7) {
        throw OMSException("OmFactory::addMiscProperty() -- unknown target", target);
      }
      if (OmPivotFactory* builder = TableBuilder(_currentTCID)) {
        builder->addMiscProperty(target, std::string(text));
      }
      break;
    }
    default:
      break;
  }
}

// Procedure structure and rich objects.

void OmFactory::Data::OnProcedureMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_SCRATCH_TABLE: {
      message.Need(4);
      const int id = message.CellId(0, "title cell id");
      std::unique_ptr<OmCellText> title = _cells.Take(id);
      if (!_pProc) break;
      if (OmPivotTable* table = _pProc->FindTable(Required(message, title, id, "title cell id"))) {
        table->Scratch(true);
      }
      break;
    }
    case IPC_BEGIN_PROCEDURE: {
      message.Need(12);
      const std::int64_t id = message.Int64(0);
      const std::int32_t length = message.Int32(8);
      BeginProcedure(id, message.Text(12, length, "settings text"));
      break;
    }
    case IPC_BEGIN_NODE: {
      message.Need(4);
      const int id = message.CellId(0, "cell id");
      std::unique_ptr<OmCellText> text = _cells.Take(id);
      if (text) {
        text->Accept(_outlineFixer);
        text->setICUTracker(_tracker);
      }
      if (!_pProc) break;
      _pProc->Node(Required(message, text, id, "cell id"));
      break;
    }
    case IPC_END_NODE:
      if (_pProc) _pProc->EndNode();
      break;
    case IPC_ANNOTATE: {
      message.Need(8);
      const std::int32_t target = message.Int32(0);
      const int textId = message.CellId(4, "text cell id");
      Annotate(message, target, textId, _cells.Take(textId), nullptr);
      break;
    }
    case IPC_ANNOTATE_MARKED: {
      message.Need(12);
      const std::int32_t target = message.Int32(0);
      const int textId = message.CellId(4, "text cell id");
      const int markerId = message.CellId(8, "marker cell id");
      std::unique_ptr<OmCellText> text = _cells.Take(textId);
      std::unique_ptr<OmCellText> marker = markerId != 0 ? _cells.Take(markerId) : nullptr;
      Annotate(message, target, textId, std::move(text), std::move(marker));
      break;
    }
    case IPC_SPLIT_CATEGORY: {
      message.Need(8);
      const int variableId = message.CellId(0, "variable cell id");
      const int categoryId = message.CellId(4, "category cell id");
      std::unique_ptr<OmCellText> variable = _cells.Take(variableId);
      std::unique_ptr<OmCellText> category = _cells.Take(categoryId);
      if (!_pProc) break;
      Required(message, variable, variableId, "variable cell id").Accept(_tableFixer);
      Required(message, category, categoryId, "category cell id").Accept(_tableFixer);
      _pProc->SetCategory(*variable, *category);
      break;
    }
    case IPC_END_PROCEDURE:
      AppendProc(message.Length(), message.Bytes());
      break;
    case IPC_BEGIN_TEXT_BLOCK: {
      message.Need(4);
      const int id = message.CellId(0, "cell id");
      std::unique_ptr<OmCellText> label = _cells.Take(id);
      if (!_pProc) break;
      Required(message, label, id, "cell id").Accept(_outlineFixer);
      _pProc->BeginTextBlock(*label);
      break;
    }
    case IPC_CHART_XML: {
      message.Need(8);
      const int type = std::int8_t(message.Byte(0));
      const int subtype = std::int8_t(message.Byte(1));
      const std::int32_t length = message.Int32(4);
      const std::string_view data = message.Text(8, length, "data");
      if (_pProc) _pProc->ChartXmlMessage(1, type, subtype, data.data(), unsigned(data.size()));
      break;
    }
    case IPC_MODEL_PMML:
      if (_pProc) _pProc->ModelPMMLMessage(message.Bytes(), message.Length());
      break;
    case IPC_TREE_XML: {
      message.Need(16);
      const std::int32_t index = message.RawInt32(0);
      const std::int32_t type = message.RawInt32(4);
      const std::int32_t length = message.RawInt32(8);
      const std::int32_t extra = message.RawInt32(12);
      const std::string_view data = message.Text(16, length, "data");
      if (_pProc) {
        _pProc->TreeXmlMessage(index, type, data.data(), unsigned(data.size()), unsigned(extra));
      }
      break;
    }
    case IPC_OUTLINE_TEXT: {
      message.Need(4);
      const std::int32_t length = message.Int32(0);
      const std::string_view key = message.Text(4, length, "text");
      OmStringCell text(_dictionary.LookUp(std::string(key)), false);
      text.setICUTracker(_tracker);
      if (_pProc) _pProc->OutlineText(text);
      break;
    }
    case IPC_INTERACTIVE_JSON: {
      message.Need(12);
      const std::int32_t index = message.Int32(0);
      const std::int32_t type = message.Int32(4);
      const std::int32_t length = message.Int32(8);
      const std::string_view data = message.Text(12, length, "data");
      if (_pProc) {
        _pProc->InteractiveJSONMessage(index, type, data.data(), unsigned(data.size()));
      }
      break;
    }
    default:
      break;
  }
}

void OmFactory::Data::OnLines(OmPayload& message, bool log) {
  message.Need(8);
  const std::int32_t skip = message.Int32(0);
  const std::int32_t length = message.Int32(4);
  const std::string_view text = message.Text(8, length, "text");
  if (skip > kMaxLineSkip) message.Fail("line skip out of range", skip, kMaxLineSkip);
  if (!log && !_pProc) return;
  auto write = [this, log](std::string_view line) {
    if (log) {
      LogLine(line);
    } else {
      _pProc->PrintLine(line.data(), unsigned(line.size()));
    }
  };
  if (skip >= 2) {
    for (std::int32_t i = 1; i < skip; ++i) write(std::string_view());
  } else if (skip == -1) {
    write(std::string_view("\f", 1));
  }
  write(text);
}

// Session-wide messages.

void OmFactory::Data::OnSessionMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_FLUSH_LOG:
      if (_logPending) {
        for (Observer* observer : _observers) observer->FlushLog();
        _logPending = false;
      }
      break;
    case IPC_REFRESH:
      for (Observer* observer : _observers) observer->Refresh();
      break;
    case IPC_SWAP_BYTES:
      message.Need(1);
      _swapBytes = message.Byte(0) != 0;
      break;
    case IPC_PAGE_TITLE: {
      message.Need(8);
      const std::int32_t titleLength = message.Int32(0);
      const std::int32_t subtitleLength = message.Int32(4);
      const std::string_view title = message.Text(8, titleLength, "title");
      // One separator byte lies between the texts; a sender may leave it out without subtitle.
      const std::string_view subtitle =
          subtitleLength == 0 ? std::string_view()
                              : message.Text(8 + title.size() + 1, subtitleLength, "subtitle");
      PageTitle(title, subtitle);
      break;
    }
    default:
      break;
  }
}
