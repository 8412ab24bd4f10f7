#pragma once

#include <algorithm>
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
  // The place of the first field that has the last one's key. Between two calls at most one field
  // may be added, unless no call came before.
  std::size_t PlaceOfLast(const std::vector<Json::Field>& fields) {
    const std::size_t last = fields.size() - 1;
    if (fields.size() <= kScanned) {
      std::size_t place = 0;
      while (fields[place].first != fields[last].first) ++place;
      return place;
    }
    while (known < last) Add(fields, known);
    return Add(fields, last);
  }

 private:
  static constexpr std::size_t kScanned = 16;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = 0;  // The field's place plus one; 0 for a free slot.
  };

  // Enters the field unless its key is known. Returns the first place of the key.
  std::size_t Add(const std::vector<Json::Field>& fields, std::size_t place) {
    if (place * 2 >= slots.size()) Grow(fields.size());
    const std::uint32_t hash = KeyHash::OfThisProcess()(fields[place].first);
    Slot* slot = &FirstSlot(hash);
    for (; slot->number != 0; slot = &Next(*slot)) {
      if (slot->hash == hash && fields[slot->number - 1].first == fields[place].first) {
        return slot->number - 1;
      }
    }
    *slot = {hash, static_cast<std::uint32_t>(place + 1)};
    known = place + 1;
    return place;
  }

  void Grow(std::size_t fields) {
    std::vector<Slot> old(std::bit_ceil(fields * 4));
    old.swap(slots);
    for (const Slot& moved : old) {
      if (moved.number == 0) continue;
      Slot* slot = &FirstSlot(moved.hash);
      while (slot->number != 0) slot = &Next(*slot);
      *slot = moved;
    }
  }

  Slot& FirstSlot(std::uint32_t hash) { return slots[hash & (slots.size() - 1)]; }
  Slot& Next(Slot& slot) { return &slot == &slots.back() ? slots.front() : *(&slot + 1); }

  std::vector<Slot> slots;
  std::size_t known = 0;  // So many fields from the first on are in the table.
};

}  // namespace zorvik::core
