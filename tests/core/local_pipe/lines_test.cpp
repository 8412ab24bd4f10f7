#include "core/local_pipe/lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zorvik::core {
namespace {

struct Case {
  Lines pieces;  // As they arrive.
  Lines lines;
  std::string rest;
};

TEST(LinesTest, CutsAtLineFeedsHoweverTheBytesArrive) {
  const std::string zero("a\0b", 3);
  const std::vector<Case> cases = {
      {{"um\n"}, {"um"}, ""},
      {{"um\r\n"}, {"um"}, ""},
      {{"um\r\r\n"}, {"um\r"}, ""},
      {{"u\rm\n"}, {"u\rm"}, ""},
      {{"\n"}, {}, ""},
      {{"\r\n"}, {}, ""},
      {{"\r\r\n"}, {"\r"}, ""},
      {{"\n\r\num\n\n"}, {"um"}, ""},
      {{"um\ndois\nres"}, {"um", "dois"}, "res"},
      {{"u", "m", "\n"}, {"um"}, ""},
      {{"um\r", "\ndois\n"}, {"um", "dois"}, ""},
      {{"um\nmeia", " linha\ntr", "es\r\n"}, {"um", "meia linha", "tres"}, ""},
      {{zero + "\n" + zero}, {zero}, zero},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.pieces));
    LineBuffer buffer;
    Lines lines = {"antes"};
    for (const std::string& piece : c.pieces) {
      buffer.bytes += piece;
      EXPECT_TRUE(TakeLines(buffer, lines));
    }
    Lines expected = c.lines;
    expected.insert(expected.begin(), "antes");
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(buffer.bytes, c.rest);
  }
}

TEST(LinesTest, LimitsTheRestAndNotTheLine) {
  LineBuffer buffer;
  Lines lines;
  buffer.bytes = "um\n" + std::string(kLineRestLimit, 'x');
  EXPECT_TRUE(TakeLines(buffer, lines));
  buffer.bytes += "xx\ny";
  EXPECT_TRUE(TakeLines(buffer, lines));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].size(), kLineRestLimit + 2);
  EXPECT_EQ(buffer.bytes, "y");

  buffer.bytes = "tres\n" + std::string(kLineRestLimit + 1, 'x');
  buffer.scanned = 0;
  EXPECT_FALSE(TakeLines(buffer, lines));
  EXPECT_EQ(lines.back(), "tres");
  buffer.Clear();
  EXPECT_LT(buffer.bytes.capacity(), 100u);
}

TEST(LinesTest, LooksThroughALongLineOnceAndDoesNotCopyIt) {
  LineBuffer buffer;
  Lines lines;
  buffer.bytes = std::string(100'000, 'x');
  EXPECT_TRUE(TakeLines(buffer, lines));
  EXPECT_EQ(buffer.scanned, buffer.bytes.size());
  buffer.bytes[0] = '\n';  // Shows that nobody looks there again.
  buffer.bytes.reserve(100'002);
  buffer.bytes += "\r\n";
  const char* place = buffer.bytes.data();
  EXPECT_TRUE(TakeLines(buffer, lines));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].data(), place);
  EXPECT_EQ(lines[0].size(), 100'000u);
  // What comes next is looked through from its start again.
  buffer.bytes += "dois\n";
  EXPECT_TRUE(TakeLines(buffer, lines));
  EXPECT_EQ(lines.back(), "dois");
}

}  // namespace
}  // namespace zorvik::core
