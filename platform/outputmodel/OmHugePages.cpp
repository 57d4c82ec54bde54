#include "platform/outputmodel/OmHugePages.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#endif

void OmPreferHugePages(const void* block, std::size_t bytes) {
#ifdef __linux__
  constexpr std::uintptr_t kPage = 4096;
  if (bytes < (std::size_t(4) << 20)) return;
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) & ~(kPage - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + bytes) & ~(kPage - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)block;
  (void)bytes;
#endif
}
