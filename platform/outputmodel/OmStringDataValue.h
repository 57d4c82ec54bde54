// A string value of a variable with its value label, shown by value, label or both as the
// display mode says (0 unset, 1 values, 2 labels, 3 both).
#pragma once

#include <cstdint>
#include <string>

#include "platform/outputmodel/OmCellText.h"

class OmStringDataValue : public OmCellText {
public:
  OmStringDataValue(std::string variableName, std::string label, std::string value,
                    std::uint32_t format, unsigned displayMode = 0);

  const std::string& VariableName() const { return _name; }
  const std::string& Label() const { return _label; }
  void setLabel(const std::string& label) { _label = label; }
  const std::string& Value() const { return _value; }
  std::uint32_t Format() const { return _format; }
  unsigned DisplayMode() const { return _mode; }
  void setDisplayMode(unsigned mode) { _mode = mode; }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kStringDataValue; }
  // As OmNumDataValue, with the value text in place of the formatted number.
  std::string Text() const override;
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Equal when variable name and value are equal; the value label does not count.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

private:
  std::string _name;
  std::string _label;
  std::string _value;
  std::uint32_t _format;
  unsigned _mode;
};
