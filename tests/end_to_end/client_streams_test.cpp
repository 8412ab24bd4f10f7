#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using Streams = ProgramStart::Input;

const std::string kPing = R"({"jsonrpc":"2.0","id":7,"method":"ping"})";
const std::string kPong = R"({"jsonrpc":"2.0","id":7,"result":{}})";
const std::string kInitialize = R"({"jsonrpc":"2.0","id":6,"method":"initialize"})";

// What the log of a server holds to which nobody said anything.
std::string SilentLog(const TemporaryHome& home) {
  return "iniciado: zorvik-mcp 0.1.0, registro em " + home.Path().string() + "\nencerrado\n";
}

TEST(StandardStreamsTest, FileIsReadToItsEnd) {
  const TemporaryHome home;
  WriteText(home.Path() / "pedidos", kInitialize + "\r\n\r\n\n" + kPing + "\n" + kPing);
  McpClient client("", {.input = Streams::File, .input_file = home.Path() / "pedidos"});
  EXPECT_TRUE(client.process.ReadLine()->starts_with(R"({"jsonrpc":"2.0","id":6,"result":)"));
  EXPECT_EQ(client.process.ReadToEnd(), kPong + "\n" + kPong + "\n");
}

TEST(StandardStreamsTest, NoInputAtAllEndsTheServerAtOnce) {
  for (const Streams input : {Streams::Null, Streams::Closed}) {
    const TemporaryHome home;
    McpClient client("", {.input = input});
    EXPECT_EQ(client.process.Wait(), 0);
    EXPECT_EQ(client.process.ReadToEnd(), "");
    EXPECT_EQ(client.Log(), SilentLog(home));
  }
}

// How the client's streams are made must make no difference to anything below.
class ClientStreamsTest : public testing::TestWithParam<Streams> {
 protected:
  TemporaryHome home;
  McpClient client{"2025-11-25", ProgramStart{.input = GetParam()}};
};

TEST_P(ClientStreamsTest, LinesAreFoundHoweverTheyAreCut) {
  const std::string input = std::string("\r\n\n").append(kPing).append("\r\n").append(kPing) + "\n";
  for (const char byte : input) ASSERT_TRUE(client.process.Write(std::string(1, byte)));
  EXPECT_EQ(client.process.ReadLine(), kPong);
  EXPECT_EQ(client.process.ReadLine(), kPong);
  client.process.Write(kPing.substr(0, 20));
  client.process.CloseInput();
  const std::string last = client.process.ReadToEnd();
  EXPECT_TRUE(last.starts_with(R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":)"
                               R"("Parse error: )"))
      << last;
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

TEST_P(ClientStreamsTest, EndlessLineEndsQuietly) {
  McpClient silent("", ProgramStart{.input = GetParam()});
  // The limit, and more than one read beyond it. The rest may find nobody who reads it.
  silent.process.Write(std::string(16'777'216 + 200'000, 'x'));
  EXPECT_EQ(silent.process.Wait(), 0);
  EXPECT_EQ(silent.process.ReadToEnd(), "");
  EXPECT_EQ(silent.Log(), SilentLog(home));
}

TEST_P(ClientStreamsTest, LargeBatchIsAnsweredInOneLine) {
  constexpr int kCount = 10'000;
  std::string batch = "[" + kPing;
  std::string answer = "[" + kPong;
  for (int i = 1; i < kCount; ++i) {
    batch += "," + kPing;
    answer += "," + kPong;
  }
  client.Line(batch + "]");
  EXPECT_EQ(client.process.ReadLine(), answer + "]");
}

INSTANTIATE_TEST_SUITE_P(Kinds, ClientStreamsTest,
                         testing::Values(Streams::Pipe, Streams::SocketPair));

// Far more than any pipe holds, so that the server has to wait in the middle of an answer.
TEST(StandardStreamsTest, ReaderThatPausesGetsEverything) {
  const TemporaryHome home;
  EditorProcess editor("vale");
  for (const ProgramStart& start :
       {ProgramStart{}, ProgramStart{.input = Streams::SocketPair},
        ProgramStart{.non_blocking_output = true},
        ProgramStart{.input = Streams::SocketPair, .non_blocking_output = true}}) {
    McpClient client("2025-11-25", start);
    std::vector<std::int64_t> ids(50);
    for (std::int64_t& id : ids) id = client.Begin("tools/list");
    McpClient busy;
    for (int i = 0; i < 50; ++i) EXPECT_EQ(Outcome(busy.Call("world_info")), "ok");

    const auto body = [&](std::int64_t id) {
      const std::string line = client.AnswerLine(id);
      return line.substr(line.find(R"("result")"));
    };
    const std::string first = body(ids.front());
    EXPECT_GT(first.size(), 100'000U);
    for (std::size_t i = 1; i < ids.size(); ++i) EXPECT_EQ(body(ids[i]), first);
  }
}

}  // namespace
}  // namespace zorvik::tests
