#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zorvik::core {

// A byte that cannot stand in a JSON text as it is.
inline bool IsTextBreak(char c) {
  return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
}

inline std::uint64_t LoadEightBytes(const char* at) {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// How many of eight bytes stand in front of the first text break; 8 when there is none.
inline std::size_t CountPlainBytes(std::uint64_t word) {
  // Subtracting makes the top bit of a byte appear where the byte was smaller than the subtrahend.
  // A borrow can only spoil bytes behind the first hit.
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  constexpr std::uint64_t kTopBits = kOnes * 0x80;
  const std::uint64_t quote = word ^ (kOnes * '"');
  const std::uint64_t backslash = word ^ (kOnes * '\\');
  const std::uint64_t hits = (((word - kOnes * 0x20) & ~word) | ((quote - kOnes) & ~quote) |
                              ((backslash - kOnes) & ~backslash)) &
                             kTopBits;
  return static_cast<std::size_t>(std::countr_zero(hits)) / 8;
}

// The first text break from `at` on, or `end`.
inline const char* FindTextBreak(const char* at, const char* end) {
  while (end - at >= 8) {
    const std::size_t plain = CountPlainBytes(LoadEightBytes(at));
    at += plain;
    if (plain < 8) return at;
  }
  while (at < end && !IsTextBreak(*at)) ++at;
  return at;
}

}  // namespace zorvik::core
