// The fixed list of bootstrap pooling patterns, one per table of a procedure that can be
// bootstrapped, in the order the pooler tries them. Built on first use; the patterns live until
// the process ends.
#pragma once

#include <vector>

class OmBootPattern;

// The 52 patterns, in registry order; every call returns the same list.
const std::vector<const OmBootPattern*>& BootPoolingPatterns();
