#include "core/json/block_pool.h"

#include <new>

namespace zorvik::core {

BlockPool::~BlockPool() {
  Release();
}

void BlockPool::Release() noexcept {
  for (Chunk*& first : with_room) {
    for (Chunk* chunk = first; chunk != nullptr;) {
      Chunk* const next = chunk->next;
      if (chunk->taken == 0) {
        Unlink(first, chunk);
        DropChunk(chunk);
      }
      chunk = next;
    }
  }
  for (; spare_count > 0; --spare_count, --chunk_count) {
    Chunk* const chunk = spare;
    spare = chunk->next;
    ::operator delete (chunk, std::align_val_t{kChunkAlignment});
  }
}

// Makes an empty chunk the first of its size.
BlockPool::Chunk* BlockPool::AddChunk(Chunk*& first) {
  static_assert(sizeof(Chunk) <= kFirstBlock);
  void* memory = spare;
  if (spare != nullptr) {
    spare = spare->next;
    --spare_count;
  } else {
    memory = ::operator new (kChunkSize, std::align_val_t{kChunkAlignment});
    ++chunk_count;
  }
  Chunk* const chunk = ::new (memory) Chunk{nullptr, nullptr, nullptr, kFirstBlock, 0};
  Link(first, chunk);
  return chunk;
}

void BlockPool::DropChunk(Chunk* chunk) noexcept {
  if (spare_count < kSpareChunks) {
    chunk->next = spare;
    spare = chunk;
    ++spare_count;
  } else {
    ::operator delete (chunk, std::align_val_t{kChunkAlignment});
    --chunk_count;
  }
}

}  // namespace zorvik::core
