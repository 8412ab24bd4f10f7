#include "core/process.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <vector>

#include "core/platform/process.h"

namespace zorvik::core {

std::string RandomHex(int bytes) {
  std::vector<unsigned char> random(static_cast<std::size_t>(std::max(bytes, 1)));
  if (!platform::FillRandom(random.data(), random.size())) {
    FillFromCounter(random.data(), random.size(), platform::PerformanceCounter(),
                    CurrentProcessId());
  }
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(random.size() * 2);
  for (const unsigned char byte : random) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

void FillFromCounter(unsigned char* bytes, std::size_t count, std::uint64_t counter,
                     std::uint32_t pid) {
  // Only the low 8 bits matter, and unsigned arithmetic wraps around to the same ones.
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t mixed = std::uint64_t{0} - pid * std::uint64_t{125} - 17 * i;
    bytes[i] = static_cast<unsigned char>(mixed ^ (counter >> (8 * (i % 8))));
  }
}

std::string LocalTimestamp() {
  const std::tm local = platform::LocalTime(std::time(nullptr));
  std::array<char, 32> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &local)};
}

}  // namespace zorvik::core
