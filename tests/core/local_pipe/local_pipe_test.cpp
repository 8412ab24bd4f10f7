#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/local_pipe/client.h"
#include "core/local_pipe/lines.h"
#include "core/local_pipe/server.h"
#include "core/platform/error_codes.h"
#include "core/platform/pipes.h"
#include "core/process.h"
#include "tests/support/wine.h"

namespace zorvik::core {
namespace {

using Clock = std::chrono::steady_clock;
using Ids = std::vector<std::int32_t>;

constexpr const char* kLost = "a conexao com o editor caiu";

// Both ends live in this thread and are moved in turns.
class LocalPipeTest : public testing::Test {
 protected:
  LocalPipeTest() {
    static int count = 0;
    name = "zorvik-teste-" + std::to_string(CurrentProcessId()) + "-" + std::to_string(++count);
    busy = "o editor em " + name + " nao aceitou a conexao (erro do Windows 231)";
    missing = "nenhum editor escuta em " + name;
  }

  void Poll() { server.Poll(messages, closed); }

  // Moves both ends until `done`, or fails after a time that no machine should need.
  void Until(const std::function<bool()>& done) {
    const auto deadline = Clock::now() + std::chrono::seconds(30);
    while (!done()) {
      ASSERT_LT(Clock::now(), deadline);
      Poll();
      if (client.Connected()) client.Receive(lines, error);
    }
  }

  void OpenAndConnect(std::int32_t limit = 4) {
    ASSERT_TRUE(server.Open(name, error, limit)) << error;
    ASSERT_TRUE(client.Connect(name, 0, error)) << error;
    Until([&] { return server.Connections() == 1; });
    // Ids are given to the instances in order, and the first one took this client.
    ASSERT_TRUE(server.Send(1, "oi"));
    Until([&] { return !lines.empty(); });
    ASSERT_EQ(lines, Lines{"oi"});
    lines.clear();
  }

  Lines Received(std::int32_t connection) const {
    Lines received;
    for (const auto& message : messages)
      if (message.connection == connection) received.push_back(message.line);
    return received;
  }

  // Writes bytes that needn't be whole lines.
  void Write(platform::PipeEnd& end, std::string_view bytes) {
    while (!bytes.empty()) {
      ASSERT_TRUE(end.StartWrite(bytes));
      std::size_t count = 0;
      auto progress = platform::Progress::Pending;
      Until([&] { return (progress = end.FinishWrite(count)) != platform::Progress::Pending; });
      ASSERT_EQ(progress, platform::Progress::Done);
      bytes.remove_prefix(count);
    }
  }

