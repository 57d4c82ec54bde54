#include "platform/outputmodel/OmMemoryRegion.h"

OmMemoryRegion* OmMemoryRegion::DefaultHeap() {
  static OmMemoryRegion heap;
  return &heap;
}
