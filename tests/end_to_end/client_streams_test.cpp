#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

const std::string kPing = R"({"jsonrpc":"2.0","id":7,"method":"ping"})";
const std::string kPong = R"({"jsonrpc":"2.0","id":7,"result":{}})";

TEST(StandardStreamsTest, InputThatIsNoPipeIsReadToItsEnd) {
  const TemporaryHome home;
  const std::filesystem::path file = home.Path() / "pedidos";
  WriteText(file, R"({"jsonrpc":"2.0","id":6,"method":"initialize"})"
                  "\r\n\r\n\n" +
                      kPing + "\n" + kPing);
  McpClient client("", {.input_file = file});
  EXPECT_TRUE(Parse(*client.process.ReadLine()).Has("result"));
  EXPECT_EQ(client.process.ReadToEnd(), kPong + "\n" + kPong + "\n");

  WriteText(file, "");
  const std::string started =
      "iniciado: zorvik-mcp 0.1.0, registro em " + home.Path().string() + "\n";
  for (const std::filesystem::path& input : {file, std::filesystem::path()}) {
    McpClient silent("", {.input_file = input});
    EXPECT_EQ(silent.process.Wait(), 0);
    EXPECT_EQ(silent.process.ReadToEnd(), "");
    EXPECT_EQ(silent.Log(), started + "encerrado\n");
  }
}

// How the client's streams are made must make no difference to anything below.
class ClientStreamsTest : public testing::TestWithParam<ProgramStart> {
 protected:
  TemporaryHome home;
  McpClient client{"2025-11-25", GetParam()};
};

TEST_P(ClientStreamsTest, ClosedInputEndsWithCallsInFlight) {
  EditorProcess editor("vale", {"never=world.info"});
  client.BeginCall("world_info");
  EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_EQ(client.process.ReadToEnd(), "");
}

TEST_P(ClientStreamsTest, ClosedOutputEndsQuietly) {
  client.process.CloseOutput();
  client.Line(kPing);
  EXPECT_EQ(client.process.Wait(), 0);
  EXPECT_TRUE(client.Log().ends_with("\nencerrado\n"));
}

// Far more than any pipe holds, so that the server has to wait in the middle of an answer.
TEST_P(ClientStreamsTest, ReaderThatPausesGetsEverything) {
  EditorProcess editor("vale");
  std::vector<std::int64_t> ids(50);
  for (std::int64_t& id : ids) id = client.Begin("tools/list");
  McpClient busy;
  for (int i = 0; i < 50; ++i) EXPECT_EQ(Outcome(busy.Call("world_info")), "ok");
  std::set<std::string> bodies;
  for (const std::int64_t id : ids) {
    const std::string line = client.AnswerLine(id);
    bodies.insert(line.substr(line.find(R"("result")")));
  }
  EXPECT_EQ(bodies.size(), 1U);
  EXPECT_GT(bodies.begin()->size(), 100'000U);
}

constexpr BytePipe::Kind kSockets = BytePipe::Kind::SocketPair;

INSTANTIATE_TEST_SUITE_P(Kinds, ClientStreamsTest,
                         testing::Values(ProgramStart{}, ProgramStart{.streams = kSockets},
                                         ProgramStart{.non_blocking_output = true},
                                         ProgramStart{.streams = kSockets,
                                                      .non_blocking_output = true}));

}  // namespace
}  // namespace zorvik::tests
