#include "core/platform/wait.h"

#include <poll.h>

#include <algorithm>

namespace zorvik::core::platform {

void WaitForInput(const WaitSources& sources, int ms) {
  std::vector<pollfd> entries;
  entries.reserve(sources.size());
  for (const std::intptr_t source : sources)
    entries.push_back({static_cast<int>(source), POLLIN, 0});
  poll(entries.data(), static_cast<nfds_t>(entries.size()), std::max(ms, 0));
}

}  // namespace zorvik::core::platform
