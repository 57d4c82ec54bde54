// The state of one factory session and its message dispatcher: the cell slot table, the TCID
// table, string assembly, display modes, the open procedure, observers, log and page titles, and
// the recovery that appends a failed procedure's output. OmFactory forwards to it; handlers for
// the message codes live in OmDispatcher.cpp, the session operations in OmFactoryData.cpp.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "backend/omfactory/OmCellSlots.h"
#include "backend/omfactory/OmFactory.h"
#include "backend/omfactory/OmStringAssembler.h"
#include "backend/omfactory/translate/OmOutputTreeTranslator.h"
#include "backend/omsopmgr/OmFactorySelector.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/stringtables/ExtNameStr.h"
#include "platform/stringtables/FacSTDictionary.h"

class MessageHandler;
class OmComposite;
class OmPayload;
class CodePage;
class OmPivotFactory;
class OmTextBlock;
class icuTracker;

struct OmFactory::Data {
  Data(OmOutputTree* outputTree, const ExtNameStr& stringTablePath, const std::string& codePage,
       const std::vector<OMSObjectSelector>& requests);
  Data(OmOutputTree* outputTree, const std::string& stringTablePath, const std::string& codePage,
       const std::vector<OMSObjectSelector>& requests);
  ~Data();

  // One message with recovery: an OMSException or std::bad_alloc inside a procedure appends the
  // procedure's output so far, marked "Output Missing".
  void Message(short code, unsigned length, const void* payload);
  // The dispatcher: control messages first, then the output messages 255..322.
  void ProcessMessage(short code, unsigned length, const void* payload);
  // Codes 27, 34, 56 and 59; any other code returns at once.
  void ProcessNonBagpipeMessage(short code, unsigned length, const void* payload);

  // Session operations that handlers share.
  void BeginProcedure(std::int64_t id, std::string_view settingsText);
  // With a payload: one part of the end-of-procedure message. Without (recovery): ends the open
  // procedure at once with no bootstrap specifications.
  void AppendProc(unsigned length, const void* payload);
  void LogLine(std::string_view line);
  void PageTitle(std::string_view title, std::string_view subtitle);
  void OutputSetting(std::string_view keyword, std::string_view value);
  void TableProperty(OmPayload& payload, int tcid, int property, int cellId,
                     std::unique_ptr<OmCellText> cell);
  void Annotate(OmPayload& payload, int target, int textId, std::unique_ptr<OmCellText> text,
                std::unique_ptr<OmCellText> marker);
  // The builder of an open table; "OmFactory::CheckTCID() -- TCID invalid", value 1 = tcid, when
  // the entry is empty. makeCurrent makes tcid the current TCID.
  OmPivotFactory& CheckTCID(int tcid, bool makeCurrent = true);
  // Whether the viewer does not need this message's cells (fast tables after their first cell).
  bool FastTableDrops(const OmPivotFactory& builder) const;
  void SetStringTablePath(const ExtNameStr& path);
  // Binds a new cell to the session tracker and puts it into its slot.
  void StoreCell(int id, std::unique_ptr<OmCellText> cell);
  // Clears what lives for one procedure: builders' TCIDs, cells, the selector's command, the log
  // block; the procedure factory itself is destroyed.
  void EndProcedureState();

  // Error recovery (Message).
  // Counts a failure the session recovered from and keeps it for the host.
  void Recovered(const OMSException& error);
  // Cuts the open procedure at the failure ("Output Missing") and ends it as usual.
  void Salvage();
  // Salvage; when salvage itself fails, the output collected so far is handed over as it stands
  // (KeepCollected), the procedure is closed so that the session stays usable, and the new
  // failure goes on to the host.
  void SalvageOrKeep();
  // Adds the "Output Missing" block where the output was cut, once per procedure.
  void MarkCut();
  // The last resort of recovery: marks the cut if it can, ends the procedure without pooling,
  // translation or sorting and hands it over, unless observers were already offered it.
  // Failures here are dropped: the one that led here reaches the host.
  void KeepCollected() noexcept;
  // Offers the ended procedure's tree to the observers and moves it into the output tree when
  // one of them wants it (AppendProc's hand-over).
  void HandOver();
  // The session's tracker for that pair, made on first use; a locale or code set that cannot be
  // opened throws OMSException.
  icuTracker* Tracker(bool unicode, const std::string& locale);

