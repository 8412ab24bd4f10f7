#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

TEST(FullDiskTest, CostsOnlyWhatWouldHaveBeenWritten) {
  const TemporaryHome home;
  // A small disk that only this process and its children see.
  if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("tmpfs", home.Path().c_str(), "tmpfs", 0, "size=256k") != 0) {
    std::cerr << "!!! SKIPPED: only root can mount a small disk !!!\n";
    GTEST_SKIP();
  }
  {
    EditorProcess editor("vale");
    McpClient client;
    EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
    const std::string before = client.Log();
    {
      std::ofstream filler(home.Path() / "cheio", std::ios::binary);
      while (filler << std::string(4096, 'x') << std::flush) {
      }
    }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
    EXPECT_EQ(client.Log(), before);
    ChildProcess late({.program = "zorvik_sample_editor", .error_file = "/dev/null"});
    EXPECT_EQ(late.Wait(), 1);
    EXPECT_EQ(client.Call("editor_list").At("structuredContent").At("editors").items.size(), 1U);

    std::filesystem::remove(home.Path() / "cheio");
    EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");
    const std::string log = client.Log();
    EXPECT_TRUE(log.starts_with(before));
    EXPECT_EQ(std::count(log.begin() + static_cast<std::ptrdiff_t>(before.size()), log.end(), '\n'),
              4);
  }
  umount2(home.Path().c_str(), MNT_DETACH);
}

// Standard error too may lie on a full disk, or be a pipe that nobody reads. And files may have a
// limit, here one that the log soon meets.
TEST(FullDiskTest, WhatNobodyCanTakeIsDropped) {
  const TemporaryHome home;
  const std::string pipe = home.Path() / "erros";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDWR);
  EXPECT_GT(fcntl(reader, F_SETPIPE_SZ, 4096), 0);
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit low = {1024, limit.rlim_max};
  for (const std::string& errors : {std::string("/dev/full"), pipe}) {
    setrlimit(RLIMIT_FSIZE, &low);
    ChildProcess server({.program = "zorvik_mcp", .error_file = errors});
    setrlimit(RLIMIT_FSIZE, &limit);
    for (int i = 0; i < 100; ++i) {
      server.Write("no JSON\n");
      EXPECT_TRUE(server.ReadLine()->find(R"("code":-32700)") != std::string::npos);
    }
    server.CloseInput();
    EXPECT_EQ(server.Wait(), 0);
  }
  close(reader);
}

}  // namespace
}  // namespace zorvik::tests
