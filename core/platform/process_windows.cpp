#include "core/platform/process.h"

// windows.h has to come before bcrypt.h.
#include <windows.h>

#include <bcrypt.h>

#include <filesystem>
#include <limits>
#include <string>

#include "core/platform/files.h"

namespace zorvik::core::platform {

std::uint32_t ProcessId() {
  return GetCurrentProcessId();
}

bool ProcessRunning(std::uint64_t pid) {
  if (pid > std::numeric_limits<DWORD>::max()) return false;
  HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(pid));
  if (process == nullptr) return GetLastError() == ERROR_ACCESS_DENIED;
  DWORD code = 0;
  const bool running = GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
  CloseHandle(process);
  return running;
}

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

void Sleep(std::uint32_t milliseconds) {
  ::Sleep(milliseconds);
}

std::optional<std::string> EnvironmentText(const char* name) {
  const std::wstring wide_name = TextPath(name).native();
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
