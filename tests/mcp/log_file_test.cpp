#include "mcp/log_file.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temporary_home.h"

namespace zorvik::mcp {
namespace {

using tests::ReadText;

TEST(LogFileTest, ShrinksToItsLast128KiBWhenItOutgrows256) {
  constexpr std::size_t kStamp = 20;
  const tests::TemporaryHome home;
  const std::filesystem::path path = home.Path() / "logs" / "x.log";
  LogFile log(path);
  testing::internal::CaptureStderr();
  log.Line(std::string(262'144 - kStamp - 1, 'a'));
  EXPECT_EQ(ReadText(path).size(), 262'144U);
  log.Line("100% b");
  const std::string cut = ReadText(path);
  ASSERT_EQ(cut.size(), 131'072U);
  EXPECT_EQ(cut.substr(0, 2), "aa");
  EXPECT_EQ(cut.substr(cut.size() - 8), " 100% b\n");
  log.Line("c");
  EXPECT_EQ(ReadText(path).size(), 131'072U + kStamp + 2);
  LogFile({}).Line("x\n\x1B\x7F\r\xC3\xA7");
  EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with(
      "aa\n[zorvik_mcp] 100% b\n[zorvik_mcp] c\n[zorvik_mcp] x\\x0a\\x1b\\x7f\\x0d\xC3\xA7\n"));
}

}  // namespace
}  // namespace zorvik::mcp
