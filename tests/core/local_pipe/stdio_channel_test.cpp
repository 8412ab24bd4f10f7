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
  tests::BytePipe in;
  StdioChannel channel{in.Reader(), platform::OutputStream()};

  void Feed(std::string_view bytes) const {
    std::size_t count = 0;
    while (!bytes.empty() && in.Writer().Write(bytes.data(), bytes.size(), count))
      bytes.remove_prefix(count);
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
  Feed("um\r\n\ndo");
  EXPECT_EQ(Poll(false), Lines{"um"});
  Feed("is\nresto\r");
  EXPECT_EQ(Poll(false), Lines{"dois"});
  in.CloseWriter();
  EXPECT_EQ(Poll(true), Lines{"resto"});
  EXPECT_EQ(Poll(true), Lines{});
}

TEST_F(StdioChannelTest, AnEndlessLineEndsTheInputUnread) {
  const std::string chunk(32'768, 'x');
  for (std::size_t sent = 0; sent < kLineRestLimit; sent += chunk.size()) {
    Feed(chunk);
    ASSERT_EQ(Poll(false), Lines{});
  }
  Feed("x");
  EXPECT_EQ(Poll(true), Lines{});
}

TEST_F(StdioChannelTest, OnePollTakesAtMost64Reads) {
  constexpr std::size_t kLines = 3'000'000;
  std::string bytes;
  for (std::size_t i = 0; i < kLines; ++i) bytes += "x\n";
  // Cutting short lines takes longer than writing them, so the pipe never runs dry.
  std::thread writer([&] {
    Feed(bytes + "\r");  // A lone carriage return at the end is no line.
    in.CloseWriter();
  });
  std::size_t total = 0;
  for (bool closed = false; !closed;) {
    Lines lines;
    channel.Poll(lines, closed);
    EXPECT_LE(lines.size(), std::size_t{64} * 65'536 / 2);
    total += lines.size();
  }
  writer.join();
  EXPECT_EQ(total, kLines);
}

}  // namespace
}  // namespace zorvik::core
