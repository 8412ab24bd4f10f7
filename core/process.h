#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zorvik::core {

std::uint32_t CurrentProcessId();

// Whether a process of that id is running. Errs on the side of yes: a process that exists but may
// not be inspected counts as alive.
bool ProcessAlive(std::uint64_t pid);

// Two lower-case hexadecimal digits for each of `bytes` random bytes; below 1 counts as 1.
std::string RandomHex(int bytes);

// What RandomHex falls back on when the system has no random bytes to give: bytes that differ
// between processes and moments, but can be guessed.
void FillFromCounter(unsigned char* bytes, std::size_t count, std::uint64_t counter,
                     std::uint32_t pid);

// The local time as 2026-03-05T14:07:09, without zone or fraction.
std::string LocalTimestamp();

// Suspends the thread. A negative time counts as 0.
void SleepMilliseconds(int ms);

}  // namespace zorvik::core
