// Recovery from a failure inside a procedure: closes the procedure's output at the point reached
// and marks it with a text block, so that what was built can still be shown.
#pragma once

#include <string>

#include "platform/outputmodel/OmOutputTree.h"

// Adds a text block titled with a copy of title (code page codePage) as a child of node, the
// heading where output was being built (a node of an OmOutputTree): after its last complete
// child, so that tables still being built when the output was cut (not ended) follow the block.
// Everything built before the failure stays. Returns the node holding the new block. A position
// handle fails with OMSException.
OmOutputTree::Node Amputate(OmOutputTree::Node node, const OmCellText& title,
                            const std::string& codePage);
