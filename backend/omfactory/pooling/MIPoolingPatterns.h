// The catalogue of every procedure table that multiple-imputation pooling knows: one pattern per
// procedure name and table template, in a fixed order. The imputation pooler asks for it when it is
// made and keeps the patterns of its procedure.
#pragma once

#include <vector>

class OmMIPattern;

// The registry's patterns, in order; built on the first call, the same list (and the same objects)
// afterwards. The patterns live as long as the process and never change.
const std::vector<const OmMIPattern*>& MIPoolingPatterns();
