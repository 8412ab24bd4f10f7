#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/editor_registry.h"
#include "core/local_pipe/server.h"
#include "core/process.h"
#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;
using Ids = std::vector<std::int64_t>;

std::string At(const std::string& editor) {
  return R"({"editor_id":")" + editor + R"("})";
}

std::string Message(const Json& result) {
  return result.At("structuredContent").At("error").At("message").text;
}

// An editor on the test's own thread, which does nothing but what the test has it do.
class PuppetEditor {
 public:
  explicit PuppetEditor(const std::string& id) {
    record.editor_id = id;
    record.pid = core::CurrentProcessId();
    record.pipe = "zorvik-test-" + core::RandomHex(8);
    EXPECT_EQ(core::WriteEditorRecord(record).message, "");
  }

  void Open() {
    std::string error;
    ASSERT_TRUE(pipe.Open(record.pipe, error)) << error;
    received.clear();
  }
  void Close() { pipe.Close(); }
  // Reads until there are `count` lines, those since Open.
  void Await(std::size_t count) {
    const auto limit = std::chrono::steady_clock::now() + kPatience;
    while (received.size() < count) {
      if (std::chrono::steady_clock::now() > limit) throw std::runtime_error("no line comes");
      Poll();
    }
  }
  // Answers the line of that number.
  void Answer(std::size_t number, bool ok) {
    const core::LocalPipeServer::Message& message = received.at(number);
    Json reply = Parse(R"({"id":0,"ok":true,"result":{}})");
    reply.Set("id", Parse(message.line).At("id"));
    reply.Set("ok", Json::Bool(ok));
    pipe.Send(message.connection, core::WriteJson(reply));
    Poll();
  }
  void Poll() {
    std::vector<std::int32_t> closed;
    pipe.Poll(received, closed);
    core::SleepMilliseconds(1);
  }

  core::EditorRecord record;
  std::vector<core::LocalPipeServer::Message> received;

 private:
  core::LocalPipeServer pipe;
};

class FaultsTest : public testing::Test {
 protected:
  void ExpectUnharmed() {
    EXPECT_EQ(client.Ask("ping").fields.size(), 0U);
    EXPECT_EQ(Outcome(client.Call("world_info", At("bom"))), "ok");
    EXPECT_TRUE(client.Unclaimed().empty());
  }

  const TemporaryHome home;
  EditorProcess good{"bom"};
  McpClient client;
};

TEST_F(FaultsTest, EditorThatDiesAtAnyPointEndsItsOwnCallsAndIsRegained) {
  struct Point {
    const char* name;
    bool listens, reads, answers_hello, answers_first;
  };
  PuppetEditor mortal("mortal");
  for (const Point& point : {Point{"before it listens", false, false, false, false},
                             Point{"before it reads", true, false, false, false},
                             Point{"after the hello was read", true, true, false, false},
                             Point{"after the hello was answered", true, true, true, false},
                             Point{"between two answers", true, true, true, true}}) {
    SCOPED_TRACE(point.name);
    if (point.listens) mortal.Open();
    const Ids calls = {client.BeginCall("world_info", At("mortal")),
                       client.BeginCall("world_summary", At("mortal"))};
    client.Ask("ping");  // Both calls have been sent by then.
    if (point.reads) mortal.Await(3);
    if (point.answers_hello) mortal.Answer(0, true);
    if (point.answers_first) {
      mortal.Answer(1, true);
      EXPECT_EQ(Outcome(client.Answer(calls[0]).At("result")), "ok");
    }
    mortal.Close();
    for (std::size_t call = point.answers_first ? 1 : 0; call < calls.size(); ++call) {
      const Json result = client.Answer(calls[call]).At("result");
      EXPECT_EQ(Outcome(result), "editor_disconnected");
      EXPECT_EQ(Message(result), point.listens
                                     ? "A conexao com o editor mortal caiu antes da resposta."
                                     : "Sem conexao com o editor mortal: nenhum editor escuta em " +
                                           mortal.record.pipe);
    }
    ExpectUnharmed();
  }
}

