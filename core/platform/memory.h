#pragma once

namespace zorvik::core::platform {

// Gives the system what freed memory it can have. A hint: it can't fail. Takes the longer the more
// there is.
void ReturnFreedMemory();

}  // namespace zorvik::core::platform
