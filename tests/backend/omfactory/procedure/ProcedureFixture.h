// Shared set-up of the procedure factory tests: a session's translator (on an empty string
// table), its OMS selector over a request list that a test fills, and helpers that build
// OMS requests and read a procedure's tree.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/OmPivotFactory.h"
#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "backend/omfactory/translate/OmOutputTreeTranslator.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "backend/omsopmgr/OMSSelector.h"
#include "backend/omsopmgr/OmFactorySelector.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/OutputTreeViews.h"

namespace proctest {

using treeviews::Outline;
using treeviews::PartsOf;

inline OmStringCell Text(const std::string& text) { return OmStringCell(text, false); }

// An OMS request for the given object type bits; subtype, when not empty, limits the tables it
// matches, and instance, when positive, the instance it selects.
inline OMSObjectSelector Request(unsigned types, const std::string& subtype = "",
                                 int instance = 0) {
  OMSObjectSelector request;
  request.SelectType(types);
  if (!subtype.empty() || instance > 0) {
    OMSSelector condition;
    if (!subtype.empty()) condition.AddSubtypes(subtype);
    if (instance > 0) condition.AddInstances(instance);
    request.AddIfOption(condition);
  }
  return request;
}

// Every object type except the ones in `without`.
inline unsigned AllTypesBut(unsigned without) { return 511u & ~without; }

// A table with one dimension "Statistics" and one cell per category; returns its builder.
inline OmPivotFactory* TableWithCells(OmProcedureFactory& proc, const std::string& label,
                                      const std::string& subtype,
                                      const std::vector<std::string>& categories) {
  OmPivotFactory* builder = proc.CreateTable(Text(label), Text(subtype), Text(label), false, false);
  const int d = builder->Dimension(Text("Statistics"));
  for (const std::string& category : categories) {
    builder->SetCategory(d, Text(category));
    builder->Cell(OmNumber(1.0));
  }
  return builder;
}

class ProcedureTest : public ::testing::Test {
protected:
  // A procedure with the session's selector and translator; the requests in _requests apply.
  std::unique_ptr<OmProcedureFactory> Begin(const std::string& name = "Descriptives",
                                            std::int64_t id = 1,
                                            const std::string& language = "en",
                                            const std::string& translated = "") {
    auto proc = std::make_unique<OmProcedureFactory>(name, translated, language, "UTF-8", "en_US",
                                                     _selector, _translator, 2, 3);
    proc->setId(id);
    return proc;
  }

  std::vector<OMSObjectSelector> _requests;
  FacSTDictionary _dictionary;  // no table: every key translates to itself
  OmOutputTreeTranslator _translator{&_dictionary};
  OmFactorySelector _selector{_requests, &_translator.GetCellTextTranslator()};
};

}  // namespace proctest
