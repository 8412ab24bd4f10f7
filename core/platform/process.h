#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace zorvik::core::platform {

std::uint32_t ProcessId();

// Whether a process of that id runs. One that exists but may not be inspected counts as running;
// one that has ended and wasn't collected yet does not.
bool ProcessRunning(std::uint64_t pid);

// Fills `bytes` with random bytes of cryptographic quality. False when the system has none to give.
bool FillRandom(unsigned char* bytes, std::size_t count);

// A fast counter of no particular unit.
std::uint64_t PerformanceCounter();

// Milliseconds of a monotonic clock with an arbitrary start.
std::uint64_t TickMilliseconds();

std::tm LocalTime(std::time_t time);

void Sleep(std::uint32_t milliseconds);

// The value of an environment variable as UTF-8, or nothing when it isn't set.
std::optional<std::string> EnvironmentText(const char* name);

}  // namespace zorvik::core::platform
