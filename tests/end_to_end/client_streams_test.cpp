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

using core::Json;
using Streams = ProgramStart::Input;

const std::string kPing = R"({"jsonrpc":"2.0","id":7,"method":"ping"})";
const std::string kPong = R"({"jsonrpc":"2.0","id":7,"result":{}})";

TEST(StandardStreamsTest, InputThatIsNoPipeIsReadToItsEnd) {
  const TemporaryHome home;
  const std::filesystem::path file = home.Path() / "pedidos";
  WriteText(file, R"({"jsonrpc":"2.0","id":6,"method":"initialize"})"
                  "\r\n\r\n\n" +
                      kPing + "\n" + kPing);
  McpClient client("", {.input = Streams::File, .input_file = file});
  EXPECT_TRUE(Parse(*client.process.ReadLine()).Has("result"));
  EXPECT_EQ(client.process.ReadToEnd(), kPong + "\n" + kPong + "\n");

  WriteText(file, "");
  const std::string started =
      "iniciado: zorvik-mcp 0.1.0, registro em " + home.Path().string() + "\n";
  for (const Streams input : {Streams::File, Streams::Closed}) {
    McpClient silent("", {.input = input, .input_file = file});
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

TEST_P(ClientStreamsTest, LinesAreFoundHoweverTheyAreCut) {
  for (const char byte : std::string("\r\n\n").append(kPing).append("\r\n").append(kPing) + "\n")
    ASSERT_TRUE(client.process.Write(std::string(1, byte)));
  EXPECT_EQ(client.process.ReadLine(), kPong);
  EXPECT_EQ(client.process.ReadLine(), kPong);
  client.process.Write(kPing.substr(0, 20));
  client.process.CloseInput();
  const Json last = Parse(client.process.ReadToEnd());
  EXPECT_EQ(last.At("error").At("code").IntOr(0), -32700);
}

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

// The answers at hand come in one line and the forwarded calls each in its own, more of them than
// the pipes to client and editor hold.
TEST_P(ClientStreamsTest, EveryRequestOfALargeBatchIsAnsweredOnce) {
  const TemporaryHome without_log;  // So that the disk doesn't set the pace.
  WriteText(without_log.Path() / "logs", "no folder");
  EditorProcess editor("vale");
  McpClient fresh("2025-11-25", GetParam());
  constexpr std::int64_t kFirst = 1000;
  constexpr std::int64_t kEnd = kFirst + 1000;
  std::string batch;
  std::string pongs;
  for (std::int64_t id = kFirst; id < kEnd; ++id) {
    batch += (batch.empty() ? "[" : ",") + kPing + R"(,{"jsonrpc":"2.0","id":)" +
             std::to_string(id) +
             R"(,"method":"tools/call","params":{"name":"objects_get","arguments":)" +
             ManyIds("vale") + "}}";
    pongs += (pongs.empty() ? "[" : ",") + kPong;
  }
  fresh.Line(batch + "]");
  EXPECT_EQ(fresh.process.ReadLine(), pongs + "]");
  for (std::int64_t id = kFirst; id < kEnd; ++id)
    ASSERT_EQ(Outcome(fresh.Answer(id).At("result")), "ok") << id;
  fresh.Ask("ping");
  EXPECT_TRUE(fresh.Unclaimed().empty());
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

INSTANTIATE_TEST_SUITE_P(Kinds, ClientStreamsTest,
                         testing::Values(ProgramStart{}, ProgramStart{.input = Streams::SocketPair},
                                         ProgramStart{.non_blocking_output = true},
                                         ProgramStart{.input = Streams::SocketPair,
                                                      .non_blocking_output = true}));

}  // namespace
}  // namespace zorvik::tests
