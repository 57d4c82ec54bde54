#include "backend/omfactory/OmFactoryData.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <typeinfo>

#include "backend/omfactory/OmLanguageTable.h"
#include "backend/omfactory/OmPayload.h"
#include "backend/omfactory/OmPivotFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/outputmodel/Amputate.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/settings/BackendSettings.h"
#include "platform/strings/CodePage.h"
#include "platform/strings/NuvaroMB.h"
#include "platform/strings/icuTracker.h"
#include "platform/stringtables/PathFactory.h"

namespace {

// No location given: the tables installed with the library, if any.
std::string OrInstalled(const std::string& path) {
  return path.empty() ? PathFactory::InstalledStringTables() : path;
}

OmOutputTree* CheckedTree(OmOutputTree* tree) {
  if (tree == nullptr) throw OMSException("OmFactory::OmFactory() -- outputTree == nullptr");
  return tree;
}

// An unknown code page throws before anything is made.
const std::string& Checked(const std::string& codePage) {
  CodePage::Get(codePage);
  return codePage;
}

// "Values" and "Names" 1, "Labels" 2, "Both" 3, anything else 0 (unset).
unsigned DisplayMode(std::string_view value) {
  if (value == "Values" || value == "Names") return 1;
  if (value == "Labels") return 2;
  if (value == "Both") return 3;
  return 0;
}

// Toward zero, NaN as 0, clamped to int: the number comes from a stream.
int TruncatedInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483647 - 1;
  return int(value);
}

// A tracker is immutable once made and safe to share between threads, and making one (an ICU
// locale and its collator) cost more than a small procedure: sessions share them through this
// cache. It keeps the first kSharedTrackers (unicode, locale) pairs asked for; past that a hostile
// stream naming ever new locales gets trackers of its own, which live as long as its session.
std::shared_ptr<icuTracker> SharedTracker(bool unicode, const std::string& locale) {
  constexpr std::size_t kSharedTrackers = 64;
  static std::mutex mutex;
  static std::vector<std::shared_ptr<icuTracker>> shared;
  {
    const std::lock_guard lock(mutex);
    for (const auto& made : shared) {
      if (made->IsUnicode() == unicode && made->LocaleName() == locale) return made;
    }
  }
  // Made outside the lock: it may throw, and another thread may make the same one meanwhile.
  auto made = std::make_shared<icuTracker>(unicode, locale);
  const std::lock_guard lock(mutex);
  if (shared.size() < kSharedTrackers) shared.push_back(made);
  return made;
}

}  // namespace

OmFactory::Data::Data(OmOutputTree* outputTree, const ExtNameStr& stringTablePath,
                      const std::string& codePage, const std::vector<OMSObjectSelector>& requests)
    : _outputTree(CheckedTree(outputTree)),
      _codePage(Checked(codePage)),
      _page(&CodePage::Get(codePage)),
      _stringTablePath(stringTablePath),
      _dictionary(stringTablePath),
      _translator(&_dictionary),
      _selector(requests, &_translator.GetCellTextTranslator()) {
  _dictionary.SetCodePage(_page);
}

OmFactory::Data::Data(OmOutputTree* outputTree, const std::string& stringTablePath,
                      const std::string& codePage, const std::vector<OMSObjectSelector>& requests)
    : Data(outputTree, ExtNameStr(OrInstalled(stringTablePath)), codePage, requests) {}

OmFactory::Data::~Data() = default;

// Recovery.

void OmFactory::Data::Message(short code, unsigned length, const void* payload) {
  // The session's texts are in its own code page; the string functions work in it while the
  // session works, whatever other sessions on other threads use.
  const CodePage::Scope scope(*_page);
  try {
    ProcessMessage(code, length, payload);
  } catch (const std::bad_alloc&) {
    if (!_pProc) throw;
    SalvageOrKeep();
    _pProc.reset();
    throw;
  } catch (const OMSException& error) {
    Recovered(error);
    if (!_pProc) return;
    SalvageOrKeep();
  }
}

void OmFactory::Data::Recovered(const OMSException& error) {
  ++_recoveredErrors;
  _lastError = std::make_unique<OMSException>(error);
}

void OmFactory::Data::SalvageOrKeep() {
  try {
    Salvage();
  } catch (...) {
    // A procedure left open would refuse every later one, so it is closed; what it collected is
    // shown rather than lost with it.
    _messageHandler.reset();
    KeepCollected();
    EndProcedureState();
    throw;
  }
}

void OmFactory::Data::Salvage() {
  _droppingTCID = -1;
  _cells.Clear();
  _pivots.fill(nullptr);
  _selector.SetCommand("");
  _logBlock = nullptr;
  MarkCut();
  AppendProc(0, nullptr);
}

