// A text cell. It keeps the key it was made from and the text shown; translation looks the key up
// and replaces the shown text, so translating twice gives the same result. Only translatable
// cells (texts this system writes itself) are looked up; names copied from a procedure are not.
#pragma once

#include <string>
#include <string_view>

#include "platform/outputmodel/OmCellText.h"

class OmStringCell : public OmCellText {
public:
  explicit OmStringCell(std::string text, bool translatable = false);

  // The text the cell was made from; the key of translation.
  const std::string& KeyText() const { return _key; }
  // The text displayed: the key until a translation is set.
  const std::string& ShownText() const { return _shown; }
  virtual void setShownText(const std::string& text) { _shown = text; }
  // The second text a string-table look-up yields alongside the translation.
  const std::string& SecondText() const { return _second; }
  virtual void setSecondText(const std::string& text) { _second = text; }
  // A further text kept with the cell (a chart's or model's extra label text, a look-up's third).
  const std::string& FurtherText() const { return _further; }
  virtual void setFurtherText(const std::string& text) { _further = text; }

  bool Translatable() const { return _translatable; }
  void setTranslatable(bool translatable) { _translatable = translatable; }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kString; }
  std::string Text() const override { return _shown; }
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Compares the shown texts byte for byte.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;
  // Hash() of a string cell showing shown, without making the cell.
  static std::size_t HashOf(std::string_view shown);

private:
  std::string _key;
  std::string _shown;
  std::string _second;
  std::string _further;
  bool _translatable;
};
