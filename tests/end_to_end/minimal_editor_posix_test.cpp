// The example in Python, which knows docs/bridge.md and no code of ours.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>

#include "core/platform/files.h"
#include "tests/support/child_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

constexpr int kNotFound = 127;  // What env ends with where there is no python3.

class MinimalEditorTest : public testing::TestWithParam<int> {};

TEST_P(MinimalEditorTest, WorksWithTheServerAndLeavesNothingBehind) {
  const TemporaryHome home;
  ChildProcess editor({.program = "minimal_editor.py", .arguments = {"--id", "minimo"}});
  const auto line = editor.ReadLine();
  if (!line && editor.Wait() == kNotFound) {
    std::cerr
        << "!!! SKIPPED: no python3 here to run the minimal editor (scripts/setup test) !!!\n";
    GTEST_SKIP();
  }
  ASSERT_EQ(line, "Editor minimo aberto. Ctrl-C fecha.");
  {
    McpClient client;
    const auto call = [&](const char* tool, const std::string& arguments = "{}") {
      return client.Call(tool, arguments).At("structuredContent");
    };
    const auto objects = [&] { return call("objects_query").At("total").IntOr(-1); };
    EXPECT_EQ(call("editor_list").At("editors")[0].At("editor_id").text, "minimo");
    EXPECT_EQ(call("world_info").At("revision").IntOr(-1), 1);
    const std::string rock =
        R"({"objects":[{"asset":"zorvik_rocha","x":4,"z":6.5}],"request_id":"a:1"})";
    const Json created = call("objects_create", rock);
    EXPECT_EQ(core::WriteJson(call("objects_create", rock)), core::WriteJson(created));
    EXPECT_EQ(objects(), 2);
    const std::string transaction =
        core::WriteJson(Json::Object({{"transaction", created.At("transaction").At("id")}}));
    EXPECT_EQ(Outcome(client.Call("history_revert", transaction)), "ok");
    EXPECT_EQ(Outcome(client.Call("history_revert", transaction)), "conflict");
    EXPECT_EQ(objects(), 1);
    EXPECT_EQ(Outcome(client.Call("roads_list")), "unsupported");
    EXPECT_EQ(Outcome(client.Call("objects_query", R"({"name":"rocha"})")), "unsupported");
  }
  ChildProcess judge({.program = "zorvik_editor_check",
                      .arguments = {"--changes", "--patience", "20"},
                      .error_file = "/dev/null"});
  EXPECT_NE(judge.ReadToEnd().find("passed     change.revert "), std::string::npos);
  EXPECT_EQ(judge.Wait(), 0);

  kill(static_cast<pid_t>(editor.Id()), GetParam());
  EXPECT_EQ(editor.Wait(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(home.Editors()));
  const std::string pipe = "zorvik-" + std::to_string(editor.Id()) + "-";
  for (const auto& entry : std::filesystem::directory_iterator(core::platform::TemporaryFolder()))
    EXPECT_FALSE(entry.path().filename().string().starts_with(pipe)) << entry.path();
}

INSTANTIATE_TEST_SUITE_P(Signals, MinimalEditorTest, testing::Values(SIGTERM, SIGINT));

}  // namespace
}  // namespace zorvik::tests
