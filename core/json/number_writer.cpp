#include "core/json/number_writer.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "core/json/decimal_scaling.h"
#include "core/json/wide_product.h"

// Most numbers of a world lie between a tenth of a millimetre and some thousand kilometres. For
// them 17 digits are an integer that one multiplication gives exactly, so that rounding needs no
// search. The standard library writes the others.
namespace zorvik::core {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr std::uint64_t kMantissaMask = (std::uint64_t{1} << kMantissaBits) - 1;
constexpr std::uint64_t kTenTo8 = 100'000'000;

// The exponents of two and of ten that have entries in the tables below. 2^-14 lies below 1e-4,
// from which on no exponent is written, and 2^23 below 10^7: the point then stands among the first
// eight digits.
constexpr int kLeastTwo = -14;
constexpr int kMostTwo = 22;
constexpr int kLeastTen = -4;
constexpr int kMostTen = 6;

// 10^n for n from -5 on.
constexpr std::array<double, 13> kTens = {1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1,
                                          1e2,  1e3,  1e4,  1e5,  1e6,  1e7};

// What the numbers from 2^n to 2^(n+1) have in common.
struct Binade {
  // The exponent of ten of those below `next_ten`; that of the others is one more.
  int exponent = kLeastTen - 1;
  double next_ten = 0;
  std::uint64_t fraction_mask = 0;  // The bits of the mantissa behind the point.
};

constexpr auto kBinades = [] {
  std::array<Binade, kMostTwo - kLeastTwo + 1> binades{};
  double least = 1.0 / (1 << -kLeastTwo);
  int two = kLeastTwo;
  for (Binade& binade : binades) {
    std::size_t ten = 0;
    while (kTens[ten + 1] <= least) ++ten;
    binade.exponent += static_cast<int>(ten);
    binade.next_ten = kTens[ten + 1];
    binade.fraction_mask = two < 0 ? ~std::uint64_t{0} : kMantissaMask >> two;
    least *= 2;
    ++two;
  }
  return binades;
}();

// What brings a number to 17 digits before the point, by its exponent of ten: a power of five whose
// highest bit is set, and how far the mantissa of the first binade goes to the left, so that the
// point comes between the two halves of their product. Each further binade takes one bit more.
struct Scale {
  std::uint64_t power = 0;
  int shift = 0;
};

constexpr auto kScales = [] {
  std::array<Scale, kMostTen - kLeastTen + 1> scales{};
  int tens = 16 - kLeastTen;
  for (Scale& scale : scales) {
    const std::uint64_t power = kPowersOfFive[static_cast<std::size_t>(tens)];
    const auto width = static_cast<int>(std::bit_width(power));
    scale = {power << (64 - width), width + tens + kLeastTwo - kMantissaBits};
    --tens;
  }
  return scales;
}();

// All numbers below 1000 as three digits, the first of them in the lowest byte, so that it comes
// first in memory.
constexpr auto kThreeDigits = [] {
  std::array<std::uint32_t, 1000> texts{};
  std::uint32_t number = 0;
  for (std::uint32_t& text : texts) {
    text = ('0' + number / 100) | ('0' + number / 10 % 10) << 8 | ('0' + number % 10) << 16;
    ++number;
  }
  return texts;
}();

// A number below 10^8 as eight digits, the first of them in the lowest byte.
std::uint64_t EightDigits(std::uint64_t number) {
  const auto small = static_cast<std::uint32_t>(number);
  const std::uint32_t first_three = small / 100'000;
  const std::uint32_t first_six = small / 100;
  const std::uint64_t first = kThreeDigits[first_three];
  const std::uint64_t second = kThreeDigits[first_six - first_three * 1000];
  const std::uint64_t third = kThreeDigits[small - first_six * 100] >> 8;
  return first | second << 24 | third << 48;
}

void Store(std::uint64_t word, char* to) {
  std::memcpy(to, &word, sizeof word);
}

// Seventeen digits, of which the last ones may be zeros that aren't written.
struct Digits {
  std::uint64_t first_eight;
  std::uint64_t next_eight;
  char last;

