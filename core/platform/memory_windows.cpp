#include "core/platform/memory.h"

namespace zorvik::core::platform {

// Large pages need a privilege here, and the heap decides by itself what it keeps.
void ExpectLargeBlock(void* /*memory*/, std::size_t /*size*/) {}
void KeepFreedMemory(std::size_t /*size*/) {}

}  // namespace zorvik::core::platform
