#include "core/platform/process.h"

#include <sys/random.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <thread>

#include "core/platform/files.h"
#include "core/platform/posix.h"
#include "core/process.h"

namespace zorvik::core {

std::uint32_t CurrentProcessId() {
  return static_cast<std::uint32_t>(getpid());
}

bool ProcessAlive(std::uint64_t pid) {
  // kill() takes 0 and negative numbers for groups of processes.
  if (pid == 0 || pid > static_cast<std::uint64_t>(std::numeric_limits<pid_t>::max())) return false;
  // Whatever else is refused, and by whomever, says nothing about the process.
  if (kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) return false;

  // Linux finds the id of a mere thread as well, and that of a process which has ended but wasn't
  // collected by its parent.
  const std::string id = std::to_string(pid);
  std::string status;
  const bool told = platform::ReadWholeFile("/proc/" + id + "/status", status) &&
                    status.find("\nTgid:\t") != std::string::npos;
  if (!told) return true;
  const bool ended = status.find("\nState:\tZ") != std::string::npos ||
                     status.find("\nState:\tX") != std::string::npos;
  return !ended && status.find("\nTgid:\t" + id + "\n") != std::string::npos;
}

void SleepMilliseconds(int ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(std::max(ms, 0)));
}

}  // namespace zorvik::core

namespace zorvik::core::platform {

bool FillRandom(unsigned char* bytes, std::size_t count) {
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t got =
        RetryOnInterrupt([&] { return getrandom(bytes + filled, count - filled, 0); });
    if (got < 0) return false;
    filled += static_cast<std::size_t>(got);
  }
  return true;
}

std::uint64_t PerformanceCounter() {
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

std::uint64_t TickMilliseconds() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

std::tm LocalTime(std::time_t time) {
  std::tm local = {};
  localtime_r(&time, &local);
  return local;
}

std::optional<std::string> EnvironmentText(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  return value;
}

}  // namespace zorvik::core::platform
