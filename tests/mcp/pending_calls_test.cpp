#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Lines = std::vector<std::string>;
using Sent = std::vector<std::pair<std::string, std::string>>;

std::string Call(const std::string& id, const std::string& editor, const std::string& rest = "") {
  return RequestLine(
      id, "tools/call",
      R"({"name":"world_info","arguments":{"editor_id":")" + editor + "\"}" + rest + "}");
}

std::string Ok(const std::string& id) {
  return OldestAnswer(id, R"({"ok":true})", false);
}

class PendingCallsTest : public testing::Test {
 protected:
  PendingCallsTest() {
    session.gateway.Open("a");
    session.gateway.Open("b");
    session.Initialize("2025-03-26");
  }
  ServerSession session;
};

TEST_F(PendingCallsTest, RepliesEndCallsInTheOrderOfArrivalAndInTheFormThatWasAskedFor) {
  session.Ask(Call("1", "a"));
  session.Ask(Call("\"x\"", "a"));
  session.Ask(Call("3", "a", "," + kMeta));
  session.Initialize("2025-11-25");
  session.time += milliseconds(12) + nanoseconds(999'999);
  for (const char* stray : {"[1]", R"({"ok":true})", R"({"id":-2,"ok":true})", R"({"id":99})"})
    session.gateway.Answer("a", stray);
  session.gateway.Answer("b", R"({"id":2,"ok":true})");  // The editor isn't compared.
  session.gateway.Answer("a", R"({"id":1,"ok":false,"error":{"code":"busy"}})");
  session.gateway.Answer("a", R"({"id":1,"ok":true})");  // Too late: that call has ended.
  EXPECT_EQ(session.Poll(), Ok("\"x\"") + "\n" +
                                OldestAnswer("1", R"({"ok":false,"error":{"code":"busy"}})", true));
  session.gateway.Answer("a", R"({"id":3,"error":{}})");
  EXPECT_EQ(session.Poll(),
            ResultLine("3", R"({"content":[{"type":"text","text":"{\"ok\":false,\"error\":{}}"}],)"
                            R"("structuredContent":{"ok":false,"error":{}},"isError":true,)" +
                                kServerMeta + "}"));
  EXPECT_EQ(session.log, (Lines{"world_info -> ok em 12 ms", "world_info -> busy em 12 ms",
                                "world_info -> erro em 12 ms"}));
}

TEST_F(PendingCallsTest, WhatHasNoReplyEndsWithItsEditorOrAtItsDeadline) {
  session.Ask(Call("1", "a"));
  session.Ask(Call("3", "b"));
  for (int i = 0; i < 3; ++i) session.Ask(Call("1", "b"));
  session.gateway.Answer("b", R"({"id":2,"ok":true})");
  session.gateway.lost = {"b", "b"};
  const std::string lost =
      ToolFailure("editor_disconnected", "A conexao com o editor b caiu antes da resposta.",
                  "Se era uma alteracao, confira world_info e history antes de repetir; "
                  "repita com o mesmo request_id para nao aplicar duas vezes.");
  EXPECT_EQ(session.Poll(), Ok("3") + "\n" + lost + "\n" + lost + "\n" + lost);
  session.time += milliseconds(5);
  session.Ask(Call("4", "a"));
  session.time += milliseconds(120'000 - 5) - nanoseconds(1);
  EXPECT_EQ(session.Poll(), "");
  session.time += nanoseconds(1);
  EXPECT_EQ(session.Poll(),
            ToolFailure("timeout", "O editor nao respondeu a world_info a tempo.",
                        "Repita com o mesmo request_id: uma alteracao que chegar tarde nao e "
                        "aplicada duas vezes."));
  session.time += milliseconds(5);
  session.gateway.Answer("a", R"({"id":6,"ok":true})");
  EXPECT_EQ(session.Poll(), Ok("4"));  // In time for this poll.
  EXPECT_EQ(session.log,
            (Lines{"world_info -> ok em 0 ms", "world_info -> editor_disconnected",
                   "world_info -> editor_disconnected", "world_info -> editor_disconnected",
                   "world_info -> timeout", "world_info -> ok em 120000 ms"}));
}

TEST_F(PendingCallsTest, CancellationTellsTheEditorAndNeverTheClient) {
  const auto cancel = [&](const std::string& id) {
    session.Ask(R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" +
                id + "}}");
  };
  session.Ask(Call("1", "a"));
  session.Ask(Call("1", "b"));
  session.Ask(Call("\"1\"", "a"));
  session.gateway.sent.clear();
  for (const char* unknown : {"9", "null", "\"9\""}) cancel(unknown);
  EXPECT_TRUE(session.log.empty());

  cancel("1.0");
  session.gateway.editors.pop_back();
  cancel("1");  // Its editor has gone from the list: dropped without a message.
  session.gateway.send_failure = "x";
  cancel("\"1\"");
  session.gateway.Answer("a", R"({"id":1,"ok":true})");
  EXPECT_EQ(session.Poll(), "");
  EXPECT_EQ(session.server.PendingCount(), 0u);
  EXPECT_EQ(session.log, Lines(3, "cancelado pelo cliente: world_info"));
  session.gateway.send_failure.clear();
  session.Ask(Call("5", "a"));  // The messages that nobody got have used numbers too.
  EXPECT_EQ(session.gateway.sent,
            (Sent{{"a", R"({"id":4,"op":"cancel","target":1,"token":"token-a"})"},
                  {"a", R"({"id":7,"token":"token-a","op":"world.info","args":{},)"
                        R"("client":"cliente ","deadline_ms":120000})"}}));
}

// A walk through all calls for each of these would take minutes.
TEST_F(PendingCallsTest, CancellingTakesNoLongerWithManyCallsInFlight) {
  constexpr std::size_t kCalls = 40'000;
  for (std::size_t i = 0; i < kCalls; ++i) session.Ask(Call(std::to_string(i), "a"));
  const auto begin = std::chrono::steady_clock::now();
  for (std::size_t i = kCalls; i > kCalls / 2; --i)
    session.Ask(R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" +
                std::to_string(i - 1) + "}}");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_EQ(session.server.PendingCount(), kCalls / 2);
}

}  // namespace
}  // namespace zorvik::mcp
