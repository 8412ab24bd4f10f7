#include "core/platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ostream>
#include <string>

#include "core/editor_registry.h"
#include "core/file_write.h"
#include "core/process.h"
#include "tests/support/temporary_home.h"

namespace zorvik::core::platform {
namespace {

unsigned Rights(const std::filesystem::path& path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

std::string Write(const std::filesystem::path& path, const std::string& content) {
  return WriteFileDurably(path, content, FileEncoding::Binary).message;
}

TEST(FilesPosixTest, WhatIsWrittenIsReadableByItsUserAlone) {
  const tests::TemporaryHome home;
  chmod(home.Path().c_str(), 0755);
  const std::filesystem::path target = home.Path() / "a" / "b" / "x";
  const std::filesystem::path bystander = home.Path() / "alheio";
  tests::WriteText(bystander, "intacto");
  const mode_t mask = umask(0);
  EXPECT_EQ(Write(target, "1"), "");
  EXPECT_EQ(Rights(target), 0600U);
  // A leftover that others may read and that leads elsewhere takes nothing in.
  chmod(bystander.c_str(), 0666);
  std::filesystem::create_symlink(bystander, target.string() + ".tmp");
  EXPECT_EQ(Write(target, "2"), "");
  umask(mask);
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(target)));
  EXPECT_EQ(tests::ReadText(target), "2");
  EXPECT_EQ(Rights(target), 0600U);
  EXPECT_EQ(tests::ReadText(bystander), "intacto");
  EXPECT_EQ(Rights(home.Path() / "a"), 0700U);
  EXPECT_EQ(Rights(home.Path() / "a" / "b"), 0700U);
  EXPECT_EQ(Rights(home.Path()), 0755U);
}

TEST(FilesPosixTest, ARealFailureOfTheDiskLeavesAForcedOneArmed) {
  const tests::TemporaryHome home;
  const std::filesystem::path target = home.Path() / "x";
  InjectWriteFailure(WriteStep::SyncTemporary);
  const auto lose_file = [&target](std::ostream&, std::string&) {
    return std::filesystem::remove(target.string() + ".tmp");
  };
  EXPECT_EQ(WriteFileDurably(target, lose_file, FileEncoding::Binary).status,
            WriteStatus::WriteFailed);
  EXPECT_EQ(WriteFileDurably(target, "1", FileEncoding::Binary).status, WriteStatus::WriteFailed);
}

TEST(FilesPosixTest, ListingTheRegistryPassesOverWhateverStandsThere) {
  const tests::TemporaryHome home;
  tests::WriteText(home.Editors() / "z.json", R"({"pipe":"p","pid":1})");
  ASSERT_EQ(mkfifo((home.Editors() / "fila.json").c_str(), 0600), 0);
  std::filesystem::create_symlink("nada", home.Editors() / "solto.json");
  std::filesystem::create_symlink("eu.json", home.Editors() / "eu.json");
  EXPECT_EQ(ListEditorRecords().size(), 1U);  // Process 1, whoever asks.
  const std::filesystem::directory_iterator entries(home.Editors());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 4);
}

TEST(ProcessPosixTest, AZombieIsNotRunning) {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  siginfo_t info = {};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(ProcessAlive(static_cast<std::uint64_t>(child)));
  waitpid(child, nullptr, 0);
  EXPECT_FALSE(ProcessAlive(static_cast<std::uint64_t>(child)));
}

}  // namespace
}  // namespace zorvik::core::platform
