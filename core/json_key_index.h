#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

#include "core/json.h"
#include "core/json_text_scan.h"
#include "core/wide_product.h"

namespace zorvik::core {

// Hashes keys with numbers that differ from process to process, so that nobody can choose keys
// that collide.
class KeyHash {
 public:
  std::uint32_t operator()(std::string_view key) const {
    std::uint64_t hash = start ^ key.size();
    const char* at = key.data();
    std::size_t left = key.size();
    for (; left >= 8; left -= 8, at += 8) hash = Fold(hash ^ LoadEightBytes(at));
    std::uint64_t rest = 0;
    for (; left > 0; --left, ++at) rest = rest << 8 | static_cast<unsigned char>(*at);
    hash = Fold(hash ^ rest);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
  }

  static const KeyHash& OfThisProcess() {
    static const KeyHash hash;
    return hash;
  }

 private:
  KeyHash() {
    std::random_device random;
    for (int i = 0; i < 2; ++i) {
      start = start << 32 | random();
      factor = factor << 32 | random();
    }
    factor |= 1;
  }
  std::uint64_t Fold(std::uint64_t value) const {
    const WideProduct product = MultiplyWide(value, factor);
    return product.high ^ product.low;
  }

  std::uint64_t start = 0;
  std::uint64_t factor = 0;
};

// Finds repeated keys while the fields of one object are read. A few fields are compared one by
// one; for more of them there is a table, so that a large object takes time in proportion.
class KeyIndex {
 public:
  // The place of the field with that key, or the number of fields: the caller then appends it.
  // The keys in `fields` are all different, and fields only ever come behind those there are.
  std::size_t Place(const decltype(Json::fields)& fields, std::string_view key) {
    const std::size_t count = fields.size();
    if (count <= kScanned) {
      std::size_t place = 0;
      while (place < count && fields[place].first != key) ++place;
      return place;
    }
    if (count * 2 >= slots.size()) Grow(count * 4);
    for (; entered < count; ++entered) {
      const std::uint32_t hash = KeyHash::OfThisProcess()(fields[entered].first);
      *FreeSlot(hash) = {hash, static_cast<std::uint32_t>(entered + 1)};
    }
    const std::uint32_t hash = KeyHash::OfThisProcess()(key);
    Slot* slot = FirstSlot(hash);
    for (; slot->number != 0; slot = NextSlot(slot)) {
      if (slot->hash == hash && fields[slot->number - 1].first == key) return slot->number - 1;
    }
    *slot = {hash, static_cast<std::uint32_t>(++entered)};
    return count;
  }

 private:
  static constexpr std::size_t kScanned = 16;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = 0;  // The field's place plus one; 0 for a free slot.
  };

  void Grow(std::size_t size) {
    std::vector<Slot> old(std::bit_ceil(size));
    old.swap(slots);
    for (const Slot& slot : old) {
      if (slot.number != 0) *FreeSlot(slot.hash) = slot;
    }
  }

  Slot* FirstSlot(std::uint32_t hash) { return &slots[hash & (slots.size() - 1)]; }
  Slot* NextSlot(Slot* slot) { return slot == &slots.back() ? &slots.front() : slot + 1; }
  Slot* FreeSlot(std::uint32_t hash) {
    Slot* slot = FirstSlot(hash);
    while (slot->number != 0) slot = NextSlot(slot);
    return slot;
  }

  std::vector<Slot> slots;
  std::size_t entered = 0;  // So many fields from the first on are in the table.
};

}  // namespace zorvik::core
