#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "core/json.h"
#include "core/json/text_scan.h"
#include "core/json/wide_product.h"

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
    if (left >= 4) {
      // The two may overlap: the length is in the hash already.
      rest = std::uint64_t{LoadFourBytes(at)} << 32 | LoadFourBytes(at + left - 4);
    } else {
      for (; left > 0; --left, ++at) rest = rest << 8 | static_cast<unsigned char>(*at);
    }
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

// Finds the repeated keys of one object that is being read. Looking for many of them in one go is
// faster than one by one, because the processor then need not wait for each.
class KeyIndex {
 public:
  using Fields = decltype(Json::fields);

  // Gives the value of each field whose key came before to the first field of that key, and removes
  // the field. The first `different` fields, and those that are left of an earlier call, have keys
  // of their own. For at most 65,536 fields; takes time in proportion to those that are new.
  void Merge(Fields& fields, std::size_t different) {
    std::size_t kept = std::max(merged, different);
    if (merged == 0 && fields.size() > kScanned && AreInOrder(fields)) kept = fields.size();
    for (std::size_t i = kept; i < fields.size(); ++i) {
      const std::size_t place = Place(fields, kept, fields[i].first);
      if (place < kept) {
        fields[place].second = std::move(fields[i].second);
      } else {
        if (kept < i) fields[kept] = std::move(fields[i]);
        ++kept;
      }
    }
    fields.resize(kept);
    merged = kept;
  }

 private:
  static constexpr std::size_t kScanned = 16;
  static constexpr std::uint32_t kPlaceBits = 0x1'FFFF;

  // Whether the keys ascend, as a sorted table or a counter brings them: then each is new.
  static bool AreInOrder(const Fields& fields) {
    const auto no_text_order = [](const Json::Field& left, const Json::Field& right) {
      return left.first >= right.first;
    };
    const auto no_counter_order = [](const Json::Field& left, const Json::Field& right) {
      if (left.first.size() != right.first.size()) return left.first.size() > right.first.size();
      return left.first >= right.first;
    };
    return std::adjacent_find(fields.begin(), fields.end(), no_text_order) == fields.end() ||
           std::adjacent_find(fields.begin(), fields.end(), no_counter_order) == fields.end();
  }

  // What a slot holds: a place plus one, and the upper bits of the hash. A free slot holds 0.
  static std::uint32_t Mark(std::uint32_t hash, std::size_t place) {
    return (hash & ~kPlaceBits) | static_cast<std::uint32_t>(place + 1);
  }

  // The place of the field with that key among the first `count`, or `count`. A few are compared
  // one by one; for more there is a table, into which the key is then entered with that place.
  std::size_t Place(const Fields& fields, std::size_t count, std::string_view key) {
    if (count <= kScanned) {
      std::size_t place = 0;
      while (place < count && fields[place].first != key) ++place;
      return place;
    }
    if (count * 2 >= slots.size()) {
      slots.assign(std::bit_ceil(fields.size() * 2 + 1), 0);
      entered = 0;
    }
    for (; entered < count; ++entered) {
      const std::uint32_t hash = KeyHash::OfThisProcess()(fields[entered].first);
      *FreeSlot(hash) = Mark(hash, entered);
    }
    const std::uint32_t hash = KeyHash::OfThisProcess()(key);
    std::uint32_t* slot = FirstSlot(hash);
    for (; *slot != 0; slot = NextSlot(slot)) {
      const std::size_t place = (*slot & kPlaceBits) - 1;
      if (*slot == Mark(hash, place) && fields[place].first == key) return place;
    }
    *slot = Mark(hash, entered++);
    return count;
  }

  std::uint32_t* FirstSlot(std::uint32_t hash) { return &slots[hash & (slots.size() - 1)]; }
  std::uint32_t* NextSlot(std::uint32_t* slot) {
    return slot == &slots.back() ? &slots.front() : slot + 1;
  }
  std::uint32_t* FreeSlot(std::uint32_t hash) {
    std::uint32_t* slot = FirstSlot(hash);
    while (*slot != 0) slot = NextSlot(slot);
    return slot;
  }

  std::vector<std::uint32_t> slots;
  std::size_t merged = 0;   // So many fields were left of the last call.
  std::size_t entered = 0;  // So many fields from the first on are in the table.
};

}  // namespace zorvik::core
