// One output session of the server: the host feeds every output message of every procedure to
// Message; the session decodes them, builds each procedure's output and appends it to the host's
// output tree, writes log blocks and page titles, and recovers on its own from failures inside a
// procedure.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class ExtNameStr;
class OMSException;
class OMSObjectSelector;
class OmOutputTree;
class OmProcedureFactory;

class OmFactory {
public:
  // A listener told about finished procedures, log lines and page titles, always synchronously on
  // the thread that calls Message, in registration order. Only WantsOutput must be given: the
  // other notifications do nothing unless overridden.
  class Observer {
  public:
    virtual ~Observer() = default;
    // A procedure ended with output; procTree is its tree, root first.
    virtual void ProcedureOutput(OmOutputTree& procTree) { (void)procTree; }
    // Asked right after ProcedureOutput: true moves the procedure into the session's output tree.
    virtual bool WantsOutput() = 0;
    virtual void LogLine(const std::string& line) { (void)line; }
    // Log lines were added since the last flush (IPC_FLUSH_LOG, or a page title follows).
    virtual void FlushLog() {}
    virtual void Refresh() {}
    virtual void PageTitle(const std::string& title, const std::string& subtitle) {
      (void)title;
      (void)subtitle;
    }
    // A procedure was appended to the session's output tree.
    virtual void OutputAppended(OmOutputTree& outputTree) { (void)outputTree; }
  };

  // Gives variables and data values whose display mode is unset (0) the session's mode for one
  // side (outline or table), walking into composite arguments. It refers to the session's modes,
  // so a later change of a mode takes effect at once.
  class ModeFixer : public OmCellText::Visitor {
  public:
    ModeFixer(const unsigned& variableMode, const unsigned& valueMode);
    void Visit(OmVariable& variable) override;
    void Visit(OmNumDataValue& value) override;
    void Visit(OmStringDataValue& value) override;
    void Visit(OmComposite& composite) override;

  private:
    const unsigned& _variableMode;
    const unsigned& _valueMode;
  };

  // outputTree is borrowed and must outlive the session; so must requests (the OMS request list,
  // referred to, not copied). stringTablePath is the string-table location, codePage the code
  // page of log blocks and page titles until a procedure names another.
  OmFactory(OmOutputTree* outputTree, const ExtNameStr& stringTablePath,
            const std::string& codePage, const std::vector<OMSObjectSelector>& requests);
  OmFactory(OmOutputTree* outputTree, const std::string& stringTablePath,
            const std::string& codePage, const std::vector<OMSObjectSelector>& requests);
  // A session owns an open procedure, cells and buffers: it is neither copied nor moved.
  OmFactory(const OmFactory&) = delete;
  OmFactory& operator=(const OmFactory&) = delete;
  ~OmFactory();

  // Handles one message: code, payload length in bytes, payload. The payload must be writable:
  // numeric fields are byte-reversed in place under SwapBytes and a few fields are rewritten
  // (clamped lengths, format top bytes), as the sender's protocol expects. An OMSException inside
  // a procedure ends in recovery (the procedure is appended, marked "Output Missing" where its
  // output was cut); outside one it is dropped. std::bad_alloc reaches the caller after recovery;
  // other exceptions pass through. When recovery itself fails, the output collected so far is
  // appended as it stands and that failure reaches the caller.
  void Message(short code, unsigned int length, const void* payload);

  OmOutputTree* Tree() const;

  // Display modes: 0 unset, 1 names or values, 2 labels, 3 both. All start at 2.
  void OutlineVarDisplay(unsigned int mode);
  void TableVarDisplay(unsigned int mode);
  void OutlineValueDisplay(unsigned int mode);
  void TableValueDisplay(unsigned int mode);
  unsigned int OutlineVarDisplayMode() const;
  unsigned int TableVarDisplayMode() const;
  unsigned int OutlineValueDisplayMode() const;
  unsigned int TableValueDisplayMode() const;

  // Whether payload numbers arrive in the other byte order than this machine's.
  void SwapBytes(bool swap);
  bool SwapBytes() const;
  // Output goes to the viewer: cells of fast tables after the first are not needed then.
  void setDestViewer(bool destViewer);

  // Switches the string tables (the output language) for later look-ups.
  void SetStringTablePath(const ExtNameStr& path);
  void SetStringTablePath(const std::string& path);

  // Adds a listener; it is borrowed and must outlive the session (no duplicate check, no removal;
  // null is ignored).
  void Register(Observer* observer);

  // Inspection, for hosts and tests.
  // The cell waiting in slot id, or null (empty slot or id never used).
  const OmCellText* PendingCell(int id) const;
  // How many slots the cell slot table holds (one past the highest id stored since it was cleared).
  std::size_t CellSlotCount() const;
  // The open procedure, or null.
  OmProcedureFactory* Procedure() const;
  // The TCID that table messages without one address; -1 before the first table.
  int CurrentTCID() const;
  const ExtNameStr& StringTablePath() const;
  bool LabelsOnly() const;
  // The MIOUTPUT flags handed to the end of each procedure.
  void ImputationOutput(bool& pooled, bool& observed, bool& imputed, bool& diagnostics) const;
  // How many OMSExceptions Message has recovered from or dropped, and the last of them (null
  // before the first), so that a host can report failures the stream itself never sees. A
  // procedure whose code page or locale cannot be opened counts too: it is built in the
  // session's code page and the root locale instead.
  std::size_t RecoveredErrorCount() const;
  const OMSException* LastRecoveredError() const;
  // What the session did in place of what the stream asked, without cutting output (an output
  // language without a string table is shown in English), each said once, oldest first.
  const std::vector<std::string>& Warnings() const;

private:
  // The session state and the dispatcher (OmFactoryData.h).
  struct Data;
  std::unique_ptr<Data> _my;
};
