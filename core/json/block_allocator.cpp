#include "core/json/block_allocator.h"

#include "core/json/block_pool.h"
#include "core/json/large_blocks.h"
#include "core/platform/memory.h"

namespace zorvik::core {
namespace {

constexpr std::size_t kLargeBlock = 1'048'576;
// Twice the longest line, for it and what is read from it, and some more.
constexpr std::size_t kKeptMemory = 41'943'040;

struct ListMemory {
  BlockPool small;
  LargeBlocks large;

  ListMemory() { platform::KeepFreedMemory(kKeptMemory); }
};

// Never destroyed: documents of static lifetime may end after it otherwise.
ListMemory& Memory() {
  static ListMemory* const memory = new ListMemory;
  return *memory;
}

}  // namespace

void* TakeListMemory(std::size_t size) {
  if (size <= BlockPool::kLargestBlock) return Memory().small.Take(size);
  if (size >= kLargeBlock) return Memory().large.Take(size);
  return ::operator new(size);
}

void GiveListMemoryBack(void* memory, std::size_t size) noexcept {
  if (size <= BlockPool::kLargestBlock)
    Memory().small.GiveBack(memory, size);
  else if (size >= kLargeBlock)
    Memory().large.GiveBack(memory, size);
  else
    ::operator delete(memory);
}

void ReleaseSpareMemory() {
  Memory().small.Release();
  Memory().large.Release();
  platform::ReturnFreedMemory();
}

}  // namespace zorvik::core
