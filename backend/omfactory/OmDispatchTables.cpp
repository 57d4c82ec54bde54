// Message handlers of pivot tables: dimensions, groups, categories, cells, annotations, sort
// marks and styles (the dispatch table is in OmDispatcher.cpp).
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

// Tables.

void OmFactory::Data::OnCell(OmPayload& message) {
  message.Need(12);
  const int tcid = message.Byte(0);
  const int valueId = message.CellId(4, "value cell id");
  const int categoryId = message.CellId(8, "category cell id");
  if (tcid == _droppingTCID) {
    _cells.Discard(valueId);
    _cells.Discard(categoryId);
    return;
  }
  OmPivotFactory* builder = BuilderOrDiscard(tcid, true, valueId, categoryId);
  if (builder == nullptr) {
    _droppingTCID = tcid;
    return;
  }
  // A plain number (nearly every cell's value) goes to the table as a number: no cell object.
  double number = 0;
  std::uint32_t format = 0;
  icuTracker* numberTracker = nullptr;
  const bool plain = _cells.TakeNumber(valueId, number, format, numberTracker);
  std::unique_ptr<OmCellText> value = plain ? nullptr : _cells.Take(valueId);
  // A plain text label (nearly every cell's) is looked up as text; its cell is made only
  // for a category the dimension does not have yet.
  bool translatable = false;
  std::string_view label;  // in the slot's buffer, which no message touches before the cell ends
  const bool text = _cells.TakeText(categoryId, label, translatable);
  std::unique_ptr<OmCellText> category = text ? nullptr : _cells.Take(categoryId);
  if (!plain) Required(message, value, valueId, "value cell id");
  if (!text) Required(message, category, categoryId, "category cell id");
  if (value) value->Accept(_tableFixer);
  if (category) category->Accept(_tableFixer);
  const int d = builder->CellDimension();
  builder->SelectCellDimension();
  if (text && !builder->SetExistingCategory(d, label)) {
    category = std::make_unique<OmStringCell>(std::string(label), translatable);
  }
  if (category) {
    category->setICUTracker(builder->Table().getICUTracker());
    builder->SetCategory(d, *category);
  }
  if (plain) {
    builder->Number(number, format, numberTracker);
  } else {
    builder->Cell(std::move(value));
  }
}

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