void OmFactory::Data::MarkCut() {
  if (_cutMarked) return;
  const OmOutputTree::Node at = _pProc->CutPoint();
  if (at.IsEnd()) return;
  const OmStringCell title("Output Missing", true);
  const OmOutputTree::Node node = Amputate(at, title, _codePage);
  _cutMarked = true;
  if (auto* block = dynamic_cast<OmTextBlock*>(node.Value())) {
    block->AddLine(_dictionary.LookUp("Out of memory collecting output."));
  }
  // After a failure inside the end of the procedure the block comes too late for the end's
  // translation and pruning: it gets them now.
  _pProc->FinishLatePart(node);
}

void OmFactory::Data::KeepCollected() noexcept {
  if (!_pProc || _procedureOffered) return;
  try {
    try {
      MarkCut();
    } catch (...) {
      // Unmarked output is still better than none.
    }
    _pProc->EndAsCollected();
    HandOver();
  } catch (...) {
    // The failure that brought us here goes on to the host; this one would only hide it.
  }
}

void OmFactory::Data::EndProcedureState() {
  _pProc.reset();
  _procedureEnding = false;
  _procedureOffered = false;
  _cutMarked = false;
  _pivots.fill(nullptr);
  _cells.Clear();
  _selector.SetCommand("");
  _logBlock = nullptr;
}

// Procedures.

void OmFactory::Data::BeginProcedure(std::int64_t id, std::string_view settingsText) {
  if (_pProc) throw OMSException("OmFactory::BeginProcedure() -- _pProc exists");
  BackendSettings settings;
  settings.setSettings(std::string(settingsText));
  const std::string procName = settings.getProcedureName();
  const std::string translatedName = settings.getTranslatedName();
  const std::string language = settings.getOutputLanguage();
  std::string codePage = settings.getCodePage();
  std::string locale = settings.getLocale();
  const bool unicode = settings.getUnicode();

  // A code page or locale that cannot be opened costs the procedure only its own conversion and
  // collation: it is built in the session's code page and the root locale, and the host is told
  // once for the procedure.
  std::string fallbacks;
  if (codePage != _codePage) {
    const CodePage* page = nullptr;
    try {
      page = &CodePage::Get(codePage);
    } catch (const OMSException& error) {
      fallbacks = "code page unavailable, \"" + _codePage + "\" used: " + error.Message();
      codePage = _codePage;
    }
    if (page != nullptr) {
      _page = page;
      CodePage::SetCurrent(*_page);
      _dictionary.SetCodePage(_page);
      _logBlock = nullptr;
      _codePage = codePage;
    }
  }
  if (unicode != _unicode || locale != _locale) {
    try {
      _tracker = Tracker(unicode, locale);
    } catch (const OMSException& error) {
      if (!fallbacks.empty()) fallbacks += "; ";
      fallbacks += "locale unavailable, the root locale used: " + error.Message();
      locale.clear();
      _tracker = Tracker(unicode, locale);
    }
    _locale = locale;
    _unicode = unicode;
  }
  if (!fallbacks.empty()) Recovered(OMSException("OmFactory::BeginProcedure() -- " + fallbacks));
  _dictionary.SetProcedureEx(procName);

  _pProc = std::make_unique<OmProcedureFactory>(procName, translatedName, language, codePage,
                                                locale, _selector, _translator,
                                                int(_tableVarMode), int(_tableValueMode));
  _pProc->setId(id);
  _pProc->SetBootstrapped(settings.getBootstrapped());
  _pProc->setSettings(settings);
}

icuTracker* OmFactory::Data::Tracker(bool unicode, const std::string& locale) {
  for (const auto& made : _trackers) {
    if (made->IsUnicode() == unicode && made->LocaleName() == locale) return made.get();
  }
  _trackers.push_back(SharedTracker(unicode, locale));
  return _trackers.back().get();
}

void OmFactory::Data::AppendProc(unsigned length, const void* payload) {
  std::string specs;
  if (payload != nullptr) {
    if (!_messageHandler) _messageHandler = std::make_unique<MessageHandler>();
    if (!_messageHandler->receiveMessage(static_cast<const char*>(payload), length)) return;
    unsigned kind = 0;
    bool flag = false;
    unsigned extra = 0;
    if (!_messageHandler->getNextPart(kind, flag, extra, specs)) {
      _messageHandler.reset();
      return;
    }
  }

  if (_pProc) {
    // Recovery from a failure inside EndProcedure appends what it had finished; it is not run
    // twice.
    if (!_procedureEnding) {
      _procedureEnding = true;
      _pProc->EndProcedure(std::uint32_t(specs.size()), specs.data(), _pooled, _observed,
                           _imputed, _diagnostics);
    }
    HandOver();
  }
  EndProcedureState();
  _messageHandler.reset();
}

