// Renders an output tree as JSON for scripts and golden tests: {"outline": NODE}, each node with
// its kind, shown label and children; tables carry their titles, footnotes, dimensions with their
// category trees, and the stored cells sorted by coordinates. The README describes the shape.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "tools/render/OmDisplayText.h"

class OmOutputPart;
class OmOutputTree;
class OmPivotTable;

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

  // Keys keep the order in which they are written: kind and label first, children last.
  using Json = nlohmann::ordered_json;

  // {"outline": root node}. Parts at the top of the tree, or below a node without a part, are
  // children of the root node.
  Json Outline(OmOutputTree& tree) const;
  // Outline(tree) indented by two spaces, lists of plain values on one line, with a final line
  // break.
  std::string Render(OmOutputTree& tree) const;
  // One part as a node without children.
  Json Part(OmOutputPart& part) const;
  // The fields that a table node adds.
  Json Table(const OmPivotTable& table) const;

  // value indented as Render does it.
  static std::string Write(const Json& value);

private:
  Options _options;
  OmDisplayText _text;
};
