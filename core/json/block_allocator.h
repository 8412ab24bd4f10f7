#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace zorvik::core {

// Memory for a list inside a document, from a pool that all documents of the process share. Not
// for several threads at a time. Throws std::bad_alloc like `new`.
void* TakeListMemory(std::size_t size);
// `size` is what was asked for.
void GiveListMemoryBack(void* memory, std::size_t size) noexcept;

// Memory that no document needs any more is kept, since the next message mostly needs as much.
// Returns to the system what is kept.
void ReleaseSpareMemory();

// Gives a standard container its memory from there.
template <class T>
struct BlockAllocator {
  using value_type = T;

  BlockAllocator() = default;
  template <class U>
  constexpr BlockAllocator(const BlockAllocator<U>& /*other*/) noexcept {}

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
      throw std::bad_array_new_length();
    return static_cast<T*>(TakeListMemory(count * sizeof(T)));
  }
  void deallocate(T* memory, std::size_t count) noexcept {
    GiveListMemoryBack(memory, count * sizeof(T));
  }

  template <class U>
  bool operator==(const BlockAllocator<U>& /*other*/) const noexcept {
    return true;
  }
};

}  // namespace zorvik::core
