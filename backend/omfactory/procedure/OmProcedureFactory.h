// Builds the output of one run of one procedure: the procedure node with its headings, tables, text
// blocks, split tables, charts, trees, models and interactive objects, and finishes it when the
// procedure ends. The factory session makes one per IPC_BEGIN_PROCEDURE and takes Tree() after
// EndProcedure.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/outputmodel/OmOutputPart.h"
#include "platform/outputmodel/OmOutputTree.h"

class BackendSettings;
class OmCellText;
class OmChart;
class OmFactorySelector;
class OmFootnote;
class OmOutputTreeTranslator;
class OmPivotFactory;
class OmPivotTable;
class OmProcedurePoolers;

class OmProcedureFactory {
public:
  // Makes the procedure node under a fresh tree and shows it to the selector, whose per-procedure
  // instance counts start afresh. selector and translator are the session's and must outlive this.
  OmProcedureFactory(const std::string& procName, const std::string& translatedName,
                     const std::string& outputLanguage, const std::string& codePage,
                     const std::string& locale, OmFactorySelector& selector,
                     OmOutputTreeTranslator& translator, int variableMode, int valueMode);
  OmProcedureFactory(const OmProcedureFactory&) = delete;
  OmProcedureFactory& operator=(const OmProcedureFactory&) = delete;
  // Destroys the builders of the parts still in the tree before the tree itself.
  ~OmProcedureFactory();

  OmOutputTree& Tree();
  const OmOutputTree& Tree() const;

  // The procedure id; tables, charts and interactive objects are numbered in the block id << 20.
  void setId(std::int64_t id);
  std::int64_t getId() const;
  // A bootstrapped procedure's tables are shown to the selector only at its end.
  void SetBootstrapped(bool bootstrapped);
  bool IsBootstrapped() const;
  void setSettings(const BackendSettings& settings);
  const BackendSettings& getSettings() const;
  // The same settings, shared, for OmPivotTable::setBackendSettings.
  std::shared_ptr<const BackendSettings> SharedSettings() const;

  // Descends into the child heading with that text, making it when there is none.
  void Node(const OmCellText& text);
  // Goes back to the parent of the current node. Fails on the tree's root.
  void EndNode();
  // Sets the outline text of the procedure node.
  void OutlineText(const OmCellText& text);

  // Makes a table under the current node (or finds the one with that label among its children)
  // and returns its builder, which the table owns until the end of the procedure. split makes a
  // table that follows the split categories; destViewer is not used.
  OmPivotFactory* CreateTable(const OmCellText& label, const OmCellText& templateName,
                              const OmCellText& title, bool split, bool destViewer);
  // The table with that label among the current node's children (not deeper), or null.
  OmPivotTable* FindTable(const OmCellText& label);

  // Starts a text block under the current node; PrintLine appends to it.
  void BeginTextBlock(const OmCellText& label);
  // Appends one line to the current text block ("Text Output" is made when there is none); a
  // line for a block that OMS did not keep is dropped.
  void PrintLine(const char* text, unsigned length);

  // Moves every split table to the category of that split variable.
  void SetCategory(const OmCellText& splitVariable, const OmCellText& category);
  // Adds a footnote to the current heading and to every table below it, now and later. Throws
  // std::bad_cast when the current node is not a heading.
  void AnnotateHeading(const OmFootnote& footnote);

  // Chart, interactive-object and tree messages: index names the object within its kind, type
  // the content type. ChartXmlMessage returns the chart for type 3, null otherwise.
  OmChart* ChartXmlMessage(int index, int type, int subtype, const char* data, unsigned length);
  void InteractiveJSONMessage(int index, int type, const char* data, unsigned length);
  void TreeXmlMessage(int index, int type, const char* data, unsigned length, unsigned extra);
  // One part of a multi-part model message; the models are made when the last part arrives.
  void ModelPMMLMessage(const void* payload, unsigned length);
  // Accepted and ignored.
  void GraphicsMessage(bool, const char*, unsigned long, bool);

  // Finishes the procedure: releases the builders, drops a procedure that has nothing to show,
  // prunes empty headings and excluded parts, runs the poolers, the selector (bootstrapped
  // procedures), the translators and the sorter over every part, and sets the translated name.
  // specs holds specsLength bytes of serialized bootstrap specifications (0: not bootstrapped);
  // the four flags are the MIOUTPUT options handed to the imputation pooler.
  void EndProcedure(std::uint32_t specsLength, const char* specs, bool pooled, bool observed,
                    bool imputed, bool diagnostics);
  // The makers of the poolers that EndProcedure runs (borrowed; OmProcedurePoolers::Standard()
  // unless set).
  void setPoolers(const OmProcedurePoolers& poolers);

  // Recovery after a failure (the session's).
  // The heading where output was being built: the current heading while the procedure is open,
  // the procedure node once EndProcedure has begun (the building position may be gone then); an
  // end position when the tree holds no procedure node.
  OmOutputTree::Node CutPoint();
  // A part that recovery added after EndProcedure had begun goes through the end's last steps:
  // its label is translated, the tree pruned again and the procedure given its translated name.
  void FinishLatePart(OmOutputTree::Node node);
  // Ends the procedure with the output as collected when finishing it failed: builders are
  // released, a procedure with nothing to show dropped, excluded parts and empty headings
  // pruned; no pooling, translation or sorting.
  void EndAsCollected();

  // Moves the builder of every split table to one category of one split variable; with sort
  // set, the table's split dimension is marked for ascending sorting.
  class TableSplitSetter : public OmOutputPart::Visitor {
  public:
    // Both cell texts are borrowed for the visitor's life.
    TableSplitSetter(const OmCellText& splitVariable, const OmCellText& category, bool sort);
    // Throws when the table has no builder; tables without splits are left alone.
    void Visit(OmPivotTable& table) override;

  private:
    const OmCellText& _splitVariable;
    const OmCellText& _category;
    bool _sort;
  };

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
