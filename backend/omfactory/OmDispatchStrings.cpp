// Message handlers of composite cells and of long strings sent in parts (the dispatch table is in
// OmDispatcher.cpp).
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

  OmStringAssembler::Parts parts = _strings.TakeParts(id);
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

  OmStringAssembler::Parts parts = _strings.TakeParts(id);
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
