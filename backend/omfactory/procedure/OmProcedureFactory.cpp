#include "backend/omfactory/procedure/OmProcedureFactory.h"

#include <typeinfo>
#include <utility>

#include "backend/omfactory/OmPivotFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactoryData.h"
#include "backend/omfactory/procedure/OmProcedurePoolers.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageHandler.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/settings/BackendSettings.h"

namespace {

// Output language codes and the language numbers that tables carry; codes compare exactly (case
// and region included), anything else is 0.
struct LanguageCode {
  const char* code;
  int lang;
};
constexpr LanguageCode kLanguages[] = {
    {"de",    1},
    {"es",    2},
    {"it",    3},
    {"ja",    4},
    {"ko",    5},
    {"pl",    6},
    {"ru",    7},
    {"zh-tw", 8},
    {"zh-cn", 9},
    {"pt_BR", 10},
    {"fr",    11},
};

int LanguageNumber(const std::string& code) {
  for (const LanguageCode& language : kLanguages) {
    if (code == language.code) return language.lang;
  }
  return 0;
}

// Tables and rich objects of procedure id are numbered in the block id << 20 (shifted as an
// unsigned word: ids come from the stream and may be negative or large).
std::int64_t IdBlock(std::int64_t id) { return std::int64_t(std::uint64_t(id) << 20); }

OmStringCell SplitsLabel() { return OmStringCell("Splits", false); }

}  // namespace

// ---- OmChildLabels -------------------------------------------------------------------------

std::size_t OmChildLabels::KeyHash::operator()(const Key& key) const {
  std::size_t h = std::hash<const void*>()(key.parent);
  h ^= key.hash + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
  return h ^ std::size_t(key.kind);
}

void OmChildLabels::Add(Kind kind, const OmOutputTree::Node& parent,
                        const OmOutputTree::Node& child) {
  const OmCellText* label = child.Value()->Label();
  if (label == nullptr) return;  // an unlabelled part is never found by label
  _children[Key{parent.Value(), kind, label->Hash()}].push_back(child);
}

OmOutputTree::Node OmChildLabels::Find(Kind kind, const OmOutputTree::Node& parent,
                                       const OmCellText& label) const {
  auto it = _children.find(Key{parent.Value(), kind, label.Hash()});
  if (it != _children.end()) {
    for (const OmOutputTree::Node& child : it->second) {
      const OmCellText* childLabel = child.Value()->Label();
      if (childLabel != nullptr && childLabel->Equals(label)) return child;
    }
  }
  return OmOutputTree::Node();
}

// ---- Data ----------------------------------------------------------------------------------

OmProcedureFactory::Data::Data(const std::string& outputLanguage, const std::string& codePage,
                               const std::string& locale, OmFactorySelector& selector,
                               OmOutputTreeTranslator& translator, int variableMode,
                               int valueMode)
    : _splitsTable(SplitsLabel(), SplitsLabel(), true),
      _settings(std::make_shared<const BackendSettings>()),
      _outputLanguage(outputLanguage),
      _variableMode(variableMode),
      _valueMode(valueMode),
      _translator(translator),
      _selector(selector),
      _codePage(codePage),
      _locale(locale),
      _poolers(&OmProcedurePoolers::Standard()) {
  auto splitsFactory = std::make_unique<OmPivotFactory>(&_splitsTable);
  _splitsFactory = splitsFactory.get();
  _splitsTable.setBuilder(std::move(splitsFactory));
}

OmProcedureFactory::Data::~Data() = default;

void OmProcedureFactory::Data::CheckOpen(const char* operation) const {
  if (_ended) {
    throw OMSException(std::string("OmProcedureFactory::") + operation +
                       " -- the procedure has ended");
  }
}

OmOutputTree::Node OmProcedureFactory::Data::Append(std::unique_ptr<OmOutputPart> part) {
  return _tree.Append(_current, std::move(part));
}

void OmProcedureFactory::Data::AddHeadingFootnote(OmPivotTable& table,
                                                  const OmFootnote& footnote) {
  const int index = table.Footnote(footnote, false);
  table.FootnoteAt(index).AddReference();
  if (OmCellText* label = table.Label()) label->Footnote(std::int16_t(index));
}

// ---- construction --------------------------------------------------------------------------

OmProcedureFactory::OmProcedureFactory(const std::string& procName,
                                       const std::string& translatedName,
                                       const std::string& outputLanguage,
                                       const std::string& codePage, const std::string& locale,
                                       OmFactorySelector& selector,
                                       OmOutputTreeTranslator& translator, int variableMode,
                                       int valueMode)
    : _my(std::make_unique<Data>(outputLanguage, codePage, locale, selector, translator,
                                 variableMode, valueMode)) {
  auto procedure =
      std::make_unique<OmProcedure>(OmStringCell(procName, true), outputLanguage, codePage, locale);
  procedure->setTranslatedName(translatedName);
  OmProcedure& proc = *procedure;
  _my->_current = _my->_tree.AppendUnderRoot(std::move(procedure));
  if (!_my->_current.IsRoot()) {
    _my->_labels.Add(OmChildLabels::kHeading, _my->_current.Parent(), _my->_current);
  }
  // Instance counts are per procedure; the procedure itself sets the command that later objects
  // are matched with.
  selector.Reset();
  proc.Accept(selector);
}