  std::ptrdiff_t TrailingZeros() const {
    constexpr std::uint64_t kZeros = 0x3030'3030'3030'3030;
    if (last != '0') return 0;
    if (next_eight != kZeros) return 1 + std::countl_zero(next_eight ^ kZeros) / 8;
    return 9 + std::countl_zero(first_eight ^ kZeros) / 8;
  }
};

char* PutBelowOne(const Digits& digits, int exponent, char* to) {
  constexpr std::string_view kZeros = "0.000";
  kZeros.copy(to, kZeros.size());
  to += 1 - exponent;
  Store(digits.first_eight, to);
  Store(digits.next_eight, to + 8);
  to[16] = digits.last;
  return to + 17 - digits.TrailingZeros();
}

char* PutFromOneOn(const Digits& digits, int exponent, char* to) {
  // The bytes behind the point move on by one.
  const int point = 8 + 8 * exponent;
  const std::uint64_t whole = digits.first_eight & ((std::uint64_t{1} << point) - 1);
  const std::uint64_t fraction = digits.first_eight - whole;
  Store(whole | std::uint64_t{'.'} << point | fraction << 8, to);
  to[8] = static_cast<char>(fraction >> 56);
  Store(digits.next_eight, to + 9);
  to[17] = digits.last;
  return to + 18 - digits.TrailingZeros();
}

// Writes any number, by the standard library.
char* PutRareNumber(double number, char* to) {
  constexpr double kInt64Bound = 9'223'372'036'854'775'808.0;
  if (!std::isfinite(number)) number = 0;
  char* const end = to + kNumberRoom;
  if (number >= -kInt64Bound && number < kInt64Bound) {
    const auto whole = static_cast<std::int64_t>(number);
    if (static_cast<double>(whole) == number) return std::to_chars(to, end, whole).ptr;
  }
  return std::to_chars(to, end, number, std::chars_format::general, 17).ptr;
}

}  // namespace

char* PutNumber(double number, char* to) {
  // The sign is written in any case and counts or not: a branch would often be foretold wrong.
  const auto signed_bits = std::bit_cast<std::uint64_t>(number);
  const std::uint64_t negative = signed_bits >> 63;
  const std::uint64_t bits = signed_bits << 1 >> 1;
  const std::uint64_t two = (bits >> kMantissaBits) - (kExponentBias + kLeastTwo);
  if (two >= kBinades.size()) {
    if (bits != 0) return PutRareNumber(number, to);
    *to++ = '0';
    return to;
  }
  const std::uint64_t mantissa = (bits & kMantissaMask) | (kMantissaMask + 1);
  const Binade& binade = kBinades[two];
  *to = '-';
  if ((mantissa & binade.fraction_mask) == 0) {
    to += negative;
    const auto whole = static_cast<std::uint32_t>(mantissa >> (kMantissaBits - kLeastTwo - two));
    if (whole > 9) return std::to_chars(to, to + kNumberRoom - 1, whole).ptr;
    *to++ = static_cast<char>('0' + whole);
    return to;
  }

  const int exponent =
      binade.exponent + (bits >= std::bit_cast<std::uint64_t>(binade.next_ten) ? 1 : 0);
  if (exponent < kLeastTen) return PutRareNumber(number, to);
  to += negative;
  const Scale& scale = kScales[static_cast<std::size_t>(exponent - kLeastTen)];
  const WideProduct product =
      MultiplyWide(mantissa << (static_cast<int>(two) + scale.shift), scale.power);
  // To the nearest, and from a half to the even one: from an odd number a half goes up too. The
  // result has 17 digits: the doubles of kTens aren't below their powers, and the doubles before
  // them are further away than half of the last digit.
  constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
  const std::uint64_t value = product.high + (product.low > kHalf - product.high % 2 ? 1 : 0);

  const std::uint64_t but_last = value / 10;
  const std::uint64_t first = value / (kTenTo8 * 10);
  const Digits digits = {EightDigits(first), EightDigits(but_last - first * kTenTo8),
                         static_cast<char>('0' + (value - but_last * 10))};
  return exponent < 0 ? PutBelowOne(digits, exponent, to) : PutFromOneOn(digits, exponent, to);
}

}  // namespace zorvik::core
