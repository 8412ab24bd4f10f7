#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

// With a pause for each, 400 pings would take 1.6 s. A line that comes byte by byte holds up
// nothing that an editor answers meanwhile.
TEST(PausesPosixTest, EndAsSoonAsSomethingComes) {
  const TemporaryHome home;
  const EditorProcess editor("vale");
  for (const BytePipe::Kind streams : {BytePipe::Kind::Pipe, BytePipe::Kind::SocketPair}) {
    McpClient client("2025-11-25", {.streams = streams});
    ASSERT_EQ(Outcome(client.Call("world_info")), "ok");
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 400; ++i) client.Ask("ping");
    const std::int64_t call = client.BeginCall("world_info");
    const std::string dripping = R"({"jsonrpc":"2.0","id":"d","method":"ping"})";
    for (const char byte : dripping) client.process.Write({&byte, 1});
    EXPECT_EQ(Outcome(client.Answer(call).At("result")), "ok");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    client.Line("");
  }
}

}  // namespace
}  // namespace zorvik::tests
