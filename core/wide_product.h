#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zorvik::core {

// The 128 bits of a product of two 64-bit numbers.
struct WideProduct {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
};

// Written out by halves, because standard C++ has no wider integer.
constexpr WideProduct MultiplyWide(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t a_low = a & 0xFFFF'FFFF;
  const std::uint64_t a_high = a >> 32;
  const std::uint64_t b_low = b & 0xFFFF'FFFF;
  const std::uint64_t b_high = b >> 32;
  const std::uint64_t low = a_low * b_low;
  const std::uint64_t cross = a_high * b_low + (low >> 32);
  const std::uint64_t middle = a_low * b_high + (cross & 0xFFFF'FFFF);
  return {a_high * b_high + (cross >> 32) + (middle >> 32), (middle << 32) | (low & 0xFFFF'FFFF)};
}

// The powers of five that fit 63 bits.
inline constexpr std::array<std::uint64_t, 28> kPowersOfFive = [] {
  std::array<std::uint64_t, 28> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 5;
  return powers;
}();

}  // namespace zorvik::core