TEST_F(FaultsTest, HelloRefusedAgainAndAgainCostsOneConnectionEach) {
  PuppetEditor wary("arisco");
  wary.Open();
  std::set<std::int32_t> connections;
  constexpr std::size_t kRefusals = 50;
  for (std::size_t i = 0; i < kRefusals; ++i) {
    const std::int64_t call = client.BeginCall("world_info", At("arisco"));
    wary.Await(2 * i + 2);
    connections.insert(wary.received[2 * i].connection);
    wary.Answer(2 * i, false);
    EXPECT_EQ(Outcome(client.Answer(call).At("result")), "editor_disconnected");
  }
  EXPECT_EQ(connections.size(), kRefusals);
  const std::int64_t call = client.BeginCall("world_info", At("arisco"));
  wary.Await(2 * kRefusals + 2);
  wary.Answer(2 * kRefusals, true);
  wary.Answer(2 * kRefusals + 1, true);
  EXPECT_EQ(Outcome(client.Answer(call).At("result")), "ok");
  ExpectUnharmed();
}

TEST_F(FaultsTest, MegabytesForAnEditorThatDoesntReadHoldUpNobodyElse) {
  PuppetEditor idle("parado");
  idle.Open();
  std::string objects = R"({"editor_id":"parado","objects":[)";
  for (int i = 0; i < 250; ++i)
    objects += R"({"asset":"zorvik_rocha","x":1.25,"z":)" + std::to_string(i) + "},";
  objects.back() = ']';
  Ids calls(400);
  for (std::int64_t& id : calls) id = client.BeginCall("objects_create", objects + "}");
  for (int i = 0; i < 20; ++i) ExpectUnharmed();

  idle.Await(1 + calls.size());
  std::size_t bytes = 0;
  std::set<std::int64_t> bridge_ids;
  for (std::size_t i = 0; i < idle.received.size(); ++i) {
    bytes += idle.received[i].line.size();
    bridge_ids.insert(Parse(idle.received[i].line).At("id").IntOr(-1));
    idle.Answer(i, true);
  }
  EXPECT_GT(bytes, 4'000'000U);
  EXPECT_EQ(bridge_ids.size(), 1 + calls.size());
  for (const std::int64_t id : calls) EXPECT_EQ(Outcome(client.Answer(id).At("result")), "ok");
  ExpectUnharmed();
}

// The example editor serves four clients at once, so that places which aren't given back run out.
TEST_F(FaultsTest, ClientsThatVanishInTheMiddleOfALineLeaveNothingBehind) {
  for (int i = 0; i < 8; ++i) {
    McpClient vanishing;
    EXPECT_EQ(Outcome(vanishing.Call("world_info")), "ok");
    vanishing.BeginCall("world_info");
    vanishing.process.Write(R"({"jsonrpc":"2.0","id":99,"method":"to)");
    vanishing.process.CloseOutput();
    EXPECT_EQ(vanishing.Finish(), 0);
    EXPECT_TRUE(vanishing.Log().ends_with("\nencerrado\n"));
  }
  ExpectUnharmed();
}

TEST(DiskFaultsTest, LogThatCantBeWrittenCostsNothingAndCatchesUp) {
  const TemporaryHome home;
  WriteText(home.Path() / "logs", "no folder");
  EditorProcess editor("vale");
  McpClient client;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
  std::filesystem::remove(home.Path() / "logs");
  EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");

  std::string shown;
  std::istringstream errors(client.Errors());
  const std::size_t mark = std::string("[zorvik_mcp] ").size();
  for (std::string line; std::getline(errors, line);) shown += line.substr(mark) + "\n";
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 6);
  EXPECT_EQ(client.Log(), shown);
}

