#include "core/block_allocator.h"

#include "core/block_pool.h"
#include "core/platform/memory.h"

namespace zorvik::core {
namespace {

// Twice the longest line, for it and what is read from it, and some more.
constexpr std::size_t kKeptMemory = 41'943'040;

// Never destroyed: documents of static lifetime may end after it otherwise.
BlockPool& Pool() {
  static BlockPool* const pool = [] {
    platform::KeepFreedMemory(kKeptMemory);
    return new BlockPool;
  }();
  return *pool;
}

}  // namespace

void* TakeListMemory(std::size_t size) {
  if (size <= BlockPool::kLargestBlock) return Pool().Take(size);
  void* const memory = ::operator new(size);
  // Only for memory that is kept and used again: when hundreds of megabytes are fresh, a virtual
  // machine may have to fetch each large page from its host.
  if (size <= kKeptMemory) platform::ExpectLargeBlock(memory, size);
  return memory;
}

void GiveListMemoryBack(void* memory, std::size_t size) noexcept {
  if (size <= BlockPool::kLargestBlock) {
    Pool().GiveBack(memory, size);
  } else {
    ::operator delete(memory);
  }
}

}  // namespace zorvik::core
