// Applies the session's OMS requests to output objects as they are created: each procedure,
// heading, table, text block, page title, chart, tree, model and interactive object is shown to
// the selector once, and it writes its decision into the object's keep flag.
#pragma once

#include <string>
#include <vector>

#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmCellText;
class OmCellTextTranslator;

class OmFactorySelector : public OmOutputPart::Visitor {
public:
  // What one request has counted in the current procedure.
  struct InstanceInfo {
    int count = 0;                  // objects the request has matched so far
    OmOutputPart* last = nullptr;   // the object it kept most recently (borrowed), or null
  };

  // Both are borrowed for the session's life. Labels are matched on copies translated by
  // labelTranslator; a null translator matches them as they are.
  OmFactorySelector(const std::vector<OMSObjectSelector>& requests,
                    OmCellTextTranslator* labelTranslator);

  // A new procedure begins: every request counts from zero again. Objects are decided only
  // after a reset for the current request list.
  void Reset();

  // The command name that objects are matched with: the last procedure visited.
  void SetCommand(const std::string& command) { _command = command; }
  const std::string& Command() const { return _command; }

  const std::vector<InstanceInfo>& Instances() const { return _instances; }

  void Visit(OmPivotTable& table) override;
  // Records the procedure's command name, then decides the procedure as a heading.
  void Visit(OmProcedure& procedure) override;
  void Visit(OmHeading& heading) override;
  void Visit(OmTextBlock& text) override;
  void Visit(OmPageTitle& title) override;
  void Visit(OmChart& chart) override;
  void Visit(OmAnswerTree& tree) override;
  void Visit(OmModel& model) override;
  void Visit(OmInteractive& interactive) override;

private:
  // The label's text after translation, taken from a copy so the object's label stays as it is.
  std::string TranslatedLabel(const OmCellText* label) const;
  // Sets part's keep flag from the requests and counts it for the request that keeps it. The
  // subtype (null: none) and label are made into text only when there are requests to match:
  // a session without any keeps everything, and translating a label copy for every object and
  // log line cost it more than building the object.
  void Decide(short type, const OmCellText* subtype, const OmCellText* label, OmOutputPart& part);

  const std::vector<OMSObjectSelector>* _requests;
  std::string _command;
  std::vector<InstanceInfo> _instances;
  OmCellTextTranslator* _labelTranslator;
};
