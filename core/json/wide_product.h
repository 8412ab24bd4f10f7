#pragma once

#include <cstdint>

namespace zorvik::core {

// The 128 bits of a product of two 64-bit numbers.
struct WideProduct {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
};

constexpr WideProduct MultiplyWide(std::uint64_t a, std::uint64_t b) {
  // Standard C++ has no wider integer, but GCC and Clang have, and the processor multiplies so in
  // one instruction.
  __extension__ using Wide = unsigned __int128;
  const Wide product = Wide{a} * b;
  return {static_cast<std::uint64_t>(product >> 64), static_cast<std::uint64_t>(product)};
}

}  // namespace zorvik::core
