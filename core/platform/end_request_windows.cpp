#include "core/platform/end_request.h"

#include <windows.h>

#include <atomic>

namespace zorvik::core::platform {
namespace {

std::atomic<bool> requested = false;

// Runs on a thread of its own.
BOOL WINAPI NoteRequest(DWORD event) {
  requested = true;
  // When the console closes, the process ends as soon as this returns.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

}  // namespace

void CatchEndRequests() {
  SetConsoleCtrlHandler(NoteRequest, TRUE);
}

bool EndRequested() {
  return requested;
}

}  // namespace zorvik::core::platform
