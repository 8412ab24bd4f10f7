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

// One to seven bytes in the lowest ones of a word, and zeros in the others.
inline std::uint64_t LoadFewBytes(const char* at, std::size_t size) {
  // By two reads that may overlap, as a length that can't be foretold would make a loop dear.
  std::uint64_t word = 0;
  if (size >= 4) {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, at, sizeof first);
    std::memcpy(&last, at + size - sizeof last, sizeof last);
    word = first | std::uint64_t{last} << (8 * (size - sizeof last));
  } else {
    for (const std::size_t i : {std::size_t{0}, size / 2, size - 1})
      word |= std::uint64_t{static_cast<unsigned char>(at[i])} << (8 * i);
  }
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

// Takes the decimal digits from `at` on, puts their value behind the digits of `number`, which may
// overflow, and returns where they end.
inline const char* TakeDigits(const char* at, const char* end, std::uint64_t& number) {
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  while (end - at >= 8) {
    // A digit's byte becomes its value here, and any other at least 10, so that 6 more reach its
    // upper half. A carry comes only out of a byte whose upper half says no already.
    std::uint64_t values = LoadEightBytes(at) ^ (kOnes * '0');
    if (((values | (values + kOnes * 6)) & (kOnes * 0xF0)) != 0) break;
    // Eight digits: pairs, fours and eights are put together at once. No sum leaves its lane, since
    // 99 fits a byte and 9'999 two.
    values = (values * (1 + (10 << 8))) >> 8 & 0x00FF'00FF'00FF'00FF;
    values = (values * (1 + (100 << 16))) >> 16 & 0x0000'FFFF'0000'FFFF;
    values = (values * (1 + (std::uint64_t{10'000} << 32))) >> 32;
    number = number * 100'000'000 + values;
    at += 8;
  }
  for (; at < end && *at >= '0' && *at <= '9'; ++at)
    number = number * 10 + static_cast<unsigned char>(*at - '0');
  return at;
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
