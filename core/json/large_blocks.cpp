#include "core/json/large_blocks.h"

#include <new>

namespace zorvik::core {

void* LargeBlocks::Take(std::size_t size) {
  for (std::size_t i = count; i-- > 0;) {
    if (spare[i].size != size) continue;
    void* const block = spare[i].block;
    spare[i] = spare[--count];
    return block;
  }
  Release();
  return ::operator new(size);
}

void LargeBlocks::GiveBack(void* block, std::size_t size) noexcept {
  if (count == spare.size())
    ::operator delete(block);
  else
    spare[count++] = {block, size};
}

void LargeBlocks::Release() noexcept {
  while (count > 0) ::operator delete(spare[--count].block);
}

}  // namespace zorvik::core
