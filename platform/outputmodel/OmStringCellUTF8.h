// A long UTF-8 text of one to three parts, assembled from long-string messages. The first part is
// the text shown; the second and third travel with it (for instance a tooltip and a reference).
#pragma once

#include <string>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class OmStringCellUTF8 : public OmCellText {
public:
  explicit OmStringCellUTF8(std::string a);
  OmStringCellUTF8(std::string a, std::string b);
  OmStringCellUTF8(std::string a, std::string b, std::string c);

  // One to three texts, in order.
  const std::vector<std::string>& Texts() const { return _texts; }
  std::size_t NTexts() const { return _texts.size(); }

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kStringUTF8; }
  std::string Text() const override { return _texts.front(); }
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Compares all texts in order.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

private:
  std::vector<std::string> _texts;
};
