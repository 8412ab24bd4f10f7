#pragma once

#include <cstddef>

namespace zorvik::core::platform {

// Tells the system that a block of memory is about to be filled, so that it may be handed out in
// large pages, where the system has them: many megabytes then cost a fraction of the time. Does
// nothing for small blocks. A hint: it can't fail, and changes no content.
void ExpectLargeBlock(void* memory, std::size_t size);

// Lets the process keep up to that much freed memory for what it allocates next, where the system
// would take it back at once and hand it out anew for each message. A hint, like the other.
void KeepFreedMemory(std::size_t size);

}  // namespace zorvik::core::platform
