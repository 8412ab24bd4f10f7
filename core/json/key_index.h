#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/json.h"

namespace zorvik::core {

// Finds the repeated keys of an object that is being read, in time proportional to the fields. The
// reader appends all fields first and lets this class look at many of them in one go.
//
// Up to 16 keys are compared one by one. For more there is a hash table with linear probing. A slot
// has 32 bits: the place of a field plus one in the lower 17, of which 0 says that the slot is
// free, and bits of the key's hash above, so that other keys are mostly told apart without a look
// at them. An object has at most 65,536 fields, so a place plus one fits 17 bits. At most half of
// the slots are taken, so each search ends, and on average after two slots.
class KeyIndex {
 public:
  using Fields = decltype(Json::fields);

  // Moves the value of each field whose key came before to the first field of that key, and removes
  // the later one. The first `different` fields, and those that an earlier call left, are known to
  // differ. Fields may be appended between calls, up to 65,536 in all.
  void Merge(Fields& fields, std::size_t different);

 private:
  // The place of the field with that key among the first `count`, or `count`. The key is entered
  // into the table with that place then.
  std::size_t FindOrEnter(const Fields& fields, std::size_t count, std::string_view key);
  void Enter(std::string_view key, std::size_t place);
  std::size_t FirstSlot(std::uint32_t hash) const { return hash & (slots.size() - 1); }
  std::size_t NextSlot(std::size_t slot) const { return (slot + 1) & (slots.size() - 1); }

  std::vector<std::uint32_t> slots;  // A power of two of them.
  std::size_t entered = 0;           // So many fields from the first on are in the table.
  std::size_t merged = 0;            // So many fields the last call left.
};

}  // namespace zorvik::core
