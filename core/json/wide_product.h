#pragma once

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

}  // namespace zorvik::core
