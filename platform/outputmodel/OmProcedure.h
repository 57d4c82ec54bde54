// The output of one run of one procedure: a heading labelled with the procedure's name, carrying
// the command name that OMS selection matches, the translated name, the outline text and the
// display modes the procedure's texts were made with.
#pragma once

#include <memory>
#include <string>

#include "platform/outputmodel/OmHeading.h"

class OmProcedure : public OmHeading {
public:
  // The command name is the label's text at construction.
  OmProcedure(const OmCellText& label, std::string outputLanguage, std::string codePage,
              std::string locale);

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Procedure"; }

  const std::string& CommandName() const { return _command; }
  void setCommandName(const std::string& command) { _command = command; }
  const std::string& TranslatedName() const { return _translated; }
  void setTranslatedName(const std::string& name) { _translated = name; }
  const std::string& OutputLanguage() const { return _language; }
  const std::string& CodePage() const { return _codePage; }
  const std::string& Locale() const { return _locale; }

  // A text shown in the outline beside the procedure (a copy is kept); null when none.
  OmCellText* OutlineText() const { return _outlineText.get(); }
  void setOutlineText(const OmCellText& text) { _outlineText = text.Clone(); }

  // Display modes (0 unset, 1 names or values, 2 labels, 3 both).
  unsigned OutlineVarDisplay() const { return _outlineVar; }
  unsigned OutlineValueDisplay() const { return _outlineValue; }
  unsigned TableVarDisplay() const { return _tableVar; }
  unsigned TableValueDisplay() const { return _tableValue; }
  void setOutlineVarDisplay(unsigned mode) { _outlineVar = mode; }
  void setOutlineValueDisplay(unsigned mode) { _outlineValue = mode; }
  void setTableVarDisplay(unsigned mode) { _tableVar = mode; }
  void setTableValueDisplay(unsigned mode) { _tableValue = mode; }

private:
  std::string _command;
  std::string _translated;
  std::string _language;
  std::string _codePage;
  std::string _locale;
  std::unique_ptr<OmCellText> _outlineText;
  unsigned _outlineVar = 2;
  unsigned _outlineValue = 2;
  unsigned _tableVar = 2;
  unsigned _tableValue = 2;
};
