// Message handlers of a procedure's structure (headings, text blocks, rich objects, its end),
// of output lines and of session-wide messages (the dispatch table is in OmDispatcher.cpp).
#include <algorithm>
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
  if (!log && !_pProc) return;
  auto write = [this, log](std::string_view line) {
    if (log) {
      LogLine(line);
    } else {
      _pProc->PrintLine(line.data(), unsigned(line.size()));
    }
  };
  if (skip >= 2) {
    // More empty lines than a page holds is a corrupt count, not a layout: clamped, and the
    // line itself is kept.
    const std::int32_t lines = std::min(skip, kMaxLineSkip);
    for (std::int32_t i = 1; i < lines; ++i) write(std::string_view());
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
