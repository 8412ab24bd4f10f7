#include "core/platform/memory.h"

namespace zorvik::core::platform {

// The heap decides by itself what it keeps.
void KeepFreedMemory(std::size_t /*size*/) {}
void ReturnFreedMemory() {}

}  // namespace zorvik::core::platform
