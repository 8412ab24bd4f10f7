#include "core/platform/memory.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>

namespace zorvik::core::platform {

#ifdef __GLIBC__

void KeepFreedMemory(std::size_t size) {
  // Blocks from the second limit on are returned by themselves; the library takes no greater one.
  constexpr std::size_t kGreatestLimit = 33'554'432;
  mallopt(M_TRIM_THRESHOLD, static_cast<int>(size));
  mallopt(M_MMAP_THRESHOLD, static_cast<int>(std::min(size, kGreatestLimit)));
}

void ReturnFreedMemory() {
  malloc_trim(0);
}

#else

void KeepFreedMemory(std::size_t /*size*/) {}
void ReturnFreedMemory() {}

#endif

}  // namespace zorvik::core::platform
