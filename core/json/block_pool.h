#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <new>

namespace zorvik::core {

// Memory for many short-lived blocks of a few sizes: taking one and giving it back cost a few
// instructions each. For one thread at a time.
//
// Blocks of one size share a chunk. An empty chunk serves any size next; the system gets those back
// that are beyond kSpareChunks, and all of them with Release.
class BlockPool {
 public:
  static constexpr std::size_t kLargestBlock = 2'048;
  // Slightly less than their alignment, so that the system can lay chunks side by side and still
  // keep notes of its own between them.
  static constexpr std::size_t kChunkAlignment = 262'144;
  static constexpr std::size_t kChunkSize = kChunkAlignment - 64;
  static constexpr std::size_t kSpareChunks = 128;  // 32 MiB.

  BlockPool() = default;
  // Every block must have come back.
  ~BlockPool();
  BlockPool(const BlockPool&) = delete;
  BlockPool& operator=(const BlockPool&) = delete;

  // A block of 1 to kLargestBlock bytes, aligned for any type. Throws std::bad_alloc like `new`.
  void* Take(std::size_t size);
  // Takes back a block of this pool; `size` is what was asked for.
  void GiveBack(void* block, std::size_t size) noexcept;

  // Returns the chunks to the system that hold no block.
  void Release() noexcept;

  // Chunks that hold blocks or may serve any size at once.
  std::size_t ChunkCount() const { return chunk_count; }

 private:
  static constexpr std::size_t kUnit = 32;        // Block sizes are rounded up to multiples of it.
  static constexpr std::size_t kFirstBlock = 64;  // Behind a chunk's own notes.

  struct FreeBlock {
    FreeBlock* next;
  };
  struct Chunk {
    Chunk* next;  // Neighbours among the chunks of one size that have room.
    Chunk* previous;
    FreeBlock* free;     // Blocks that came back.
    std::size_t unused;  // Where the part begins that no block was taken from yet.
    std::size_t taken;   // Blocks that are out.
  };

  static bool HasRoom(const Chunk& chunk, std::size_t block_size) {
    return chunk.free != nullptr || chunk.unused + block_size <= kChunkSize;
  }
  Chunk* AddChunk(Chunk*& first);
  void DropChunk(Chunk* chunk) noexcept;
  static void Link(Chunk*& first, Chunk* chunk) noexcept;
  static void Unlink(Chunk*& first, Chunk* chunk) noexcept;

  // By block size in units: the chunks with room. Blocks are taken from the first.
  std::array<Chunk*, kLargestBlock / kUnit + 1> with_room{};
  Chunk* spare = nullptr;
  std::size_t spare_count = 0;
  std::size_t chunk_count = 0;
};

inline void* BlockPool::Take(std::size_t size) {
  const std::size_t units = (size + kUnit - 1) / kUnit;
  Chunk*& first = with_room[units];
  Chunk* const chunk = first != nullptr ? first : AddChunk(first);
  ++chunk->taken;
  void* block = chunk->free;
  if (block != nullptr) {
    chunk->free = chunk->free->next;
  } else {
    block = reinterpret_cast<char*>(chunk) + chunk->unused;
    chunk->unused += units * kUnit;
  }
  if (!HasRoom(*chunk, units * kUnit)) Unlink(first, chunk);
  return block;
}

inline void BlockPool::GiveBack(void* block, std::size_t size) noexcept {
  const std::size_t units = (size + kUnit - 1) / kUnit;
  Chunk*& first = with_room[units];
  const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(block) % kChunkAlignment;
  auto* const chunk = reinterpret_cast<Chunk*>(static_cast<char*>(block) - offset);
  if (!HasRoom(*chunk, units * kUnit)) Link(first, chunk);
  chunk->free = ::new (block) FreeBlock{chunk->free};
  if (--chunk->taken > 0) return;
  if (chunk == first && chunk->next == nullptr) {
    // The last chunk of a size stays, and hands its blocks out in the order of their places again.
    chunk->free = nullptr;
    chunk->unused = kFirstBlock;
  } else {
    Unlink(first, chunk);
    DropChunk(chunk);
  }
}

inline void BlockPool::Link(Chunk*& first, Chunk* chunk) noexcept {
  chunk->previous = nullptr;
  chunk->next = first;
  if (first != nullptr) first->previous = chunk;
  first = chunk;
}

inline void BlockPool::Unlink(Chunk*& first, Chunk* chunk) noexcept {
  (chunk->previous != nullptr ? chunk->previous->next : first) = chunk->next;
  if (chunk->next != nullptr) chunk->next->previous = chunk->previous;
}

}  // namespace zorvik::core
