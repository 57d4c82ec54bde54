// What the factory tests read back from an output tree: its parts of one kind, and its outline.
#pragma once

#include <string>
#include <vector>

#include "platform/outputmodel/OmOutputTree.h"

namespace treeviews {

// The parts of type P in tree order.
template <class P>
std::vector<P*> PartsOf(OmOutputTree& tree) {
  std::vector<P*> parts;
  for (OmOutputPart* part : tree) if (auto* p = dynamic_cast<P*>(part)) parts.push_back(p);
  return parts;
}

// The parts of a tree in order, as "level:kind:label" (a node without a part, the root among
// them, as "level:-").
inline std::vector<std::string> Outline(OmOutputTree& tree) {
  std::vector<std::string> lines;
  for (OmOutputTree::Node n = tree.Begin(); !n.IsEnd(); ++n) {
    const OmOutputPart* part = n.Value();
    lines.push_back(std::to_string(n.Level()) + ":" +
                    (part ? std::string(part->KindName()) + ":" + part->LabelText() : "-"));
  }
  return lines;
}

}  // namespace treeviews
