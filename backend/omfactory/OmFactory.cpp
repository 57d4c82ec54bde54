#include "backend/omfactory/OmFactory.h"

#include "backend/omfactory/OmFactoryData.h"
#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmStringDataValue.h"
#include "platform/outputmodel/OmVariable.h"

// Mode fixer.

OmFactory::ModeFixer::ModeFixer(const unsigned& variableMode, const unsigned& valueMode)
    : _variableMode(variableMode), _valueMode(valueMode) {}

void OmFactory::ModeFixer::Visit(OmVariable& variable) {
  if (variable.DisplayMode() == 0) variable.setDisplayMode(_variableMode);
}

void OmFactory::ModeFixer::Visit(OmNumDataValue& value) {
  if (value.DisplayMode() == 0) value.setDisplayMode(_valueMode);
}

void OmFactory::ModeFixer::Visit(OmStringDataValue& value) {
  if (value.DisplayMode() == 0) value.setDisplayMode(_valueMode);
}

namespace {
// Depth first through the arguments and repeat lists; the pattern is not an argument.
void FixParts(const OmComposite::Part& part, OmFactory::ModeFixer& fixer) {
  for (const auto& child : part.Parts()) {
    if (child->Cell() != nullptr) child->Cell()->Accept(fixer);
    FixParts(*child, fixer);
  }
}
}  // namespace

void OmFactory::ModeFixer::Visit(OmComposite& composite) { FixParts(composite.Root(), *this); }

// Session.

OmFactory::OmFactory(OmOutputTree* outputTree, const ExtNameStr& stringTablePath,
                     const std::string& codePage, const std::vector<OMSObjectSelector>& requests)
    : _my(std::make_unique<Data>(outputTree, stringTablePath, codePage, requests)) {}

OmFactory::OmFactory(OmOutputTree* outputTree, const std::string& stringTablePath,
                     const std::string& codePage, const std::vector<OMSObjectSelector>& requests)
    : _my(std::make_unique<Data>(outputTree, stringTablePath, codePage, requests)) {}

OmFactory::~OmFactory() = default;

void OmFactory::Message(short code, unsigned int length, const void* payload) {
  _my->Message(code, length, payload);
}

OmOutputTree* OmFactory::Tree() const { return _my->_outputTree; }

void OmFactory::OutlineVarDisplay(unsigned int mode) { _my->_outlineVarMode = mode; }
void OmFactory::TableVarDisplay(unsigned int mode) { _my->_tableVarMode = mode; }
void OmFactory::OutlineValueDisplay(unsigned int mode) { _my->_outlineValueMode = mode; }
void OmFactory::TableValueDisplay(unsigned int mode) { _my->_tableValueMode = mode; }
unsigned int OmFactory::OutlineVarDisplayMode() const { return _my->_outlineVarMode; }
unsigned int OmFactory::TableVarDisplayMode() const { return _my->_tableVarMode; }
unsigned int OmFactory::OutlineValueDisplayMode() const { return _my->_outlineValueMode; }
unsigned int OmFactory::TableValueDisplayMode() const { return _my->_tableValueMode; }

void OmFactory::SwapBytes(bool swap) { _my->_swapBytes = swap; }
bool OmFactory::SwapBytes() const { return _my->_swapBytes; }
void OmFactory::setDestViewer(bool destViewer) {
  _my->_destViewer = destViewer;
  _my->_droppingTCID = -1;
}

void OmFactory::SetStringTablePath(const ExtNameStr& path) { _my->SetStringTablePath(path); }

void OmFactory::SetStringTablePath(const std::string& path) {
  ExtNameStr name;
  name.SetGeneric(path);
  _my->SetStringTablePath(name);
}

void OmFactory::Register(Observer* observer) {
  if (observer != nullptr) _my->_observers.push_back(observer);
}

const OmCellText* OmFactory::PendingCell(int id) const { return _my->_cells.Peek(id); }
std::size_t OmFactory::CellSlotCount() const { return _my->_cells.Size(); }
OmProcedureFactory* OmFactory::Procedure() const { return _my->_pProc.get(); }
int OmFactory::CurrentTCID() const { return _my->_currentTCID; }
const ExtNameStr& OmFactory::StringTablePath() const { return _my->_stringTablePath; }
bool OmFactory::LabelsOnly() const { return _my->_labelsOnly; }

void OmFactory::ImputationOutput(bool& pooled, bool& observed, bool& imputed,
                                 bool& diagnostics) const {
  pooled = _my->_pooled;
  observed = _my->_observed;
  imputed = _my->_imputed;
  diagnostics = _my->_diagnostics;
}

std::size_t OmFactory::RecoveredErrorCount() const { return _my->_recoveredErrors; }
const OMSException* OmFactory::LastRecoveredError() const { return _my->_lastError.get(); }
const std::vector<std::string>& OmFactory::Warnings() const { return _my->_warnings; }
