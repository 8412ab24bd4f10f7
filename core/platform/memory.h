#pragma once

#include <cstddef>

namespace zorvik::core::platform {

// Lets the process keep up to that much freed memory for what it allocates next, where the system
// would take it back at once and hand it out anew for each message. A hint: it can't fail.
void KeepFreedMemory(std::size_t size);

// Gives the system what freed memory it can have. A hint as well; takes the longer the more there
// is.
void ReturnFreedMemory();

}  // namespace zorvik::core::platform
