#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "core/json.h"

namespace zorvik::core {
namespace {

using Limits = std::numeric_limits<double>;

// The same number to the last bit, the sign of a zero included.
bool Same(double left, double right) {
  return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

// As the C library sees it. What it rounds to zero or infinity is an error here.
void ExpectReadAsByTheLibrary(const std::string& text) {
  const double expected = std::strtod(text.c_str(), nullptr);
  const std::size_t digit = text.find_first_of("123456789eE");
  const bool zero = digit == text.npos || std::tolower(text[digit]) == 'e';
  const bool in_range = std::isfinite(expected) && (expected != 0 || zero);
  Json json;
  std::string error;
  ASSERT_EQ(ParseJson(text, json, error), in_range) << text;
  ASSERT_EQ(error, in_range ? "" : "numero fora da faixa") << text;
  ASSERT_TRUE(!in_range || Same(json.number, expected)) << text << " is not " << json.number;
}

// A positive number of any size, or, in half of the cases, an everyday one.
double AnyNumber(std::mt19937_64& random) {
  const std::uint64_t bits = random();
  const bool subnormal = bits % 16 == 0;
  const double any = std::bit_cast<double>(bits >> (subnormal ? 12 : 1));
  if (bits % 2 == 0) return any < Limits::max() ? any : 1.0;
  // Some have so few binary places that few digits tell what lies between them.
  const int least = bits % 3 == 0 ? 49 : -60;
  return std::ldexp(1 + std::ldexp(random() >> 12, -52),
                    least + static_cast<int>(random() % static_cast<unsigned>(55 - least)));
}

TEST(JsonNumbersTest, FormsOfADecimal) {
  std::istringstream texts(
      "+5 -0 007 .5 -5. 1.e2 1E+2 25e-1 0e999 0.3 1e 1E+ -2.5e- 1e-320 1e400 -1e-400 "
      "9007199254740993 9007199254740995 9007199254740993.0000000000000000001 123456789012345678 "
      "18446744073709551615 18446744073709551617 8.7e22 1.7976931348623157e308 "
      "1.7976931348623159e308 2.2250738585072014e-308 2.4703282292062328e-324 2.47e-324 "
      "1e99999999999999999999 -0.000e-99999999999999999999");
  for (std::string text; texts >> text;) ExpectReadAsByTheLibrary(text);
  const std::string zeros(400, '0');
  const std::string nines(400, '9');
  for (const std::string& text :
       {"1" + zeros + "e-400", "0." + zeros + "1e401", nines, nines + "e"})
    ExpectReadAsByTheLibrary(text);
  // Without the digits of its exponent, a number is added up digit by digit.
  Json json;
  std::string error;
  EXPECT_TRUE(ParseJson("0.3e", json, error));
  EXPECT_EQ(json.number, 0.30000000000000004);
}

TEST(JsonNumbersTest, RandomDecimalsAreReadToTheNearestDouble) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 40'000; ++i) {
    std::string text = std::to_string(1 + random() % 9);
    for (std::size_t digits = random() % 25; digits > 0; --digits)
      text += static_cast<char>('0' + random() % 10);
    text.insert(random() % (text.size() + 1), ".");
    const int range = i % 2 == 0 ? 25 : 345;
    text += "e" + std::to_string(static_cast<int>(random() % 1'000) % (2 * range) - range);
    ExpectReadAsByTheLibrary(text);
  }
}

// What lies halfway between two neighbours, whole or cut off, and what lies just beside it.
TEST(JsonNumbersTest, HalvesAreReadToTheNearestDouble) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 10'000; ++i) {
    const double number = AnyNumber(random);
    const long double next = std::nextafter(number, Limits::max());
    char text[64];
    std::snprintf(text, sizeof text, "%.*Le", static_cast<int>(16 + random() % 9),
                  (number + next) / 2);
    const std::string half = text;
    const std::size_t last = half.find('e') - 1;
    for (const char digit : {half[last], '0', '1', '4', '5', '6', '9'}) {
      std::string beside = half;
      beside[last] = digit;
      ExpectReadAsByTheLibrary(beside);
    }
  }
}

TEST(JsonNumbersTest, WholeOnesAreWrittenAsIntegersIn64Bits) {
  Json list;
  for (const double number : {0.0, -0.0, 9.0, 10.0, -1.0, -1e5, 0x1p63, std::nextafter(0x1p63, 0.0),
                              -0x1p63, std::nextafter(-0x1p63, -1e300), Limits::quiet_NaN(),
                              Limits::infinity(), -Limits::infinity()})
    list.Add(Json::Number(number));
  EXPECT_EQ(WriteJson(list),
            "[0,0,9,10,-1,-100000,9.2233720368547758e+18,9223372036854774784,"
            "-9223372036854775808,-9.2233720368547779e+18,0,0,0]");
}

void ExpectWrittenAsByPrintf(double number) {
  const std::string written = WriteJson(Json::Number(number));
  ASSERT_TRUE(Same(std::strtod(written.c_str(), nullptr), number)) << written;
  char expected[32];
  std::snprintf(expected, sizeof expected, "%.17g", number);
  const bool integer = number < 0x1p63 && std::trunc(number) == number;
  ASSERT_TRUE(integer || written == expected) << written << " is not " << expected;
}

TEST(JsonNumbersTest, RandomOnesAreWrittenAsByPrintfAndComeBack) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 50'000; ++i) {
    double number = AnyNumber(random);
    if (i % 2 == 0) {
      // Odd numerators over powers of two and of ten: ties, carries to the next decade, short ends.
      const double numerator = static_cast<double>(random() >> (11 + random() % 53)) + 0.5;
      number = std::ldexp(numerator, -static_cast<int>(random() % 110)) /
               (random() % 2 == 0 ? 1.0 : std::pow(10.0, random() % 20));
    }
    ExpectWrittenAsByPrintf(number);
    ExpectReadAsByTheLibrary(WriteJson(Json::Number(number)));
  }
}

// Where the number of digits, the way to write them or the exponent of two changes.
TEST(JsonNumbersTest, OnesBesidePowersAreWrittenAsByPrintf) {
  for (int exponent = -20; exponent <= 20; ++exponent) {
    for (const double power : {std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr),
                               std::ldexp(1.0, 2 * exponent), std::ldexp(2.0, 2 * exponent)}) {
      double number = power;
      for (int i = 0; i < 3; ++i) number = std::nextafter(number, 0.0);
      for (int i = 0; i < 7; ++i, number = std::nextafter(number, Limits::max())) {
        ExpectWrittenAsByPrintf(number);
        ExpectWrittenAsByPrintf(-number);
      }
    }
  }
}

}  // namespace
}  // namespace zorvik::core
