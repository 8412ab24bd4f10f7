#include "core/block_pool.h"

#include <new>

namespace zorvik::core {
BlockPool::~BlockPool() {
  for (Chunk*& first : with_room) {
    while (first != nullptr) {
      Chunk* const chunk = first;
      Unlink(first, chunk);
      DropChunk(chunk);
    }
  }
  while (spare != nullptr) {
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
