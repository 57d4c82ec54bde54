// Recovery from a failure inside a procedure: closes the procedure's output at the point reached
// and marks it with a text block, so that what was built can still be shown.
#pragma once

#include <string>

#include "platform/outputmodel/OmOutputTree.h"

// Appends a text block titled with a copy of title (code page codePage) as the last child of
// procedureNode, which must be a node of an OmOutputTree; everything built before the failure
// stays. Returns the node holding the new block. A position handle fails with OMSException.
OmOutputTree::Node Amputate(OmOutputTree::Node procedureNode, const OmCellText& title,
                            const std::string& codePage);
