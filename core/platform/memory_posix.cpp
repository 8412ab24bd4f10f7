#include "core/platform/memory.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>

namespace zorvik::core::platform {
namespace {

constexpr std::uintptr_t kLargePage = 2'097'152;

}  // namespace

void ExpectLargeBlock(void* memory, std::size_t size) {
#ifdef MADV_HUGEPAGE
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t begin = (address + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t end = (address + size) & ~(kLargePage - 1);
  if (begin >= end) return;
  madvise(static_cast<char*>(memory) + (begin - address), end - begin, MADV_HUGEPAGE);
#endif
}

void KeepFreedMemory(std::size_t size) {
#ifdef __GLIBC__
  // Blocks from the second limit on are returned by themselves; the library takes no greater one.
  constexpr std::size_t kGreatestLimit = 33'554'432;
  mallopt(M_TRIM_THRESHOLD, static_cast<int>(size));
  mallopt(M_MMAP_THRESHOLD, static_cast<int>(std::min(size, kGreatestLimit)));
#endif
}

}  // namespace zorvik::core::platform
