#pragma once

#include <cstdint>
#include <vector>

namespace zorvik::core::platform {

// What can end a pause early: descriptors on POSIX. Streams and pipes put themselves in, and must
// still be open when they are waited for. Nothing ever is in it on Windows, where an anonymous pipe
// can't be waited for.
using WaitSources = std::vector<std::intptr_t>;

// Suspends the thread for `ms` milliseconds, or until one of `sources` has something to read or has
// ended. May return early for no reason. Where nothing can end it early, the pause takes the time
// that it says, and not that of the system's coarse clock. A negative time counts as 0.
void WaitForInput(const WaitSources& sources, int ms);

}  // namespace zorvik::core::platform
