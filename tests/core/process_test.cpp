#include "core/process.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <limits>
#include <set>
#include <sstream>
#include <string>

#include "core/win32.h"

namespace zorvik::core {
namespace {

TEST(ProcessTest, ThisProcessIsAliveAndImpossibleOnesAreNot) {
  EXPECT_TRUE(ProcessAlive(CurrentProcessId()));
  // Among them the numbers that a narrower type would turn into this process, or into -1.
  for (const std::uint64_t pid :
       {std::uint64_t{0}, (std::uint64_t{1} << 32) + CurrentProcessId(), std::uint64_t{0x7FFFFFFF},
        std::uint64_t{0xFFFFFFFF}, std::numeric_limits<std::uint64_t>::max()})
    EXPECT_FALSE(ProcessAlive(pid)) << pid;
}

TEST(ProcessTest, RandomHexGivesTwoDigitsAByteWhichTakesAllValues) {
  const std::string text = RandomHex(10'000);
  ASSERT_EQ(text.size(), 20'000U);
  EXPECT_EQ(text.find_first_not_of("0123456789abcdef"), text.npos);
  std::set<std::string> values;
  for (std::size_t i = 0; i < text.size(); i += 2) values.insert(text.substr(i, 2));
  EXPECT_EQ(values.size(), 256U);
  EXPECT_EQ(RandomHex(-3).size(), 2U);
}

TEST(ProcessTest, TheFallbackMixesCounterAndProcessId) {
  std::array<unsigned char, 9> bytes = {};
  FillFromCounter(bytes.data(), bytes.size(), 0x8877665544332211, 1000);
  // 1000 * -125 is -125000, whose low 8 bits are 0xB8; each byte further takes 17 off.
  const std::array<unsigned char, 9> expected = {0xB8 ^ 0x11, 0xA7 ^ 0x22, 0x96 ^ 0x33,
                                                 0x85 ^ 0x44, 0x74 ^ 0x55, 0x63 ^ 0x66,
                                                 0x52 ^ 0x77, 0x41 ^ 0x88, 0x30 ^ 0x11};
  EXPECT_EQ(bytes, expected);
}

TEST(ProcessTest, TheTimestampIsLocalTimeNow) {
  std::tm time = {};
  std::istringstream stamp(LocalTimestamp());
  stamp >> std::get_time(&time, "%Y-%m-%dT%H:%M:%S");
  time.tm_isdst = -1;
  EXPECT_LT(std::abs(std::difftime(std::mktime(&time), std::time(nullptr))), 60);
}

TEST(Win32Test, PathsComeBack) {
  EXPECT_EQ(win32::NarrowPath(win32::WidePath("pasta/arquivo")), "pasta/arquivo");
  EXPECT_TRUE(win32::WidePath("").empty());
}

}  // namespace
}  // namespace zorvik::core
