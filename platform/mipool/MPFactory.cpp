#include "platform/mipool/MPFactory.h"

#include "platform/mipool/MPRubinAlgorithm.h"

std::unique_ptr<MPCompAlgorithm> MPFactory::CreateMPCompAlgorithm() {
  return std::make_unique<MPRubinAlgorithm>();
}
