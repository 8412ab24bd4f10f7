#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/local_pipe/client.h"
#include "core/local_pipe/lines.h"
#include "core/local_pipe/server.h"
#include "core/process.h"
#include "tests/support/wine.h"

namespace zorvik::core {
namespace {

using Ids = std::vector<std::int32_t>;

// Both ends live in this thread and are moved in turns.
class LocalPipeTest : public testing::Test {
 protected:
  void Poll() { server.Poll(messages, closed); }

  // Moves both ends until `done`, or fails after a time that no machine should need.
  void Until(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!done()) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline);
      Poll();
      if (client.Connected()) client.Receive(lines, error);
    }
  }

  void OpenAndConnect(std::int32_t limit = 4) {
    ASSERT_TRUE(server.Open(name, error, limit)) << error;
    ASSERT_TRUE(client.Connect(name, 0, error)) << error;
    Until([&] { return server.Connections() == 1; });
  }

  // Why a connection isn't made.
  std::string Refusal(LocalPipeClient& end, std::int32_t timeout_ms) const {
    std::string why;
    return end.Connect(name, timeout_ms, why) ? "connected" : why;
  }

  // What the server has received, each line behind the number of its connection.
  Lines Heard() const {
    Lines heard;
    for (const auto& [connection, line] : messages)
      heard.push_back(std::to_string(connection) + " " + line);
    return heard;
  }

  const std::string name = "zorvik-teste-" + RandomHex(8);
  const std::string busy = "o editor em " + name + " nao aceitou a conexao (erro do Windows 231)";
  const std::string lost = "a conexao com o editor caiu";
  std::uint64_t now = 1'000'000;  // By the client's clock.
  LocalPipeServer server;
  LocalPipeClient client{[this] { return now; }};
  std::vector<LocalPipeServer::Message> messages;
  Ids closed;
  Lines lines;
  std::string error;
};

