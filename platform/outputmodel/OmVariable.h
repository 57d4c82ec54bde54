// A variable of the data set, shown by its name, its label or both, as the display mode says:
// 0 unset (shown as labels until a mode fixer sets it), 1 names, 2 labels, 3 both.
#pragma once

#include <string>

#include "platform/outputmodel/OmCellText.h"

class OmVariable : public OmCellText {
public:
  OmVariable(std::string name, std::string label, unsigned displayMode = 0);

  const std::string& Name() const { return _name; }
  const std::string& Label() const { return _label; }
  void setLabel(const std::string& label) { _label = label; }
  unsigned DisplayMode() const { return _mode; }
  void setDisplayMode(unsigned mode) { _mode = mode; }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kVariable; }
  // Mode 1: the name; 2 or 0: the label (the name when the label is empty); 3: "label [name]".
  std::string Text() const override;
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Variables are the same variable when their names are equal (labels and modes do not count).
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

private:
  std::string _name;
  std::string _label;
  unsigned _mode;
};
