// The message dispatcher: one handler per message code, grouped by family. Each handler checks
// its fixed fields against the message length before it reads or reverses any of them (OmPayload),
// takes the cells it names, and only then decides whether the message has any effect.
// This file holds the dispatch table and the cell messages, which it handles inline for speed;
// the other families live in OmDispatchStrings.cpp (composites, long strings),
// OmDispatchTables.cpp (tables) and OmDispatchProcedure.cpp (procedure structure, rich objects,
// lines and session-wide messages).
#include <cstring>
#include <typeinfo>

#include "backend/omfactory/OmDispatchSupport.h"
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

using namespace omdispatch;

namespace {

// Whether a message leaves alone what decides that a table's cells are dropped: the table at its
// TCID, its OMS selection, its fast and split flags, the procedure and its bootstrap flag. Cell
// values and the categories and groups of a table's dimensions do; anything else may not.
bool LeavesDropDecision(short code) {
  using enum MessageCode;
  const auto within = [code](MessageCode first, MessageCode last) {
    return code >= short(first) && code <= short(last);
  };
  // Number to string, category to cell category, discard and copy cell, variable and data value.
  return within(IPC_NUMBER, IPC_STRING) || within(IPC_CATEGORY, IPC_CELL_CATEGORY) ||
         within(IPC_DISCARD_CELL, IPC_COPY_CELL) || within(IPC_VARIABLE, IPC_DATA_VALUE) ||
         code == short(IPC_DIMENSION);
}

}  // namespace

void OmFactory::Data::ProcessMessage(short code, unsigned length, const void* payload) {
  using enum MessageCode;
  // The three messages of nearly every cell (its number, its label, the cell) are told apart by
  // direct tests before the general dispatch: they leave the drop decision alone and need
  // neither the range tests nor the two jump tables below.
  if (code == short(IPC_CELL)) {
    OmPayload message(code, length, payload, _swapBytes);
    return OnCell(message);
  }
  if (code == short(IPC_NUMBER)) {
    OmPayload message(code, length, payload, _swapBytes);
    return OnNumber(message);
  }
  if (code == short(IPC_STRING)) {
    OmPayload message(code, length, payload, _swapBytes);
    return OnString(message);
  }
  if (!LeavesDropDecision(code)) _droppingTCID = -1;
  // The session messages all lie below the output range. (Numbers, texts and cells were
  // handled above.)
  if (code < kFirstOutputCode) return ProcessNonBagpipeMessage(code, length, payload);
  if (code > kLastOutputCode) return;
  OmPayload message(code, length, payload, _swapBytes);
  switch (message.Code()) {
    case IPC_INTEGER:
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

inline void OmFactory::Data::OnNumber(OmPayload& message) {
  message.Need(16);
  const double value = message.F64(0);
  const std::uint32_t format = message.Format(8);
  const int id = message.CellId(12, "cell id");
  _cells.StoreNumber(id, value, format, _tracker);
}

inline void OmFactory::Data::OnString(OmPayload& message) {
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
    return;
  }
  message.CheckCellId(id, "cell id");
  if (!_strings.HasChunks()) {
    _cells.StoreText(id, text, literal == 0, _tracker);
    return;
  }
  StoreCell(id, std::make_unique<OmStringCell>(_strings.FinishChunks(text), literal == 0));
}

inline void OmFactory::Data::OnCellMessage(OmPayload& message) {
  using enum MessageCode;
  switch (message.Code()) {
    case IPC_INTEGER: {
      message.Need(12);
      const double value = message.Int32(0);
      const std::uint32_t format = message.Format(4);
      const int id = message.CellId(8, "cell id");
      _cells.StoreNumber(id, value, format, _tracker);
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
