#include "core/json/block_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace zorvik::core {
namespace {

struct Block {
  unsigned char* bytes;
  std::size_t size;
  unsigned char mark;
};

bool Holds(const Block& block) {
  return std::all_of(
      block.bytes, block.bytes + block.size,
      [&](unsigned char byte) { return byte == block.mark; });
}

TEST(BlockPoolTest, BlocksOfAllSizesAreApartFromEachOther) {
  BlockPool pool;
  std::mt19937 random(7);
  std::vector<Block> blocks;
  for (int step = 0; step < 40'000; ++step) {
    // Grows and shrinks in turns, so that chunks fill up, empty and change their size.
    const bool growing = step / 4'000 % 2 == 0;
    if (blocks.empty() || random() % 4 < (growing ? 3u : 1u)) {
      const std::size_t size = 1 + random() % BlockPool::kLargestBlock;
      auto* const bytes = static_cast<unsigned char*>(pool.Take(size));
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
      blocks.push_back({bytes, size, static_cast<unsigned char>(random())});
      std::fill_n(bytes, size, blocks.back().mark);
    } else {
      std::swap(blocks[random() % blocks.size()], blocks.back());
      ASSERT_TRUE(Holds(blocks.back()));
      pool.GiveBack(blocks.back().bytes, blocks.back().size);
      blocks.pop_back();
    }
  }
  for (const Block& block : blocks) {
    EXPECT_TRUE(Holds(block));
    pool.GiveBack(block.bytes, block.size);
  }
}

TEST(BlockPoolTest, AFloodOfBlocksLeavesNoMoreThanTheSpareMemory) {
  BlockPool pool;
  constexpr std::size_t kSize = 1'000;
  for (int flood = 0; flood < 2; ++flood) {
    std::vector<void*> blocks((BlockPool::kSpareChunks + 20) * BlockPool::kChunkSize / kSize);
    for (void*& block : blocks) block = pool.Take(kSize);
    EXPECT_GE(pool.ChunkCount(), BlockPool::kSpareChunks + 20);
    for (void* block : blocks) pool.GiveBack(block, kSize);
    // One more stays for the next block of that size.
    EXPECT_LE(pool.ChunkCount(), BlockPool::kSpareChunks + 1);
  }
  void* const block = pool.Take(kSize);
  pool.Release();
  EXPECT_EQ(pool.ChunkCount(), 1u);
  pool.GiveBack(block, kSize);
  pool.Release();
  EXPECT_EQ(pool.ChunkCount(), 0u);
}

TEST(BlockPoolTest, AnEmptyChunkServesAnotherSize) {
  BlockPool pool;
  std::vector<void*> blocks(10 * BlockPool::kChunkSize / 64);
  for (void*& block : blocks) block = pool.Take(64);
  const std::size_t chunks = pool.ChunkCount();
  for (void* block : blocks) pool.GiveBack(block, 64);
  for (void*& block : blocks) block = pool.Take(32);
  EXPECT_EQ(pool.ChunkCount(), chunks);
  for (void* block : blocks) pool.GiveBack(block, 32);
}

}  // namespace
}  // namespace zorvik::core