  std::string name;
  std::string busy;
  std::string missing;
  LocalPipeServer server;
  LocalPipeClient client;
  std::vector<LocalPipeServer::Message> messages;
  Ids closed;
  Lines lines;
  std::string error;
};

TEST_F(LocalPipeTest, NothingMovesUnlessConnected) {
  EXPECT_FALSE(client.Send("um", error));
  EXPECT_EQ(error, "sem conexao com o editor");
  error.clear();
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_EQ(error, "sem conexao com o editor");
  EXPECT_FALSE(client.Connect(name, 3'000, error));
  EXPECT_EQ(error, missing);
  client.Close();
  client.Close();
  EXPECT_FALSE(client.Connected());

  Poll();
  server.Close();
  EXPECT_FALSE(server.IsOpen());
  EXPECT_FALSE(server.Send(1, "um"));
  EXPECT_FALSE(client.Connect(name, 0, error));
}

TEST_F(LocalPipeTest, LinesKeepTheirOrderBothWays) {
  ASSERT_TRUE(server.Open(name, error));
  EXPECT_EQ(server.Name(), name);
  EXPECT_FALSE(server.Send(1, "cedo"));  // It has no client yet.
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  for (const char* line : {"um", "", "dois\r", "tres"})
    ASSERT_TRUE(client.Send(line, error)) << error;
  Until([&] { return messages.size() == 3; });
  EXPECT_EQ(Received(1), (Lines{"um", "dois", "tres"}));
  ASSERT_TRUE(server.Send(1, "quatro"));
  ASSERT_TRUE(server.Send(1, "cinco"));
  EXPECT_TRUE(client.Receive(lines, error));
  EXPECT_TRUE(lines.empty());  // Only Poll writes.
  Until([&] { return lines.size() == 2; });
  EXPECT_EQ(lines, (Lines{"quatro", "cinco"}));
  EXPECT_TRUE(closed.empty());
}

TEST_F(LocalPipeTest, PiecesOfALineAreJoined) {
  platform::PipeService service;
  platform::PipeEnd editor;
  bool connected = false;
  ASSERT_TRUE(service.Prepare());
  ASSERT_EQ(service.Create(name, true, 2, editor), platform::kNoError);
  ASSERT_EQ(service.Listen(editor, connected), platform::kNoError);
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  Until([&] { return connected || editor.FinishAccept() == platform::Progress::Done; });
  Write(editor, "um\nmei");
  Until([&] { return !lines.empty(); });
  EXPECT_EQ(lines, Lines{"um"});
  Write(editor, "a linha\r\n");
  Until([&] { return lines.size() == 2; });
  EXPECT_EQ(lines[1], "meia linha");

  // A rest as long as the limit is kept; one byte more ends the connection.
  Write(editor, std::string(kLineRestLimit, 'x'));
  EXPECT_TRUE(client.Receive(lines, error)) << error;
  Write(editor, "\n" + std::string(kLineRestLimit, 'y'));
  EXPECT_TRUE(client.Receive(lines, error)) << error;
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[2].size(), kLineRestLimit);
  Write(editor, "y");
  Until([&] { return !client.Connected(); });
  EXPECT_EQ(error, "o editor mandou uma linha grande demais");
}

TEST_F(LocalPipeTest, TheServerEndsALineThatIsTooLong) {
  ASSERT_TRUE(server.Open(name, error));
  platform::PipeEnd end;
  ASSERT_EQ(platform::OpenPipe(name, end), platform::kNoError);
  Write(end, "mei");
  Poll();
  Write(end, "a\n" + std::string(kLineRestLimit, 'x'));
  Write(end, "\n" + std::string(kLineRestLimit, 'y'));
  for (int poll = 0; poll < 3; ++poll) Poll();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].line, "meia");
  EXPECT_EQ(messages[1].line.size(), kLineRestLimit);
  EXPECT_TRUE(closed.empty());
  ASSERT_TRUE(end.StartWrite("y"));
  Until([&] { return !closed.empty(); });
  EXPECT_EQ(closed, Ids{1});
  EXPECT_EQ(server.Connections(), 0u);
}

class LimitTest : public LocalPipeTest, public testing::WithParamInterface<std::int32_t> {};

TEST_P(LimitTest, OneClientAtATime) {
  OpenAndConnect(GetParam());
  LocalPipeClient hasty([] { return 0; });  // Whose time is always up at once or never.
  for (const std::int32_t timeout_ms : {0, -5}) {
    error.clear();
    EXPECT_FALSE(hasty.Connect(name, timeout_ms, error));
    EXPECT_EQ(error, busy);
  }
  LocalPipeClient second;
  const auto begin = Clock::now();
  EXPECT_FALSE(second.Connect(name, 300, error));
  EXPECT_EQ(error, busy);
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(299));
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));

  client.Close();
  Poll();
  EXPECT_EQ(closed, Ids{1});
  EXPECT_TRUE(second.Connect(name, 0, error)) << error;
  Poll();
  EXPECT_EQ(server.Connections(), 1u);
}

INSTANTIATE_TEST_SUITE_P(BelowOneCountsAsOne, LimitTest, testing::Values(1, 0, -1));

TEST_F(LocalPipeTest, ClientsComeOneByOneUpToTheLimit) {
  ASSERT_TRUE(server.Open(name, error, 2));
  LocalPipeClient second;
  LocalPipeClient third;
  ASSERT_TRUE(client.Connect(name, 0, error));
  EXPECT_FALSE(second.Connect(name, 0, error));  // The next Poll makes room for it.
  EXPECT_EQ(error, busy);
  EXPECT_EQ(server.Connections(), 0u);
  Poll();
  ASSERT_TRUE(second.Connect(name, 0, error)) << error;
  Poll();
  EXPECT_EQ(server.Connections(), 2u);
  EXPECT_FALSE(third.Connect(name, 0, error));
  EXPECT_EQ(error, busy);
  ASSERT_TRUE(second.Send("do segundo", error));
  ASSERT_TRUE(client.Send("do primeiro", error));
  Until([&] { return messages.size() == 2; });
  EXPECT_EQ(Received(1), Lines{"do primeiro"});
  EXPECT_EQ(Received(2), Lines{"do segundo"});
}

