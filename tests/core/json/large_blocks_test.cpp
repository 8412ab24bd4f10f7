#include "core/json/large_blocks.h"

#include <gtest/gtest.h>

namespace zorvik::core {
namespace {

TEST(LargeBlocksTest, ABlockIsKeptForTheSameSizeOnly) {
  LargeBlocks blocks;
  void* const first = blocks.Take(2'000'000);
  void* const second = blocks.Take(3'000'000);
  blocks.GiveBack(first, 2'000'000);
  blocks.GiveBack(second, 3'000'000);
  EXPECT_EQ(blocks.Take(2'000'000), first);
  EXPECT_EQ(blocks.SpareCount(), 1u);
  void* const other = blocks.Take(3'000'001);
  EXPECT_EQ(blocks.SpareCount(), 0u);
  blocks.GiveBack(first, 2'000'000);
  blocks.GiveBack(other, 3'000'001);
  EXPECT_EQ(blocks.SpareCount(), 2u);
  blocks.Release();
  EXPECT_EQ(blocks.SpareCount(), 0u);
}

}  // namespace
}  // namespace zorvik::core