OmProcedureFactory::~OmProcedureFactory() {
  // Builders point at their tables: they go before the tree destroys the tables.
  for (OmOutputPart* part : _my->_tree) {
    if (part != nullptr) part->ReleaseBuilder();
  }
}

OmOutputTree& OmProcedureFactory::Tree() { return _my->_tree; }
const OmOutputTree& OmProcedureFactory::Tree() const { return _my->_tree; }

void OmProcedureFactory::setId(std::int64_t id) {
  _my->_id = id;
  _my->_objectCount = IdBlock(id);
}
std::int64_t OmProcedureFactory::getId() const { return _my->_id; }

void OmProcedureFactory::SetBootstrapped(bool bootstrapped) { _my->_bootstrapped = bootstrapped; }
bool OmProcedureFactory::IsBootstrapped() const { return _my->_bootstrapped; }

void OmProcedureFactory::setSettings(const BackendSettings& settings) {
  // A fresh copy, so that tables already given the old settings keep them unchanged.
  _my->_settings = std::make_shared<const BackendSettings>(settings);
}
const BackendSettings& OmProcedureFactory::getSettings() const { return *_my->_settings; }
std::shared_ptr<const BackendSettings> OmProcedureFactory::SharedSettings() const {
  return _my->_settings;
}

void OmProcedureFactory::setPoolers(const OmProcedurePoolers& poolers) {
  _my->_poolers = &poolers;
}

// ---- headings ------------------------------------------------------------------------------

void OmProcedureFactory::Node(const OmCellText& text) {
  Data& my = *_my;
  my.CheckOpen("Node");
  OmOutputTree::Node existing = my._labels.Find(OmChildLabels::kHeading, my._current, text);
  if (!existing.IsEnd()) {
    my._current = existing;
    return;
  }
  auto heading = std::make_unique<OmHeading>(text);
  OmHeading& created = *heading;
  created.Accept(my._selector);
  OmOutputTree::Node node = my.Append(std::move(heading));
  my._labels.Add(OmChildLabels::kHeading, my._current, node);
  my._current = node;
  my._textBlock = nullptr;
}

void OmProcedureFactory::EndNode() {
  _my->CheckOpen("EndNode");
  // The tree's root has no parent: ListTree reports that.
  _my->_current = _my->_current.Parent();
}

OmOutputTree::Node OmProcedureFactory::CutPoint() {
  Data& my = *_my;
  // Past too many IPC_END_NODEs the position is the tree's root, which is no heading.
  if (!my._ended && !my._current.IsEnd() && !my._current.IsRoot()) return my._current;
  if (my._tree.Empty() || !my._tree.Root().HasChildren()) return my._tree.End();
  OmOutputTree::Node procedure = my._tree.Root().FirstChild();
  if (dynamic_cast<OmProcedure*>(procedure.Value()) == nullptr) return my._tree.End();
  return procedure;
}

void OmProcedureFactory::OutlineText(const OmCellText& text) {
  OmOutputTree::Node root = _my->_tree.Root();
  if (root.IsEnd()) return;
  OmOutputTree::Node first = root.FirstChild();
  if (first.IsEnd()) return;
  if (auto* procedure = dynamic_cast<OmProcedure*>(first.Value())) procedure->setOutlineText(text);
}

void OmProcedureFactory::AnnotateHeading(const OmFootnote& footnote) {
  Data& my = *_my;
  my.CheckOpen("AnnotateHeading");
  auto* heading = dynamic_cast<OmHeading*>(my._current.Value());
  if (heading == nullptr) throw std::bad_cast();
  heading->AddFootnote(footnote);
  // Tables made later get the footnote from the heading; those already below it get it now.
  const OmOutputTree::Node last = my._current.LastDescendant();
  if (last == my._current) return;
  for (OmOutputTree::Node n = my._current.Next();; ++n) {
    if (auto* table = dynamic_cast<OmPivotTable*>(n.Value())) Data::AddHeadingFootnote(*table, footnote);
    if (n == last) break;
  }
}

// ---- tables --------------------------------------------------------------------------------

OmPivotTable* OmProcedureFactory::FindTable(const OmCellText& label) {
  Data& my = *_my;
  my.CheckOpen("FindTable");
  OmOutputTree::Node found = my._labels.Find(OmChildLabels::kTable, my._current, label);
  return found.IsEnd() ? nullptr : static_cast<OmPivotTable*>(found.Value());
}

