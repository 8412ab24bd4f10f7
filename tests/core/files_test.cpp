#include "core/platform/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "tests/support/temporary_home.h"

namespace zorvik::core::platform {
namespace {

TEST(FilesTest, ReadsUpToALimit) {
  const tests::TemporaryHome home;
  std::string content;
  for (const auto& [size, read] : {std::pair(kLargestFile, true), {kLargestFile + 1, false}}) {
    tests::WriteText(home.Path() / "x", "");
    std::filesystem::resize_file(home.Path() / "x", size);
    EXPECT_EQ(ReadWholeFile(home.Path() / "x", content), read);
    EXPECT_EQ(content.size(), read ? size : 0);
  }
  // Linux: a regular file that claims to be empty and goes on for hundreds of gigabytes.
  EXPECT_FALSE(ReadWholeFile("/proc/self/pagemap", content));
}

}  // namespace
}  // namespace zorvik::core::platform
