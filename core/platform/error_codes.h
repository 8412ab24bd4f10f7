#pragma once

#include <cstdint>

// Failures cross the platform layer as Windows error numbers on every platform, so that the
// messages made of them read the same everywhere.
namespace zorvik::core::platform {

inline constexpr std::uint32_t kNoError = 0;
inline constexpr std::uint32_t kFileNotFound = 2;
inline constexpr std::uint32_t kTooManyOpenFiles = 4;
inline constexpr std::uint32_t kAccessDenied = 5;
inline constexpr std::uint32_t kNotEnoughMemory = 8;
inline constexpr std::uint32_t kGeneralFailure = 31;
inline constexpr std::uint32_t kBrokenPipe = 109;
inline constexpr std::uint32_t kDiskFull = 112;
inline constexpr std::uint32_t kInvalidName = 123;
inline constexpr std::uint32_t kPipeBusy = 231;

}  // namespace zorvik::core::platform
