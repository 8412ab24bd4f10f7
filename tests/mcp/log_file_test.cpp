#include "mcp/log_file.h"

#include <gtest/gtest.h>

#include <string>

#include "core/file_write.h"
#include "tests/support/temporary_home.h"

namespace zorvik::mcp {
namespace {

using tests::ReadText;

class LogFileTest : public testing::Test {
 protected:
  // Logs without showing it and returns what standard error got.
  static std::string Log(LogFile& log, const std::string& line) {
    testing::internal::CaptureStderr();
    log.Line(line);
    return testing::internal::GetCapturedStderr();
  }

  tests::TemporaryHome home;
  std::filesystem::path path = home.Path() / "logs" / "x.log";
};

TEST_F(LogFileTest, AFailedWriteIsMadeUpForByTheNextLine) {
  tests::WriteText(path, "de antes\n");
  LogFile log(path);
  core::InjectWriteFailure(core::WriteStep::ReplaceTarget);
  EXPECT_EQ(Log(log, "100% perdida"), "[zorvik_mcp] 100% perdida\n");
  EXPECT_EQ(ReadText(path), "de antes\n");
  Log(log, "fim");
  const std::string text = ReadText(path);
  EXPECT_EQ(text.substr(19, 14) + text.substr(text.size() - 5), " 100% perdida\n fim\n");
  LogFile no_file{{}};
  EXPECT_EQ(Log(no_file, "x"), "[zorvik_mcp] x\n");
}

TEST_F(LogFileTest, ShrinksToItsLast128KiBWhenItOutgrows256) {
  constexpr std::size_t kStamp = 20;
  LogFile log(path);
  Log(log, std::string(262'144 - kStamp - 1, 'a'));
  EXPECT_EQ(ReadText(path).size(), 262'144U);
  Log(log, "b");
  const std::string cut = ReadText(path);
  ASSERT_EQ(cut.size(), 131'072U);
  EXPECT_EQ(cut.substr(0, 2), "aa");
  EXPECT_EQ(cut.substr(cut.size() - 3), " b\n");
  Log(log, "c");
  EXPECT_EQ(ReadText(path).size(), 131'072U + kStamp + 2);
}

}  // namespace
}  // namespace zorvik::mcp
