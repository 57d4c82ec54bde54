// The base of every object of the output tree: procedures, headings, tables, text blocks, page
// titles, charts, trees, models and interactive objects. Each has a label cell, a builder slot,
// and two one-byte flags that the factory sets directly.
#pragma once

#include <memory>
#include <string>

#include "platform/outputmodel/OmCellText.h"

class OmPivotTable;
class OmProcedure;
class OmHeading;
class OmTextBlock;
class OmPageTitle;
class OmChart;
class OmAnswerTree;
class OmModel;
class OmInteractive;

// Whatever builds a part while its procedure is open (a table's pivot builder) lives here, owned
// by the part, until the end of the procedure releases it.
class OmBuilderSlot {
public:
  virtual ~OmBuilderSlot() = default;
};

class OmOutputPart {
public:
  // Post-processing of a procedure's tree visits parts by kind; every visit does nothing unless
  // overridden. An OmProcedure is visited as Visit(OmProcedure&) only.
  class Visitor {
  public:
    virtual ~Visitor() = default;
    virtual void Visit(OmPivotTable&) {}
    virtual void Visit(OmProcedure&) {}
    virtual void Visit(OmHeading&) {}
    virtual void Visit(OmTextBlock&) {}
    virtual void Visit(OmPageTitle&) {}
    virtual void Visit(OmChart&) {}
    virtual void Visit(OmAnswerTree&) {}
    virtual void Visit(OmModel&) {}
    virtual void Visit(OmInteractive&) {}
  };

  // The label is copied; a null label is allowed and stays null.
  explicit OmOutputPart(const OmCellText* label);
  explicit OmOutputPart(std::unique_ptr<OmCellText> label);
  OmOutputPart(const OmOutputPart&) = delete;
  OmOutputPart& operator=(const OmOutputPart&) = delete;
  virtual ~OmOutputPart();

  virtual void Accept(Visitor& visitor) = 0;
  // A short name of the kind ("Table", "Heading"...), for diagnostics and rendering.
  virtual const char* KindName() const = 0;

  // The text shown for the part in the outline.
  OmCellText* Label() const { return _label.get(); }
  void setLabel(std::unique_ptr<OmCellText> label) { _label = std::move(label); }
  void setLabel(const OmCellText& label) { _label = label.Clone(); }
  // The label's text, "" without a label.
  std::string LabelText() const;

  OmBuilderSlot* Builder() const { return _builder.get(); }
  void setBuilder(std::unique_ptr<OmBuilderSlot> builder) { _builder = std::move(builder); }
  // Detaches the builder; the slot becomes null.
  std::unique_ptr<OmBuilderSlot> ReleaseBuilder() { return std::move(_builder); }

  // Set directly by the factory. _keep: the part stays in the output (the OMS selection clears
  // it); _firstPart: the part starts a new page or section (cleared by a table message).
  unsigned char _firstPart = 1;
  unsigned char _keep = 1;

private:
  std::unique_ptr<OmCellText> _label;
  std::unique_ptr<OmBuilderSlot> _builder;
};
