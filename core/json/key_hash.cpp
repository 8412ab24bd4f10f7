#include "core/json/key_hash.h"

#include <cstddef>
#include <random>

#include "core/json/text_scan.h"
#include "core/json/wide_product.h"

namespace zorvik::core {

KeyHash::KeyHash() {
  std::random_device random;
  for (int half = 0; half < 2; ++half) {
    start = start << 32 | random();
    factor = factor << 32 | random();
  }
  factor |= 1;  // An even factor would lose bits.
}

const KeyHash& KeyHash::Instance() {
  static const KeyHash hash;
  return hash;
}

std::uint64_t KeyHash::Fold(std::uint64_t value) const {
  const WideProduct product = MultiplyWide(value, factor);
  return product.high ^ product.low;
}

std::uint32_t KeyHash::operator()(std::string_view key) const {
  std::uint64_t hash = start ^ key.size();
  const char* at = key.data();
  std::size_t left = key.size();
  for (; left >= 8; left -= 8, at += 8) hash = Fold(hash ^ LoadEightBytes(at));
  std::uint64_t rest = 0;
  for (; left > 0; --left, ++at) rest = rest << 8 | static_cast<unsigned char>(*at);
  hash = Fold(hash ^ rest);
  return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

}  // namespace zorvik::core
