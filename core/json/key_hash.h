#pragma once

#include <cstdint>
#include <string_view>

namespace zorvik::core {

// A hash of keys by folded multiplication: eight bytes at a time are mixed in by a product of 128
// bits, whose halves are then joined. The two numbers that it works with are random and differ from
// process to process, so that nobody can choose keys that collide.
class KeyHash {
 public:
  // The one of this process.
  static const KeyHash& Instance();

  std::uint32_t operator()(std::string_view key) const;

 private:
  KeyHash();
  std::uint64_t Fold(std::uint64_t value) const;

  std::uint64_t start = 0;
  std::uint64_t factor = 0;
};

}  // namespace zorvik::core
