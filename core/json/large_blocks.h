#pragma once

#include <array>
#include <cstddef>

namespace zorvik::core {

// Keeps large blocks of memory that came back, for the case that the same message comes again: to
// have fresh pages from the system costs several times what filling them does. Holds no more than
// was in use before, until Release. For one thread at a time.
class LargeBlocks {
 public:
  LargeBlocks() = default;
  ~LargeBlocks() { Release(); }
  LargeBlocks(const LargeBlocks&) = delete;
  LargeBlocks& operator=(const LargeBlocks&) = delete;

  // A block of that size, a spare one or a new one; when there is none to spare, the others are
  // released first. Throws std::bad_alloc like `new`.
  void* Take(std::size_t size);
  // Takes back a block of this object; `size` is what was asked for.
  void GiveBack(void* block, std::size_t size) noexcept;
  // Returns the spare blocks to the system.
  void Release() noexcept;

  std::size_t SpareCount() const { return count; }

 private:
  struct Spare {
    void* block;
    std::size_t size;
  };

  std::array<Spare, 64> spare;
  std::size_t count = 0;
};

}  // namespace zorvik::core
