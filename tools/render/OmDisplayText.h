// The text a reader sees for a cell of the output, as UTF-8: hidden cells read empty, composites
// are substituted, and texts in the session's code page are converted. Shared by the JSON and
// HTML renderers, which must not emit bytes that are not UTF-8.
#pragma once

#include <string>
#include <string_view>

class OmCellText;

class OmDisplayText {
public:
  // codePage names the code page of the session's texts (any name CodePage::Get accepts).
  // Throws OMSException for a code page that cannot be used.
  explicit OmDisplayText(std::string codePage = "UTF-8");

  const std::string& CodePage() const { return _codePage; }

  // The shown text of cell; "" for a null cell. Invisible cells keep their text here: callers
  // decide what hiding means for them (see Visible()).
  std::string Text(const OmCellText* cell) const;
  // What a reader sees: "" for a null or invisible cell, else Text(cell).
  std::string Shown(const OmCellText* cell) const;
  // A plain text in the session's code page (text block lines, markers, page titles).
  std::string Plain(std::string_view text) const;

private:
  std::string _codePage;
};
