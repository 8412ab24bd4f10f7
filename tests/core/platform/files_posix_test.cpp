#include "core/platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <iterator>
#include <string>
#include <thread>

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
  for (const mode_t mask : {0U, 0777U}) {
    const tests::TemporaryHome home;
    chmod(home.Path().c_str(), 0755);
    const std::filesystem::path target = home.Path() / "a" / "b" / "x";
    const std::filesystem::path bystander = home.Path() / "alheio";
    tests::WriteText(bystander, "intacto");
    const mode_t before = umask(mask);
    EXPECT_EQ(Write(target, "1"), "");
    EXPECT_EQ(Rights(target), 0600U);
    // A leftover that others may read and that leads elsewhere takes nothing in.
    chmod(bystander.c_str(), 0666);
    std::filesystem::create_symlink(bystander, target.string() + ".tmp");
    EXPECT_EQ(Write(target, "2"), "");
    umask(before);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(target)));
    EXPECT_EQ(tests::ReadText(target), "2");
    EXPECT_EQ(Rights(target), 0600U);
    EXPECT_EQ(tests::ReadText(bystander), "intacto");
    EXPECT_EQ(Rights(home.Path() / "a"), 0700U);
    EXPECT_EQ(Rights(home.Path() / "a" / "b"), 0700U);
    EXPECT_EQ(Rights(home.Path()), 0755U);
  }
}

TEST(FilesPosixTest, WhoeverPutsALinkInTheWayGainsNothing) {
  const tests::TemporaryHome home;
  const std::filesystem::path bystander = home.Path() / "alheio";
  const std::filesystem::path link = home.Path() / "laço";
  tests::WriteText(bystander, "intacto");
  std::atomic<bool> done = false;
  std::thread intruder([&] {
    for (std::error_code ignored; !done;) {
      std::filesystem::create_symlink(bystander, link, ignored);
      std::filesystem::rename(link, home.Path() / "x.tmp", ignored);
    }
  });
  for (int turn = 0; turn < 1'000; ++turn) Write(home.Path() / "x", "segredo");
  done = true;
  intruder.join();
  EXPECT_EQ(tests::ReadText(bystander), "intacto");
}

TEST(FilesPosixTest, RecordsComeOnlyFromWhereNobodyElseCanWrite) {
  constexpr uid_t kSomebody = 12'345;
  EditorRecord record;
  record.pipe = "p";
  record.pid = CurrentProcessId();
  for (const bool of_folder : {true, false}) {
    const struct {
      mode_t mode;
      uid_t owner;
      std::string reason;  // Why it is refused; empty: it isn't.
    } kCases[] = {{0755, getuid(), ""},
                  {0775, getuid(), "outros usuários têm acesso a ela"},
                  {0757, getuid(), "outros usuários têm acesso a ela"},
                  {0700, kSomebody, "pertence a outro usuário (uid 12345)"}};
    for (const auto& c : kCases) {
      if (c.owner == kSomebody && getuid() != 0) continue;
      const tests::TemporaryHome home;
      ASSERT_EQ(WriteEditorRecord(record).status, WriteStatus::Ok);
      const std::filesystem::path file = home.Editors() / (std::to_string(record.pid) + ".json");
      const std::filesystem::path changed = of_folder ? home.Editors() : file;
      ASSERT_EQ(chmod(changed.c_str(), c.mode) + chown(changed.c_str(), c.owner, 0), 0);
      const bool refused = of_folder && !c.reason.empty();
      testing::internal::CaptureStderr();
      for (int turn = 0; turn < 2; ++turn)
        EXPECT_EQ(ListEditorRecords().size(), c.reason.empty() ? 1U : 0U) << changed << c.reason;
      EXPECT_EQ(WriteEditorRecord(record).status,
                refused ? WriteStatus::FolderFailed : WriteStatus::Ok);
      RemoveEditorRecord(record.pid);
      EXPECT_EQ(std::filesystem::exists(file), refused);
      EXPECT_EQ(
          testing::internal::GetCapturedStderr(),
          refused ? "zorvik: pasta recusada: " + changed.string() + ": " + c.reason + ".\n" : "");
    }
  }
}

TEST(FilesPosixTest, AFolderBehindALinkIsNotTheOneThatWasMeant) {
  const tests::TemporaryHome home;
  const std::filesystem::path elsewhere = home.Path() / "alheio";
  tests::WriteText(elsewhere / "1.json", R"({"pipe":"p","pid":2147483647})");
  std::filesystem::create_symlink(elsewhere, home.Editors());
  EditorRecord record;
  record.pid = 1;
  EXPECT_TRUE(ListEditorRecords().empty());
  EXPECT_EQ(WriteEditorRecord(record).status, WriteStatus::FolderFailed);
  RemoveEditorRecord(record.pid);
  EXPECT_TRUE(std::filesystem::exists(elsewhere / "1.json"));
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

}  // namespace
}  // namespace zorvik::core::platform
