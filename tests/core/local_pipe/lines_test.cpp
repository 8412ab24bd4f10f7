#include "core/local_pipe/lines.h"

#include <gtest/gtest.h>

#include <string>

namespace zorvik::core {
namespace {

TEST(LinesTest, CutsAtLineFeedsHoweverTheBytesArrive) {
  const std::string zero("a\0b", 3);
  const struct {
    Lines pieces;  // As they arrive.
    Lines lines;
    std::string rest;
  } cases[] = {{{"um\r\r\n"}, {"um\r"}, ""},
               {{"u\rm\n"}, {"u\rm"}, ""},
               {{"\r\n"}, {}, ""},
               {{"\n\r\num\n\n"}, {"um"}, ""},
               {{"um\ndois\nres"}, {"um", "dois"}, "res"},
               {{"um\r", "\ndois\n"}, {"um", "dois"}, ""},
               {{"um\nmeia", " linha\ntr", "es\r\n"}, {"um", "meia linha", "tres"}, ""},
               {{zero + "\n" + zero}, {zero}, zero}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.pieces));
    LineBuffer buffer;
    Lines lines = {"antes"};
    for (const std::string& piece : c.pieces) {
      buffer.Append(piece);
      EXPECT_TRUE(TakeLines(buffer, lines));
    }
    EXPECT_EQ(lines.front(), "antes");
    lines.pop_front();
    EXPECT_EQ(lines, c.lines);
    EXPECT_EQ(buffer.bytes, c.rest);
  }
}

TEST(LinesTest, LimitsTheRestAndNotTheLine) {
  LineBuffer buffer;
  Lines lines;
  buffer.Append("um\n" + std::string(kLineRestLimit, 'x'));
  EXPECT_TRUE(TakeLines(buffer, lines));
  buffer.Append("xx\ny");
  EXPECT_TRUE(TakeLines(buffer, lines));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].size(), kLineRestLimit + 2);
  buffer.Append("\ntres\n" + std::string(kLineRestLimit + 1, 'x'));
  EXPECT_FALSE(TakeLines(buffer, lines));
  EXPECT_EQ(lines.back(), "tres");
  buffer.Clear();
  EXPECT_LT(buffer.bytes.capacity(), 100u);
}

TEST(LinesTest, LooksThroughALongLineOnceAndNeverMovesIt) {
  LineBuffer buffer;
  Lines lines;
  buffer.Append(std::string(1'048'577, 'x'));
  const char* const place = buffer.bytes.data();
  EXPECT_TRUE(TakeLines(buffer, lines));
  buffer.bytes[0] = '\n';  // Shows that nobody looks there again.
  buffer.Append(std::string(kLineRestLimit - buffer.bytes.size(), 'x'));
  buffer.Append("\r\n");
  EXPECT_TRUE(TakeLines(buffer, lines));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].data(), place);
  EXPECT_EQ(lines[0].size(), kLineRestLimit);
  // What comes next is looked through from its start again.
  buffer.Append("\ndois\n");
  EXPECT_TRUE(TakeLines(buffer, lines));
  EXPECT_EQ(lines.back(), "dois");
}

}  // namespace
}  // namespace zorvik::core
