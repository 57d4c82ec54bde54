// A numeric value of a variable with its value label, shown by value, label or both as the
// display mode says (0 unset, 1 values, 2 labels, 3 both); the value is formatted by its format
// word like an OmNumber.
#pragma once

#include <cstdint>
#include <string>

#include "platform/outputmodel/OmCellText.h"

class OmNumDataValue : public OmCellText {
public:
  OmNumDataValue(std::string variableName, std::string label, double value, std::uint32_t format,
                 unsigned displayMode = 0);

  const std::string& VariableName() const { return _name; }
  const std::string& Label() const { return _label; }
  void setLabel(const std::string& label) { _label = label; }
  double Value() const { return _value; }
  std::uint32_t Format() const { return _format; }
  unsigned DisplayMode() const { return _mode; }
  void setDisplayMode(unsigned mode) { _mode = mode; }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kNumDataValue; }
  // Mode 1: the formatted value; 2 or 0: the label (the value when the label is empty);
  // 3: "label [value]" (the value alone when the label is empty).
  std::string Text() const override;
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Equal when variable name and value are equal; the value label does not count.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

private:
  std::string _name;
  std::string _label;
  double _value;
  std::uint32_t _format;
  unsigned _mode;
};
