#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

// What core/process.h is made of beside the operations that each platform gives directly, which
// process_posix.cpp and process_windows.cpp define too.
namespace zorvik::core::platform {

// Fills `bytes` with random bytes of cryptographic quality. False when the system has none to give.
bool FillRandom(unsigned char* bytes, std::size_t count);

// A fast counter of no particular unit.
std::uint64_t PerformanceCounter();

// Milliseconds of a monotonic clock with an arbitrary start.
std::uint64_t TickMilliseconds();

std::tm LocalTime(std::time_t time);

// The value of an environment variable as UTF-8, or nothing when it isn't set.
std::optional<std::string> EnvironmentText(const char* name);

}  // namespace zorvik::core::platform
