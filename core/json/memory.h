#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <string>

namespace zorvik::core {

// Memory for the lists inside documents: `operator new` behind a free list for each size class and
// thread. A message is mostly followed by one like it, which then finds its blocks ready.
//
// Any thread may give back what another one took. A thread keeps at most 4 MiB, and nothing beyond
// its end. Builds with sanitizers keep nothing, so that they see each block come and go.
void* TakeListMemory(std::size_t size);
// `size` is what was asked for.
void GiveListMemoryBack(void* memory, std::size_t size) noexcept;

// A string with the memory of the one that was kept last on this thread, for a text whose length
// shows only at its end. Growing a new one each time would touch fresh pages again and again.
std::string TakeSpareText() noexcept;
void KeepSpareText(std::string text);

// Returns to the system what this thread keeps, and what else of freed memory the process can
// spare.
void ReleaseSpareMemory() noexcept;

// Gives a standard container its memory from there.
template <class T>
struct ListAllocator {
  using value_type = T;

  ListAllocator() = default;
  template <class U>
  constexpr ListAllocator(const ListAllocator<U>& /*other*/) noexcept {}

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
      throw std::bad_array_new_length();
    return static_cast<T*>(TakeListMemory(count * sizeof(T)));
  }
  void deallocate(T* memory, std::size_t count) noexcept {
    GiveListMemoryBack(memory, count * sizeof(T));
  }

  template <class U>
  bool operator==(const ListAllocator<U>& /*other*/) const noexcept {
    return true;
  }
};

}  // namespace zorvik::core
