#include "core/platform/memory.h"

namespace zorvik::core::platform {

// The heap does so by itself.
void ReturnFreedMemory() {}

}  // namespace zorvik::core::platform