TEST_F(LocalPipeTest, ABusyPipeIsTriedUntilItIsFree) {
  ASSERT_TRUE(server.Open(name, error, 2));
  ASSERT_TRUE(client.Connect(name, 0, error));
  std::uint64_t now = 0;
  LocalPipeClient second([&] {
    // The editor wakes up late, but in time.
    if ((now += 100) >= 500) Poll();
    return now;
  });
  EXPECT_TRUE(second.Connect(name, 1'000, error)) << error;
}

TEST_F(LocalPipeTest, ANameHasOneServer) {
  OpenAndConnect();
  LocalPipeServer other;
  // Wine 8 doesn't know FILE_FLAG_FIRST_PIPE_INSTANCE: it lets a second server in.
  if (!tests::RunsUnderWine()) {
    EXPECT_FALSE(other.Open(name, error));
    EXPECT_EQ(error, "o pipe " + name + " nao abriu (erro do Windows 5)");
    EXPECT_FALSE(other.IsOpen());
  }
  ASSERT_TRUE(client.Send("ainda aqui", error));
  Until([&] { return messages.size() == 1; });
  server.Close();
  EXPECT_TRUE(other.Open(name, error)) << error;
}

TEST_F(LocalPipeTest, CloseCutsOffWithoutReportsAndIdsGoOn) {
  OpenAndConnect();
  server.Close();
  EXPECT_EQ(server.Connections(), 0u);
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_EQ(error, kLost);
  EXPECT_FALSE(client.Connect(name, 0, error));
  EXPECT_EQ(error, missing);

  ASSERT_TRUE(server.Open(name, error));
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  ASSERT_TRUE(client.Send("de novo", error));
  Until([&] { return !messages.empty(); });
  EXPECT_EQ(messages[0].connection, 3);  // The second was waiting when the server was closed.

  // Opening an open server cuts off as well.
  ASSERT_TRUE(server.Open(name, error)) << error;
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_TRUE(closed.empty());
}

TEST_F(LocalPipeTest, ConnectDropsTheOldConnectionAndItsQueueFirst) {
  OpenAndConnect();
  ASSERT_TRUE(client.Send(std::string(8'000'000, 'x'), error));
  ASSERT_TRUE(client.Send("nunca", error));
  EXPECT_FALSE(client.Connect(name + "-outro", 0, error));
  EXPECT_FALSE(client.Connected());
  Until([&] { return !closed.empty(); });
  EXPECT_EQ(closed, Ids{1});
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  ASSERT_TRUE(client.Send("um", error));
  Until([&] { return !messages.empty(); });
  EXPECT_EQ(Received(2), Lines{"um"});
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
  EXPECT_EQ(error, kLost);
  EXPECT_TRUE(lines == last);
  EXPECT_TRUE(messages.empty());
  EXPECT_TRUE(closed.empty());
  EXPECT_EQ(server.Connections(), 0u);
}

TEST_F(LocalPipeTest, LinesOfAnEditorThatWentComeWithTheLoss) {
  OpenAndConnect();
  for (const char* line : {"um", "dois", "tres"}) ASSERT_TRUE(server.Send(1, line));
  server.Drop(1);
  Poll();
  ASSERT_EQ(server.Connections(), 0u);
  EXPECT_FALSE(client.Receive(lines, error));
  EXPECT_EQ(lines, (Lines{"um", "dois", "tres"}));
  EXPECT_EQ(error, kLost);
  EXPECT_FALSE(client.Connected());
}

TEST_F(LocalPipeTest, AClientThatGoesIsReportedBehindItsLines) {
  OpenAndConnect();
  ASSERT_TRUE(server.Send(1, std::string(1'000'000, 'x')));
  Poll();
  ASSERT_TRUE(client.Send("um", error));
  ASSERT_TRUE(client.Send("dois", error));
  client.Close();
  Poll();
  EXPECT_EQ(Received(1), (Lines{"um", "dois"}));
  EXPECT_EQ(closed, Ids{1});
  EXPECT_FALSE(server.Send(1, "tres"));
  Poll();
  EXPECT_EQ(closed, Ids{1});

  // One that leaves before it was noticed is reported too.
  ASSERT_TRUE(client.Connect(name, 0, error)) << error;
  client.Close();
  Poll();
  EXPECT_EQ(closed, (Ids{1, 2}));
}

TEST_F(LocalPipeTest, AWriteMayStandStillForThirtySeconds) {
  const std::vector<std::pair<bool, std::string>> cases = {
      {true, kLost}, {false, "o editor parou de ler o que foi mandado"}};
  for (const auto& [by_send, text] : cases) {
    SCOPED_TRACE(text);
    ASSERT_TRUE(server.Open(name, error));
    std::uint64_t now = 1'000'000;
    LocalPipeClient stalled([&] { return now; });
    ASSERT_TRUE(stalled.Connect(name, 0, error));
    Poll();
    for (int line = 0; line < 8; ++line)
      ASSERT_TRUE(stalled.Send(std::string(1'000'000, 'x'), error)) << error;
    now += 29'999;
    EXPECT_TRUE(stalled.Send("mais", error)) << error;
    EXPECT_TRUE(stalled.Receive(lines, error)) << error;
    now += 1;
    EXPECT_FALSE(by_send ? stalled.Send("mais", error) : stalled.Receive(lines, error));
    EXPECT_EQ(error, text);
    EXPECT_FALSE(stalled.Connected());
  }
}

TEST_F(LocalPipeTest, TheTimeOfAStallCountsForOneWriteOnly) {
  ASSERT_TRUE(server.Open(name, error));
  std::uint64_t now = 0;
  LocalPipeClient slow([&] { return now; });
  ASSERT_TRUE(slow.Connect(name, 0, error));
  for (int line = 0; line < 20; ++line)
    ASSERT_TRUE(slow.Send(std::string(1'000'000, 'x'), error)) << error;
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  std::size_t heard = 0;
  while (messages.size() < 20) {
    ASSERT_LT(Clock::now(), deadline);
    Poll();
    if (messages.size() > heard) {
      heard = messages.size();
      now += 20'000;
    }
    ASSERT_TRUE(slow.Receive(lines, error)) << error << " after " << heard;
  }
}

}  // namespace
}  // namespace zorvik::core