TEST_F(LocalPipeTest, NothingMovesUnlessConnected) {
  EXPECT_EQ(Refusal(client, 3'000), "nenhum editor escuta em " + name);
  EXPECT_FALSE(client.Send("um", error));
  EXPECT_EQ(std::exchange(error, ""), "sem conexao com o editor");
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_EQ(error, "sem conexao com o editor");
  Poll();
  EXPECT_FALSE(server.IsOpen());
  EXPECT_FALSE(server.Send(1, "um"));
}

TEST_F(LocalPipeTest, ANameLeadsToNothingButItsOwnPipe) {
  ASSERT_TRUE(server.Open(name, error));
  for (const std::string& other : {name + std::string("\0x", 2), "x/../" + name, "..\\" + name}) {
    EXPECT_FALSE(client.Connect(other, 0, error));
    EXPECT_EQ(error, "o editor em " + other + " nao aceitou a conexao (erro do Windows 123)");
    EXPECT_FALSE(LocalPipeServer().Open(other, error));
    EXPECT_EQ(error, "o pipe " + other + " nao abriu (erro do Windows 123)");
  }
}

TEST_F(LocalPipeTest, LinesKeepTheirOrderBothWays) {
  ASSERT_TRUE(server.Open(name, error));
  EXPECT_EQ(server.Name(), name);
  EXPECT_FALSE(server.Send(1, "cedo"));  // It has no client yet.
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  const std::string big(3'000'000, 'x');
  for (const std::string& line : {std::string("um"), std::string(), std::string("dois\r"), big})
    ASSERT_TRUE(client.Send(line, error)) << error;
  Until([&] { return messages.size() == 3; });
  EXPECT_EQ(Heard(), (Lines{"1 um", "1 dois", "1 " + big}));
  for (const std::string& line : {std::string("quatro"), big}) ASSERT_TRUE(server.Send(1, line));
  EXPECT_TRUE(client.Receive(lines, error));
  EXPECT_TRUE(lines.empty());  // Only Poll writes.
  Until([&] { return lines.size() == 2; });
  EXPECT_EQ(lines, (Lines{"quatro", big}));
  EXPECT_TRUE(closed.empty());
}

TEST_F(LocalPipeTest, ALineThatIsTooLongEndsTheConnection) {
  const std::string endless(kLineRestLimit + 2'000'000, 'x');
  OpenAndConnect();
  ASSERT_TRUE(server.Send(1, endless));
  Until([&] { return !client.Connected(); });
  EXPECT_EQ(error, "o editor mandou uma linha grande demais");

  OpenAndConnect();
  ASSERT_TRUE(client.Send(endless, error));
  closed.clear();
  Until([&] { return !closed.empty(); });
  EXPECT_TRUE(messages.empty());
  EXPECT_EQ(server.Connections(), 0u);
}

TEST_F(LocalPipeTest, ClientsComeOneByOneUpToTheLimit) {
  ASSERT_TRUE(server.Open(name, error, 2));
  ASSERT_TRUE(client.Connect(name, 0, error));
  int asked = 0;
  LocalPipeClient second([&] {
    if (++asked > 4) Poll();  // The editor wakes up late, but in time.
    return now += 100;
  });
  EXPECT_EQ(Refusal(second, 0), busy);  // The next Poll makes room for it.
  EXPECT_EQ(server.Connections(), 0u);
  ASSERT_TRUE(second.Connect(name, 1'000, error)) << error;
  Poll();
  EXPECT_EQ(server.Connections(), 2u);
  LocalPipeClient third([&] { return now += 100; });
  EXPECT_EQ(Refusal(third, -5), busy);
  const std::uint64_t begin = now + 100;
  EXPECT_EQ(Refusal(third, 300), busy);
  EXPECT_EQ(now, begin + 300);
  ASSERT_TRUE(second.Send("do segundo", error));
  Until([&] { return messages.size() == 1; });
  ASSERT_TRUE(client.Send("do primeiro", error));
  Until([&] { return messages.size() == 2; });
  EXPECT_EQ(Heard(), (Lines{"2 do segundo", "1 do primeiro"}));
  second.Close();
  Poll();
  EXPECT_TRUE(third.Connect(name, 0, error)) << error;
}

TEST_F(LocalPipeTest, ANameIsItsServersUntilThatClosesAndCutsOffWithoutReports) {
  OpenAndConnect();
  LocalPipeServer other;
  // Wine 8 doesn't know FILE_FLAG_FIRST_PIPE_INSTANCE: it lets a second server in.
  EXPECT_TRUE(tests::RunsUnderWine() || !other.Open(name, error));
  EXPECT_TRUE(tests::RunsUnderWine() ||
              error == "o pipe " + name + " nao abriu (erro do Windows 5)");
  EXPECT_FALSE(other.IsOpen());
  server.Close();
  EXPECT_EQ(server.Connections(), 0u);
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_EQ(error, lost);
  EXPECT_TRUE(other.Open(name, error)) << error;
  other.Close();

  OpenAndConnect();
  ASSERT_TRUE(client.Send("de novo", error));
  Until([&] { return !messages.empty(); });
  // Ids go on, and the second was waiting when the server was closed.
  EXPECT_EQ(Heard(), Lines{"3 de novo"});

  // Opening an open server cuts off as well.
  ASSERT_TRUE(server.Open(name, error)) << error;
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_TRUE(closed.empty());
}

TEST_F(LocalPipeTest, ConnectDropsTheOldConnectionAndItsQueueFirst) {
  OpenAndConnect(-1);  // One at a time, but one after the other.
  ASSERT_TRUE(client.Send(std::string(8'000'000, 'x'), error));
  ASSERT_TRUE(client.Send("nunca", error));
  EXPECT_FALSE(client.Connect(name + "-outro", 0, error));
  Until([&] { return !closed.empty(); });
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  ASSERT_TRUE(client.Send("um", error));
  Until([&] { return !messages.empty(); });
  EXPECT_EQ(Heard(), Lines{"2 um"});
}

TEST_F(LocalPipeTest, DropDeliversWhatWasQueued) {
  OpenAndConnect();
  ASSERT_TRUE(client.Send("tarde", error));
  const Lines last = {"um", "dois", std::string(8'000'000, 'x')};
  for (const std::string& line : last) ASSERT_TRUE(server.Send(1, line));
  server.Drop(1);
  EXPECT_FALSE(server.Send(1, "quatro"));
  EXPECT_EQ(server.Connections(), 1u);
  Until([&] { return !client.Connected(); });
  EXPECT_EQ(error, lost);
  EXPECT_TRUE(lines == last);
  EXPECT_TRUE(messages.empty());
  EXPECT_TRUE(closed.empty());
  EXPECT_EQ(server.Connections(), 0u);
}

TEST_F(LocalPipeTest, AClientThatGoesIsReportedBehindItsLines) {
  OpenAndConnect();
  ASSERT_TRUE(server.Send(1, std::string(1'000'000, 'x')));
  Poll();
  ASSERT_TRUE(client.Send("um", error));
  ASSERT_TRUE(client.Send("dois", error));
  client.Close();
  Poll();
  EXPECT_EQ(Heard(), (Lines{"1 um", "1 dois"}));
  EXPECT_EQ(closed, Ids{1});
  EXPECT_FALSE(server.Send(1, "tres"));

  // One that leaves before it was noticed is reported too.
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  client.Close();
  Poll();
  EXPECT_EQ(closed, (Ids{1, 2}));
}

TEST_F(LocalPipeTest, EachWriteMayStandStillForThirtySeconds) {
  for (const bool by_send : {true, false}) {
    OpenAndConnect();
    for (int line = 0; line < 8; ++line)
      ASSERT_TRUE(client.Send(std::string(1'000'000, 'x'), error)) << error;
    now += 29'999;
    EXPECT_TRUE(client.Send("mais", error)) << error;
    EXPECT_TRUE(client.Receive(lines, error)) << error;
    // What is taken now ends that write, and the time of the next one begins.
    messages.clear();
    Until([&] { return !messages.empty(); });
    EXPECT_TRUE(client.Receive(lines, error)) << error;
    now += 29'999;
    EXPECT_TRUE(client.Receive(lines, error)) << error;
    now += 1;
    EXPECT_FALSE(by_send ? client.Send("mais", error) : client.Receive(lines, error));
    EXPECT_EQ(error, by_send ? lost : "o editor parou de ler o que foi mandado");
    EXPECT_FALSE(client.Connected());
  }
}

}  // namespace
}  // namespace zorvik::core
