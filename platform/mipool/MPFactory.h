// Creates pooling computations. Callers (the imputation pooling patterns) create one per pooled
// estimate or model, feed it, read its results and destroy it.
#pragma once

#include <memory>

#include "platform/mipool/MPCompAlgorithm.h"

class MPFactory {
public:
  // A fresh computation with no imputations recorded.
  static std::unique_ptr<MPCompAlgorithm> CreateMPCompAlgorithm();
};
