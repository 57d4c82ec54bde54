#include "tools/render/OmDisplayText.h"

#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/strings/CodePage.h"

OmDisplayText::OmDisplayText(std::string codePage) : _codePage(std::move(codePage)) {
  // Fails here, with the name, rather than on the first text.
  CodePage::Get(_codePage);
}

std::string OmDisplayText::Text(const OmCellText* cell) const {
  if (cell == nullptr) return std::string();
  // Long texts arrive as UTF-8 whatever the session's code page; they are only cleaned of bytes
  // that are not UTF-8.
  if (dynamic_cast<const OmStringCellUTF8*>(cell) != nullptr) return ToUtf8(cell->Text(), "UTF-8");
  if (auto* composite = dynamic_cast<const OmComposite*>(cell)) {
    return Plain(composite->SubstitutedText());
  }
  return Plain(cell->Text());
}

std::string OmDisplayText::Shown(const OmCellText* cell) const {
  if (cell == nullptr || !cell->Visible()) return std::string();
  return Text(cell);
}

std::string OmDisplayText::Plain(std::string_view text) const { return ToUtf8(text, _codePage); }