void OmFactory::Data::HandOver() {
  OmOutputTree& procTree = _pProc->Tree();
  if (procTree.Size() < 2) return;
  auto* first = dynamic_cast<OmProcedure*>(procTree.Root().FirstChild().Value());
  if (first == nullptr) {
    // Output that escaped the procedure node (an IPC_END_NODE too many) cannot be appended;
    // a procedure left open would refuse every later one, so it is closed before the throw.
    _messageHandler.reset();
    EndProcedureState();
    throw std::bad_cast();
  }
  OmProcedure& procedure = *first;
  procedure.setOutlineVarDisplay(_outlineVarMode);
  procedure.setOutlineValueDisplay(_outlineValueMode);
  procedure.setTableVarDisplay(_tableVarMode);
  procedure.setTableValueDisplay(_tableValueMode);

  // Observers hear of a procedure once, even when recovery follows a failure among them.
  _procedureOffered = true;
  bool wanted = false;
  for (Observer* observer : _observers) {
    observer->ProcedureOutput(procTree);
    if (observer->WantsOutput()) wanted = true;
  }
  if (!wanted) return;
  const std::size_t procBefore = procTree.Size();
  const std::size_t outputBefore = _outputTree->Size();
  OmOutputTree::Node target =
      _outputTree->Empty() ? _outputTree->End(1) : _outputTree->Root().ChildEnd();
  _outputTree->Move(target, procTree.Root().FirstChild(), procTree.End());
  const std::size_t outputAfter = _outputTree->Size();
  if (procBefore + outputBefore != outputAfter + 1) {
    throw OMSException(
        "OmFactory::AppendProc() -- "
        "outputTreeSizeBefore+procTreeSizeBefore != outputTreeSizeAfter+1",
        double(procBefore + outputBefore), double(outputAfter + 1));
  }
  if (procTree.Size() != 1) {
    throw OMSException("OmFactory::AppendProc() -- procTree.Size() != 1",
                       double(procTree.Size()));
  }
  for (Observer* observer : _observers) observer->OutputAppended(*_outputTree);
}

// Log and page titles.

void OmFactory::Data::LogLine(std::string_view line) {
  if (NuvaroMBstrnicmp_A(line, "\x01REQUEST", 8) == 0) return;
  if (!_logProbe) _logProbe = std::make_unique<OmTextBlock>(_logTitle, _codePage, true);
  _logProbe->_keep = 1;
  if (!_pProc) _selector.Reset();
  _logProbe->Accept(_selector);
  if (!_logProbe->_keep) return;

  if (_logBlock == nullptr) {
    auto block = std::make_unique<OmTextBlock>(_logTitle, _codePage, true);
    _logBlock = block.get();
    _outputTree->AppendUnderRoot(std::move(block));
  }
  const std::string text(line);
  _logBlock->AddLine(text);
  for (Observer* observer : _observers) observer->LogLine(text);
  _logPending = true;
}

void OmFactory::Data::PageTitle(std::string_view title, std::string_view subtitle) {
  if (_logPending) {
    for (Observer* observer : _observers) observer->FlushLog();
    _logPending = false;
  }
  _logBlock = nullptr;
  auto page = std::make_unique<OmPageTitle>(_codePage);
  if (!title.empty()) page->AddLine(std::string(title));
  if (!subtitle.empty()) page->AddLine(std::string(subtitle));
  if (!_pProc) _selector.Reset();
  page->Accept(_selector);
  if (!page->_keep) return;
  const std::string titleText(title);
  const std::string subtitleText(subtitle);
  for (Observer* observer : _observers) observer->PageTitle(titleText, subtitleText);
  // The block the selector kept goes into the tree itself, so its record of the last kept object
  // stays valid.
  _outputTree->AppendUnderRoot(std::move(page));
}

// Settings.

void OmFactory::Data::OutputSetting(std::string_view keyword, std::string_view value) {
  const unsigned mode = DisplayMode(value);
  if (keyword == "OVARS") {
    _outlineVarMode = mode;
  } else if (keyword == "TVARS") {
    _tableVarMode = mode;
  } else if (keyword == "ONUMBERS") {
    _outlineValueMode = mode;
  } else if (keyword == "TNUMBERS") {
    _tableValueMode = mode;
  } else if (keyword == "OLANG") {
    if (const OmLanguage* language = OmFindLanguage(value)) {
      PathFactory& root = PathFactory::getPathInstance(PathFactory::kStringTables);
      SetStringTablePath(root.GetFullPath(language->folder));
      if (_dictionary.HasTable()) return;
      // A language that is not installed: English rather than the bare keys, and the host is told.
      const ExtNameStr english = root.GetFullPath("lang/en");
      std::error_code ec;
      if (!std::filesystem::is_regular_file(
              std::filesystem::path(english.GetGeneric()) / FacSTDictionary::kTableFileName, ec)) {
        return;  // no tables at all: the keys are the English texts
      }
      SetStringTablePath(english);
      const std::string warning = std::string("no string table for the output language ") +
                                  language->code + " (" + english.GetGeneric() +
                                  " used instead of " + language->folder + ")";
      if (std::find(_warnings.begin(), _warnings.end(), warning) == _warnings.end()) {
        _warnings.push_back(warning);
      }
    }
  } else if (keyword == "TFIT") {
    _labelsOnly = value == "Labels";
  } else if (keyword == "MIOUTPUT") {
    auto has = [value](std::string_view word) { return value.find(word) != value.npos; };
    _pooled = has("pooled");
    _observed = has("observed");
    _imputed = has("imputed");
    _diagnostics = has("diagnostics");
  }
}