TEST(ClientFaultsTest, EveryCallOfAnEnormousBatchIsAnsweredOnce) {
  const TemporaryHome home;
  // Without a log the disk doesn't set the pace.
  WriteText(home.Path() / "logs", "no folder");
  EditorProcess editor("vale");
  McpClient client;
  constexpr std::int64_t kFirst = 1000;
  constexpr std::int64_t kEnd = kFirst + 10'000;
  std::string batch;
  for (std::int64_t id = kFirst; id < kEnd; ++id) {
    batch += batch.empty() ? "[" : ",";
    batch += R"({"jsonrpc":"2.0","id":)" + std::to_string(id) +
             R"(,"method":"tools/call","params":{"name":"world_info"}})";
  }
  client.Line(batch + "]");
  for (std::int64_t id = kFirst; id < kEnd; ++id)
    ASSERT_EQ(Outcome(client.Answer(id).At("result")), "ok") << id;
  client.Ask("ping");
  EXPECT_TRUE(client.Unclaimed().empty());
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_EQ(client.process.ReadToEnd(), "");
}

TEST_F(FaultsTest, ThousandLiveRecordsThatChangeWhileTheyAreReadHideNoEditor) {
  constexpr int kStill = 1000;
  constexpr int kChanging = 50;
  const auto path = [&](int i) { return home.Editors() / ("r" + std::to_string(i) + ".json"); };
  const auto record = [](int i) {
    return R"({"editor_id":"r)" + std::to_string(i) + R"(","pid":)" +
           std::to_string(core::CurrentProcessId()) + R"(,"pipe":"zorvik-nada"})";
  };
  for (int i = 0; i < kStill; ++i) WriteText(path(i), record(i));
  std::atomic<bool> stop = false;
  std::thread changes([&] {
    std::error_code ignored;
    for (int i = 0; !stop; i = (i + 1) % kChanging) {
      const std::string text = record(kStill + i);
      // Two of three are broken.
      WriteText(path(kStill + i), i % 3 == 0 ? text : text.substr(0, text.size() / (i % 3 + 1)));
      std::filesystem::remove(path(kStill + (i + kChanging / 2) % kChanging), ignored);
    }
  });
  for (int round = 0; round < 5; ++round) {
    std::set<std::string> seen;
    const Json listed = client.Call("editor_list");
    for (const Json& editor : listed.At("structuredContent").At("editors").items)
      seen.insert(editor.At("editor_id").text);
    EXPECT_TRUE(seen.contains("bom"));
    EXPECT_GE(seen.size(), 1U + kStill);
    EXPECT_LE(seen.size(), 1U + kStill + (kChanging + 2) / 3);
    EXPECT_EQ(Outcome(client.Call("world_info", At("r7"))), "editor_disconnected");
    EXPECT_EQ(Outcome(client.Call("world_info")), "ambiguous_editor");
    ExpectUnharmed();
  }
  stop = true;
  changes.join();
}

// All changes go to one editor, so that its revisions tell them apart, and the other's stays.
TEST_F(FaultsTest, TwoServersAndTwoEditorsKeepTheirAnswersApart) {
  EditorProcess changing("muda");
  McpClient other(kStateless);
  const std::string create =
      R"({"editor_id":"muda","objects":[{"asset":"zorvik_rocha","x":1,"z":1}]})";
  constexpr int kCalls = 100;
  Ids still[2];
  Ids changed[2];
  McpClient* const clients[] = {&client, &other};
  for (int call = 0; call < kCalls; ++call) {
    for (const int i : {0, 1}) {
      still[i].push_back(clients[i]->BeginCall("world_info", At("bom")));
      changed[i].push_back(clients[i]->BeginCall("objects_create", create));
    }
  }
  std::multiset<std::int64_t> revisions;
  std::multiset<std::int64_t> expected;
  for (const int i : {0, 1}) {
    const auto revision = [&](std::int64_t id) {
      return clients[i]->Answer(id).At("result").At("structuredContent").At("revision").IntOr(0);
    };
    for (const std::int64_t id : still[i]) EXPECT_EQ(revision(id), 1);
    for (const std::int64_t id : changed[i]) revisions.insert(revision(id));
    EXPECT_TRUE(clients[i]->Unclaimed().empty());
  }
  for (int revision = 2; revision < 2 + 2 * kCalls; ++revision) expected.insert(revision);
  EXPECT_EQ(revisions, expected);
}

}  // namespace
}  // namespace zorvik::tests