  // Handlers by message family (OmDispatcher.cpp).
  // Inlined into the dispatcher (its one caller): numbers and texts are most of a stream, and a
  // second call and switch on each cost about a twentieth of dropping an unwanted table.
  [[gnu::always_inline]] inline void OnCellMessage(OmPayload& payload);
  // The value and label messages of nearly every cell, and the cell itself (OmDispatchTables.cpp).
  [[gnu::always_inline]] inline void OnNumber(OmPayload& payload);
  [[gnu::always_inline]] inline void OnString(OmPayload& payload);
  void OnCell(OmPayload& payload);
  void OnCompositeMessage(OmPayload& payload);
  void OnLongString(OmPayload& payload);
  void OnLongText(OmPayload& payload);
  void OnTableMessage(OmPayload& payload);
  void OnProcedureMessage(OmPayload& payload);
  void OnSessionMessage(OmPayload& payload);
  void OnLines(OmPayload& payload, bool log);
  // The builder that a table message addresses, or null when the message is to be dropped: no
  // procedure, the table's keep flag clear, or (fastRule) the viewer does not need it. Fails when
  // the TCID names no open table.
  OmPivotFactory* TableBuilder(int tcid, bool fastRule = false);
  // TableBuilder for a message that names two cells: when it gives null or fails, both slots
  // are emptied without making their cells, so that a table that keeps nothing costs no cell.
  OmPivotFactory* BuilderOrDiscard(int tcid, bool fastRule, int firstId, int secondId);
  // The current composite; fails when its slot is empty, std::bad_cast when it holds another kind.
  OmComposite& CurrentComposite(OmPayload& payload);

  // Trackers are kept for the session's life: cells already in the output tree refer to them.
  // Most come from a process-wide cache shared by all sessions (see Tracker).
  std::vector<std::shared_ptr<icuTracker>> _trackers;
  icuTracker* _tracker = nullptr;

  OmOutputTree* _outputTree;
  OmTextBlock* _logBlock = nullptr;
  // The log block shown to the selector for each line; it lives on because the selector may keep
  // a pointer to the last block it kept.
  std::unique_ptr<OmTextBlock> _logProbe;
  OmStringCell _logTitle{"Log", false};
  std::string _codePage;
  const CodePage* _page;  // _codePage's, loaded
  std::string _locale;
  bool _unicode = true;

  ExtNameStr _stringTablePath;
  FacSTDictionary _dictionary;
  OmOutputTreeTranslator _translator;
  OmFactorySelector _selector;

  unsigned _outlineVarMode = 2;
  unsigned _tableVarMode = 2;
  unsigned _outlineValueMode = 2;
  unsigned _tableValueMode = 2;
  OmFactory::ModeFixer _outlineFixer{_outlineVarMode, _outlineValueMode};
  OmFactory::ModeFixer _tableFixer{_tableVarMode, _tableValueMode};

  bool _swapBytes = false;
  bool _destViewer = false;
  bool _labelsOnly = false;
  bool _logPending = false;
  // The MIOUTPUT flags.
  bool _pooled = true;
  bool _observed = true;
  bool _imputed = true;
  bool _diagnostics = true;

  std::vector<OmFactory::Observer*> _observers;
  std::size_t _recoveredErrors = 0;
  std::vector<std::string> _warnings;
  std::unique_ptr<OMSException> _lastError;

  // Message decoding state.
  OmCellSlots _cells;
  OmStringAssembler _strings;
  int _currentComposite = 0;
  int _currentTCID = -1;
  // The TCID whose cell messages were last found to have no effect (an excluded table, a fast
  // table past its first cell, no procedure open), or -1. Checking that costs five calls a cell;
  // only value and cell messages leave it set, since any other message may change the answer.
  int _droppingTCID = -1;
  // Builders by TCID (a TCID is one byte); borrowed from their tables' builder slots.
  std::array<OmPivotFactory*, 256> _pivots{};

  // Declared after the selector, translator and trackers it refers to, so destroyed before them.
  std::unique_ptr<OmProcedureFactory> _pProc;
  // EndProcedure was called on _pProc.
  bool _procedureEnding = false;
  // Observers were offered _pProc's tree.
  bool _procedureOffered = false;
  // Recovery marked _pProc's output "Output Missing".
  bool _cutMarked = false;
  std::unique_ptr<MessageHandler> _messageHandler;
};
