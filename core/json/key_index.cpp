#include "core/json/key_index.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "core/json/key_hash.h"

namespace zorvik::core {
namespace {

constexpr std::size_t kComparedOneByOne = 16;
constexpr std::uint32_t kPlaceBits = 0x1'FFFF;

// What the slot of a key holds.
std::uint32_t Mark(std::uint32_t hash, std::size_t place) {
  return (hash & ~kPlaceBits) | static_cast<std::uint32_t>(place + 1);
}

}  // namespace

void KeyIndex::Merge(Fields& fields, std::size_t different) {
  std::size_t kept = std::max(merged, different);
  for (std::size_t i = kept; i < fields.size(); ++i) {
    const std::size_t place = FindOrEnter(fields, kept, fields[i].first);
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

std::size_t KeyIndex::FindOrEnter(const Fields& fields, std::size_t count, std::string_view key) {
  if (count <= kComparedOneByOne) {
    std::size_t place = 0;
    while (place < count && fields[place].first != key) ++place;
    return place;
  }
  if (count * 2 >= slots.size()) {
    slots.assign(std::bit_ceil(fields.size() * 2 + 1), 0);
    entered = 0;
  }
  for (; entered < count; ++entered) Enter(fields[entered].first, entered);

  const std::uint32_t hash = KeyHash::Instance()(key);
  std::size_t slot = FirstSlot(hash);
  for (; slots[slot] != 0; slot = NextSlot(slot)) {
    const std::size_t place = (slots[slot] & kPlaceBits) - 1;
    if (slots[slot] == Mark(hash, place) && fields[place].first == key) return place;
  }
  slots[slot] = Mark(hash, entered++);
  return count;
}

void KeyIndex::Enter(std::string_view key, std::size_t place) {
  const std::uint32_t hash = KeyHash::Instance()(key);
  std::size_t slot = FirstSlot(hash);
  while (slots[slot] != 0) slot = NextSlot(slot);
  slots[slot] = Mark(hash, place);
}

}  // namespace zorvik::core
