#include "core/platform/wait.h"

#include <windows.h>

#include <algorithm>

#include "core/platform/windows.h"

// Missing in older headers, and refused by older systems.
#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace zorvik::core::platform {
namespace {

bool SleepPrecisely(int ms) {
  thread_local const Handle timer(CreateWaitableTimerExW(
      nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, TIMER_ALL_ACCESS));
  constexpr LONGLONG kUnitsPerMs = 10'000;
  LARGE_INTEGER due = {};
  due.QuadPart = -ms * kUnitsPerMs;  // Negative: from now on.
  return timer.Valid() && SetWaitableTimer(timer.Get(), &due, 0, nullptr, nullptr, FALSE) &&
         WaitForSingleObject(timer.Get(), INFINITE) == WAIT_OBJECT_0;
}

}  // namespace

void WaitForInput(const WaitSources&, int ms) {
  // Sleep counts in turns of the system's clock, 15.6 ms long.
  if (!SleepPrecisely(std::max(ms, 0))) Sleep(static_cast<DWORD>(std::max(ms, 0)));
}

}  // namespace zorvik::core::platform
