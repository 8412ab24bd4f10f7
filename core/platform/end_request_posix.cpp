#include "core/platform/end_request.h"

#include <atomic>
#include <csignal>

namespace zorvik::core::platform {
namespace {

std::atomic<bool> requested = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // Or a signal handler couldn't set it.

}  // namespace

void CatchEndRequests() {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    const auto before = std::signal(signal, [](int) { requested = true; });
    if (before == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

bool EndRequested() {
  return requested;
}

}  // namespace zorvik::core::platform
