#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/json/wide_product.h"

// The arithmetic that turns decimal digits into doubles for the numbers of everyday, to the last
// bit. The standard library does the same for all numbers, but takes several times as long.
namespace zorvik::core {

// The powers of five that fit 63 bits.
inline constexpr std::array<std::uint64_t, 28> kPowersOfFive = [] {
  std::array<std::uint64_t, 28> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 5;
  return powers;
}();

// 1/5^n for n from 1 on: the 64 bits from the first that is set, cut off behind them.
inline constexpr std::array<std::uint64_t, kPowersOfFive.size()> kReciprocalsOfFive = [] {
  std::array<std::uint64_t, kPowersOfFive.size()> reciprocals{};
  for (std::size_t i = 1; i < reciprocals.size(); ++i) {
    const std::uint64_t power = kPowersOfFive[i];
    std::uint64_t rest = std::bit_floor(power);
    for (int bit = 0; bit < 64; ++bit) {
      rest *= 2;
      reciprocals[i] = reciprocals[i] * 2 + (rest >= power ? 1 : 0);
      if (rest >= power) rest -= power;
    }
  }
  return reciprocals;
}();

// Finds the double nearest to mantissa / 10^scale. Returns false when its 64 bits of precision
// cannot tell; `mantissa` must not be 0 and `scale` lie in kReciprocalsOfFive, from 1 on.
inline bool DivideByPowerOfTen(std::uint64_t mantissa, std::size_t scale, double& out) {
  const int shift = std::countl_zero(mantissa);
  WideProduct quotient = MultiplyWide(mantissa << shift, kReciprocalsOfFive[scale]);
  // The true quotient is less than 2 above quotient.high: less than 1 for the cut reciprocal, since
  // the other factor is below 2^64, and less than 1 for quotient.low.
  int exponent =
      1 - shift - static_cast<int>(std::bit_width(kPowersOfFive[scale])) - static_cast<int>(scale);
  // 53 bits are kept; the rest says which way to round, unless it is too close to a half.
  const int dropped = 11 - std::countl_zero(quotient.high);
  const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  const std::uint64_t rest = quotient.high & (half * 2 - 1);
  if (rest == half || rest == half - 1) return false;
  const std::uint64_t kept = (quotient.high >> dropped) + (rest > half ? 1 : 0);
  exponent += dropped;
  out = static_cast<double>(kept) *
        std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52);
  return true;
}

// The powers of ten that are exact as doubles.
inline constexpr std::array<double, 23> kExactPowersOfTen = {
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Finds the double nearest to mantissa * 10^exponent where that takes little work.
inline bool ScaleExactly(std::uint64_t mantissa, int exponent, double& out) {
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
  constexpr int kExactScale = static_cast<int>(kExactPowersOfTen.size()) - 1;
  if (mantissa == 0 || exponent == 0) {
    out = static_cast<double>(mantissa);
    return true;
  }
  const auto scale = static_cast<std::size_t>(std::abs(exponent));
  if (mantissa <= kExactIntegers && std::abs(exponent) <= kExactScale) {
    // Both are exact, so that only the one operation rounds.
    const double power = kExactPowersOfTen[scale];
    out = exponent < 0 ? static_cast<double>(mantissa) / power
                       : static_cast<double>(mantissa) * power;
    return true;
  }
  return exponent < 0 && scale < kReciprocalsOfFive.size() &&
         DivideByPowerOfTen(mantissa, scale, out);
}

}  // namespace zorvik::core