OmPivotFactory* OmProcedureFactory::CreateTable(const OmCellText& label,
                                                const OmCellText& templateName,
                                                const OmCellText& title, bool split,
                                                bool destViewer) {
  (void)destViewer;
  Data& my = *_my;
  my.CheckOpen("CreateTable");
  if (OmPivotTable* existing = FindTable(label)) {
    return dynamic_cast<OmPivotFactory*>(existing->Builder());
  }

  auto table = std::make_unique<OmPivotTable>(label, templateName, split);
  ++my._tableCount;
  table->TableId(my._tableCount | IdBlock(my._id));
  table->TableLocale(my._locale);
  table->setBackendOwns(true);
  table->SetTableTitle(title);
  // A bootstrapped procedure's tables are selected at its end, after pooling.
  if (!my._bootstrapped) my._selector.Visit(*table);

  // Heading footnotes, root-most heading first.
  std::vector<OmOutputTree::Node> path;
  for (OmOutputTree::Node n = my._current;; n = n.Parent()) {
    path.push_back(n);
    if (n.IsRoot()) break;
  }
  if (split) {
    table->CopyDimensions(my._splitsTable);
    table->Rows().Assign(std::as_const(my._splitsTable).Rows());
    table->Columns().Assign(std::as_const(my._splitsTable).Columns());
    table->Layers().Assign(std::as_const(my._splitsTable).Layers());
  }
  for (auto n = path.rbegin(); n != path.rend(); ++n) {
    if (auto* heading = dynamic_cast<OmHeading*>(n->Value())) {
      for (const OmFootnote& footnote : heading->Footnotes()) {
        Data::AddHeadingFootnote(*table, footnote);
      }
    }
  }
  OmPivotTable& made = *table;
  std::unique_ptr<OmPivotFactory> builder =
      split ? std::make_unique<OmPivotFactory>(&made, *my._splitsFactory)
            : std::make_unique<OmPivotFactory>(&made);
  OmPivotFactory* result = builder.get();
  made.setBuilder(std::move(builder));

  OmOutputTree::Node node = my.Append(std::move(table));
  my._labels.Add(OmChildLabels::kTable, my._current, node);
  my._textBlock = nullptr;
  made.setLang(LanguageNumber(my._outputLanguage));
  made.setVariableMode(unsigned(my._variableMode));
  made.setValueMode(unsigned(my._valueMode));
  return result;
}

// ---- text ----------------------------------------------------------------------------------

void OmProcedureFactory::BeginTextBlock(const OmCellText& label) {
  Data& my = *_my;
  my.CheckOpen("BeginTextBlock");
  auto block = std::make_unique<OmTextBlock>(label, my._codePage);
  OmTextBlock& made = *block;
  made.Accept(my._selector);
  my.Append(std::move(block));
  my._textBlock = &made;
}

void OmProcedureFactory::PrintLine(const char* text, unsigned length) {
  Data& my = *_my;
  my.CheckOpen("PrintLine");
  if (text == nullptr && length > 0) {
    throw OMSException("OmProcedureFactory::PrintLine -- text == nullptr", double(length));
  }
  if (my._textBlock == nullptr) BeginTextBlock(OmStringCell("Text Output", true));
  if (my._textBlock->_keep == 0) return;
  my._textBlock->AddLine(length > 0 ? std::string(text, length) : std::string());
}

// ---- splits --------------------------------------------------------------------------------

void OmProcedureFactory::SetCategory(const OmCellText& splitVariable, const OmCellText& category) {
  Data& my = *_my;
  my.CheckOpen("SetCategory");
  // The first split variable keeps its order; later ones are sorted within the earlier ones.
  const bool sort = my._splitsFactory->Dimension(splitVariable) != 0;
  TableSplitSetter setter(splitVariable, category, sort);
  my._splitsTable.Accept(setter);
  std::vector<OmOutputPart*> parts;
  parts.reserve(my._tree.Size());
  for (OmOutputPart* part : my._tree) parts.push_back(part);
  for (OmOutputPart* part : parts) {
    if (part != nullptr) part->Accept(setter);
  }
}

OmProcedureFactory::TableSplitSetter::TableSplitSetter(const OmCellText& splitVariable,
                                                       const OmCellText& category, bool sort)
    : _splitVariable(splitVariable), _category(category), _sort(sort) {}

void OmProcedureFactory::TableSplitSetter::Visit(OmPivotTable& table) {
  auto* builder = dynamic_cast<OmPivotFactory*>(table.Builder());
  if (builder == nullptr) throw OMSException("TableSplitSetter::Visit -- hint doesn't exist");
  if (!table.HasSplits()) return;
  const int d = builder->Dimension(_splitVariable);
  builder->SetCategory(d, _category);
  if (_sort) builder->MarkSortDimension(0);
}
