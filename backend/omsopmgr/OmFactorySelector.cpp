#include "backend/omsopmgr/OmFactorySelector.h"

#include <memory>

#include "backend/omfactory/translate/OmCellTextTranslator.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/strings/NuvaroMB.h"

OmFactorySelector::OmFactorySelector(const std::vector<OMSObjectSelector>& requests,
                                     OmCellTextTranslator* labelTranslator)
    : _requests(&requests), _labelTranslator(labelTranslator) {}

void OmFactorySelector::Reset() {
  _instances.assign(_requests->size(), InstanceInfo{});
}

void OmFactorySelector::Visit(OmPivotTable& table) {
  Decide(table.IsWarnings() ? OMSObjectSelector::kWarnings : OMSObjectSelector::kTables,
         &table.TemplateName(), table.Label(), table);
}

void OmFactorySelector::Visit(OmProcedure& procedure) {
  _command = procedure.CommandName();
  Visit(static_cast<OmHeading&>(procedure));
}

void OmFactorySelector::Visit(OmHeading& heading) {
  Decide(OMSObjectSelector::kHeadings, nullptr, heading.Label(), heading);
}

void OmFactorySelector::Visit(OmTextBlock& text) {
  Decide(text.IsLog() ? OMSObjectSelector::kLogs : OMSObjectSelector::kTexts, nullptr,
         text.Label(), text);
}

void OmFactorySelector::Visit(OmPageTitle& title) {
  Decide(OMSObjectSelector::kPageTitles, nullptr, title.Label(), title);
}

void OmFactorySelector::Visit(OmChart& chart) {
  Decide(OMSObjectSelector::kCharts, nullptr, chart.Label(), chart);
}

void OmFactorySelector::Visit(OmAnswerTree& tree) {
  Decide(OMSObjectSelector::kTrees, nullptr, tree.Label(), tree);
}

void OmFactorySelector::Visit(OmModel& model) {
  Decide(OMSObjectSelector::kModels, nullptr, model.Label(), model);
}

void OmFactorySelector::Visit(OmInteractive& interactive) {
  Decide(OMSObjectSelector::kModels, nullptr, interactive.Label(), interactive);
}

std::string OmFactorySelector::TranslatedLabel(const OmCellText* label) const {
  if (label == nullptr) return "";
  if (_labelTranslator == nullptr) return label->Text();
  std::unique_ptr<OmCellText> copy = label->Clone();
  copy->Accept(*_labelTranslator);
  if (copy->Kind() == OmCellText::kComposite) static_cast<OmComposite&>(*copy).Substitute();
  return copy->Text();
}

void OmFactorySelector::Decide(short type, const OmCellText* subtypeCell,
                               const OmCellText* labelCell, OmOutputPart& part) {
  const std::vector<OMSObjectSelector>& requests = *_requests;
  if (requests.empty()) {
    part._keep = 1;
    return;
  }
  if (_instances.size() != requests.size()) {
    throw OMSException("OmFactorySelector::Decide -- instances.size() == requests.size()",
                       double(_instances.size()), double(requests.size()));
  }
  const std::string subtype = subtypeCell != nullptr ? subtypeCell->Text() : std::string();
  const std::string label = TranslatedLabel(labelCell);

  const bool notes =
      NuvaroMBstricmp_A(subtype, "NOTES") == 0 && NuvaroMBstricmp_A(label, "NOTES") == 0;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    const OMSObjectSelector& request = requests[i];
    if (notes && !request.ShowNotesTables()) continue;
    if (!request.IsObjectSelected(type, _command, subtype, label)) continue;

    // A request counts every object it matches, selected by number or not.
    InstanceInfo& instance = _instances[i];
    ++instance.count;
    if (request.IsLastInstanceSelected()) {
      // The object kept before as the last instance is no longer the last; it stays only when
      // its own number is selected.
      if (instance.last != nullptr && !request.IsInstanceSelected(instance.count - 1)) {
        instance.last->_keep = 0;
      }
      instance.last = &part;
      part._keep = 1;
      return;
    }
    if (request.IsInstanceSelected(instance.count)) {
      instance.last = &part;
      part._keep = 1;
      return;
    }
  }
  part._keep = 0;
}
