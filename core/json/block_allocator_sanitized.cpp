#include <new>

#include "core/json/block_allocator.h"

// For builds with sanitizers: they only see what happens to memory that comes from the system block
// by block.
namespace zorvik::core {

void* TakeListMemory(std::size_t size) {
  return ::operator new(size);
}

void GiveListMemoryBack(void* memory, std::size_t /*size*/) noexcept {
  ::operator delete(memory);
}

void ReleaseSpareMemory() {}

}  // namespace zorvik::core
