#include "core/local_pipe/stdio_channel.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>

#include "tests/support/byte_pipe.h"

namespace zorvik::core {
namespace {

class StdioChannelTest : public testing::Test {
 protected:
  // The channel reads from `in` and writes to `out`.
  tests::BytePipe in;
  tests::BytePipe out;
  StdioChannel channel{in.Reader(), out.Writer()};

  void Feed(const std::string& bytes) const {
    std::size_t count = 0;
    ASSERT_TRUE(in.Writer().Write(bytes.data(), bytes.size(), count));
    ASSERT_EQ(count, bytes.size());
  }
  Lines Poll(bool expect_closed) {
    Lines lines;
    bool closed = !expect_closed;
    channel.Poll(lines, closed);
    EXPECT_EQ(closed, expect_closed);
    return lines;
  }
};

TEST_F(StdioChannelTest, CutsLinesAcrossReadsAndDeliversTheUnfinishedLast) {
  EXPECT_EQ(Poll(false), Lines{});
  Feed("um\r\n\n\r\ndois\n" + std::string("tr\0e", 4));
  EXPECT_EQ(Poll(false), (Lines{"um", "dois"}));
  Feed("s\r\r\nresto\r");
  EXPECT_EQ(Poll(false), (Lines{std::string("tr\0es\r", 6)}));
  in.CloseWriter();
  EXPECT_EQ(Poll(true), Lines{"resto"});
  EXPECT_EQ(Poll(true), Lines{});
}

TEST_F(StdioChannelTest, WaitingForMoreEndsWithBytesAndWithTheInput) {
  EXPECT_FALSE(in.Reader().WaitForMore());
  Feed("a");
  EXPECT_TRUE(in.Reader().WaitForMore());
  EXPECT_EQ(Poll(false), Lines{});
  in.CloseWriter();
  EXPECT_TRUE(in.Reader().WaitForMore());
}

TEST_F(StdioChannelTest, ALoneCarriageReturnAtTheEndIsNoLine) {
  Feed("a\n\r");
  in.CloseWriter();
  EXPECT_EQ(Poll(true), Lines{"a"});
}

TEST_F(StdioChannelTest, AnUnfinishedLineMayGrowTo16MiBAndNoFurther) {
  const std::string chunk(32'768, 'x');
  for (std::size_t sent = 0; sent < kLineRestLimit; sent += chunk.size()) {
    Feed(chunk);
    ASSERT_EQ(Poll(false), Lines{});
  }
  Feed("\ny" + std::string(100, 'x'));
  EXPECT_EQ(Poll(false).at(0).size(), kLineRestLimit);
  for (std::size_t sent = 0; sent < kLineRestLimit - chunk.size(); sent += chunk.size()) {
    Feed(chunk);
    ASSERT_EQ(Poll(false), Lines{});
  }
  Feed(std::string(chunk.size() - 101, 'x'));
  EXPECT_EQ(Poll(false), Lines{});
  Feed("x");
  EXPECT_EQ(Poll(true), Lines{});
}

TEST_F(StdioChannelTest, OnePollTakesAtMost64Reads) {
  constexpr std::size_t kLines = 3'000'000;
  constexpr std::size_t kMostInOnePoll = std::size_t{64} * 65'536 / 2;
  // Cutting short lines takes longer than writing them, so the pipe never runs dry.
  std::thread writer([this] {
    std::string bytes;
    for (std::size_t i = 0; i < kLines; ++i) bytes += "x\n";
    std::string_view left = bytes;
    std::size_t count = 0;
    while (!left.empty() && in.Writer().Write(left.data(), left.size(), count))
      left.remove_prefix(count);
    in.CloseWriter();
  });
  std::size_t total = 0;
  for (bool closed = false; !closed;) {
    Lines lines;
    channel.Poll(lines, closed);
    EXPECT_LE(lines.size(), kMostInOnePoll);
    total += lines.size();
  }
  writer.join();
  EXPECT_EQ(total, kLines);
}

TEST_F(StdioChannelTest, MissingAndBrokenStreams) {
  platform::PrepareStandardStreams();
  out.CloseReader();
  EXPECT_FALSE(channel.Write("x"));
  StdioChannel none{platform::InputStream(), platform::OutputStream()};
  EXPECT_FALSE(none.Write("x"));
  Lines lines;
  bool closed = false;
  none.Poll(lines, closed);
  EXPECT_TRUE(closed);
}

}  // namespace
}  // namespace zorvik::core
