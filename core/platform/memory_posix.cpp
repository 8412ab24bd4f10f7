#include "core/platform/memory.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace zorvik::core::platform {

void ReturnFreedMemory() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
}

}  // namespace zorvik::core::platform
