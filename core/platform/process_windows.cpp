#include "core/platform/process.h"

// windows.h has to come before bcrypt.h.
#include <windows.h>

#include <bcrypt.h>

#include <algorithm>
#include <limits>

#include "core/platform/files.h"
#include "core/platform/windows.h"
#include "core/process.h"

namespace zorvik::core {

std::uint32_t CurrentProcessId() {
  return GetCurrentProcessId();
}

bool ProcessAlive(std::uint64_t pid) {
  if (pid > std::numeric_limits<DWORD>::max()) return false;
  const platform::Handle process(
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(pid)));
  if (!process.Valid()) return GetLastError() == ERROR_ACCESS_DENIED;
  DWORD code = 0;
  return GetExitCodeProcess(process.Get(), &code) && code == STILL_ACTIVE;
}

void SleepMilliseconds(int ms) {
  Sleep(static_cast<DWORD>(std::max(ms, 0)));
}

}  // namespace zorvik::core

namespace zorvik::core::platform {

bool FillRandom(unsigned char* bytes, std::size_t count) {
  return BCryptGenRandom(nullptr, bytes, static_cast<ULONG>(count),
                         BCRYPT_USE_SYSTEM_PREFERRED_RNG) >= 0;
}

std::uint64_t PerformanceCounter() {
  LARGE_INTEGER counter = {};
  QueryPerformanceCounter(&counter);
  return static_cast<std::uint64_t>(counter.QuadPart);
}

std::uint64_t TickMilliseconds() {
  return GetTickCount64();
}

std::tm LocalTime(std::time_t time) {
  std::tm local = {};
  localtime_s(&local, &time);
  return local;
}

std::optional<std::string> EnvironmentText(const char* name) {
  const std::wstring wide_name = WideText(name);
  std::wstring value;
  // The value may grow between the question for its size and the reading.
  DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
  while (size > value.size()) {
    value.resize(size);
    size = GetEnvironmentVariableW(wide_name.c_str(), value.data(), size);
  }
  if (size == 0) return std::nullopt;
  value.resize(size);
  return PathText(value);
}

}  // namespace zorvik::core::platform