void OmFactory::Data::SetStringTablePath(const ExtNameStr& path) {
  _stringTablePath = path;
  _dictionary.SetGlobalStringTable(path);
}

// Table operations shared by several messages.

OmPivotFactory& OmFactory::Data::CheckTCID(int tcid, bool makeCurrent) {
  if (tcid < 0 || tcid >= int(_pivots.size()) || _pivots[std::size_t(tcid)] == nullptr) {
    throw OMSException("OmFactory::CheckTCID() -- TCID invalid", tcid);
  }
  if (makeCurrent) _currentTCID = tcid;
  return *_pivots[std::size_t(tcid)];
}

bool OmFactory::Data::FastTableDrops(const OmPivotFactory& builder) const {
  return _destViewer && !builder.FirstCell() && builder.IsFastTable() &&
         !builder.Table().HasSplits() && !_pProc->IsBootstrapped();
}

OmPivotFactory* OmFactory::Data::TableBuilder(int tcid, bool fastRule) {
  if (!_pProc) return nullptr;
  OmPivotFactory& builder = CheckTCID(tcid);
  if (!builder.Table()._keep) return nullptr;
  if (fastRule && FastTableDrops(builder)) return nullptr;
  return &builder;
}

OmPivotFactory* OmFactory::Data::BuilderOrDiscard(int tcid, bool fastRule, int firstId,
                                                  int secondId) {
  OmPivotFactory* builder = nullptr;
  try {
    builder = TableBuilder(tcid, fastRule);
  } catch (...) {
    _cells.Discard(firstId);
    _cells.Discard(secondId);
    throw;
  }
  if (builder == nullptr) {
    _cells.Discard(firstId);
    _cells.Discard(secondId);
  }
  return builder;
}

void OmFactory::Data::TableProperty(OmPayload& payload, int tcid, int property, int cellId,
                                    std::unique_ptr<OmCellText> cell) {
  if (!_pProc) return;
  OmPivotTable& table = CheckTCID(tcid).Table();
  if (property < 0 || property == 4 || property > 5) return;
  if (property <= 2) {
    auto* number = dynamic_cast<OmNumber*>(cell.get());
    if (number == nullptr) throw OMSException("OmFactory::TableProperty() -- pNum");
    const double value = number->Value();
    if (property == 0) {
      table.RotateRowLabels(value != 0);
    } else if (property == 1) {
      table.RotateColumnLabels(value != 0);
    } else {
      table.OptionNumber(TruncatedInt(value));
    }
    return;
  }
  if (!table._keep) return;
  if (property == 3) {
    if (!cell) payload.Fail("cell id empty", cellId);
    const int d = table.FindDimension(*cell);
    if (d < 0) throw OMSException("OmFactory::TableProperty() -- dim < 0", -1);
    table.Dimension(d).setProperty3(true);
  } else {
    table.addMiscProperty("mergedSimple");
  }
}

void OmFactory::Data::Annotate(OmPayload& payload, int target, int textId,
                               std::unique_ptr<OmCellText> text,
                               std::unique_ptr<OmCellText> marker) {
  if (!_pProc) return;
  if (target < 0 || target > 7) {
    throw OMSException("OmFactory::Annotate() -- unknown annotation target", target, textId);
  }
  OmPivotFactory* builder = nullptr;
  if (target != 0) {
    builder = &CheckTCID(_currentTCID);
    if (!builder->Table()._keep || FastTableDrops(*builder)) return;
  }
  if (!text) payload.Fail("text cell id empty", textId);
  text->Accept(_tableFixer);
  if (marker) marker->Accept(_tableFixer);
  const OmFootnote footnote(std::move(text), std::move(marker));
  if (builder == nullptr) {
    _pProc->AnnotateHeading(footnote);
  } else {
    builder->Annotate(target, footnote);
  }
}

void OmFactory::Data::StoreCell(int id, std::unique_ptr<OmCellText> cell) {
  cell->setICUTracker(_tracker);
  _cells.Store(id, std::move(cell));
}
