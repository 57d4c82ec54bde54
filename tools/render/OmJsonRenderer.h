// Renders an output tree as JSON for scripts and golden tests: {"outline": NODE}, each node with
// its kind, shown label and children; tables carry their titles, footnotes, dimensions with their
// category trees, and the stored cells sorted by coordinates. The README describes the shape.
// The JSON is written as it is made, one cell at a time: no document is held.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "tools/render/OmDisplayText.h"

class OmOutputTree;

class OmJsonRenderer {
public:
  struct Options {
    // The code page of the session's texts; every text is written as UTF-8.
    std::string codePage = "UTF-8";
    // Render parts whose keep flag is clear (with "excluded": true) instead of leaving them and
    // everything below them out.
    bool showExcluded = false;
  };

  OmJsonRenderer();
  // Throws OMSException when options.codePage cannot be used.
  explicit OmJsonRenderer(Options options);

  // {"outline": root node}, indented by two spaces, with a final line break. Parts at the top of
  // the tree, or below a node without a part, are children of the root node. A list of plain
  // values takes one line; so does an object of plain values and such lists (a cell, a leaf
  // category) when that line is at most 100 bytes.
  void Write(OmOutputTree& tree, std::ostream& out) const;
  std::string Render(OmOutputTree& tree) const;

  // A JSON string: quotes, backslashes and control characters escaped, bytes that are not UTF-8
  // replaced by U+FFFD (one for each maximal invalid sequence).
  static std::string String(std::string_view text);
  // A JSON number for a double: the shortest digits that read back to it, always with a
  // fraction or an exponent ("1187.0", "0.0001", "1.5e-05", "1e+20"); null when not finite.
  static std::string Number(double value);

private:
  Options _options;
  OmDisplayText _text;
};
