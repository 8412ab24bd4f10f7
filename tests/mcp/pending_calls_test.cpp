#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Lines = std::vector<std::string>;

std::string Call(const std::string& id, const std::string& editor) {
  return R"({"jsonrpc":"2.0","id":)" + id +
         R"(,"method":"tools/call","params":{"name":"world_info","arguments":{"editor_id":")" +
         editor + R"("}}})";
}

std::string Cancelled(const std::string& id) {
  return R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" + id +
         "}}";
}

std::string Failed(const std::string& id, const std::string& error) {
  core::Json block = core::Json::Object();
  block.Set("type", core::Json::Text("text"));
  block.Set("text", core::Json::Text(R"({"ok":false,"error":)" + error + "}"));
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":{"content":[)" + core::WriteJson(block) +
         R"(],"isError":true}})";
}

const std::string kOk =
    R"(,"result":{"content":[{"type":"text","text":"{\"ok\":true}"}],"isError":false}})";
const std::string kLost =
    R"({"code":"editor_disconnected","message":"A conexao com o editor a caiu antes da resposta.",)"
    R"("hint":"Se era uma alteracao, confira world_info e history antes de repetir; repita com o mesmo )"
    R"(request_id para nao aplicar duas vezes."})";
const std::string kTimeout =
    R"({"code":"timeout","message":"O editor nao respondeu a world_info a tempo.","hint":"Repita com o )"
    R"(mesmo request_id: uma alteracao que chegar tarde nao e aplicada duas vezes."})";

class PendingCallsTest : public testing::Test {
 protected:
  PendingCallsTest() {
    session.gateway.Open("a");
    session.gateway.Open("b");
    session.Initialize("2025-03-26");
  }
  tests::ServerSession session;
};

TEST_F(PendingCallsTest, RepliesEndCallsInTheOrderOfArrival) {
  for (const char* id : {"1", "\"x\"", "3"}) session.Ask(Call(id, "a"));
  session.time += milliseconds(12) + nanoseconds(999'999);
  session.gateway.Answer("a", R"([1])");
  session.gateway.Answer("a", R"({"ok":true})");
  session.gateway.Answer("a", R"({"id":-2,"ok":true})");
  session.gateway.Answer("a", R"({"id":99,"ok":true})");
  session.gateway.Answer("b", R"({"id":2,"ok":true})");  // The editor isn't compared.
  session.gateway.Answer("a", R"({"id":1,"ok":false,"error":{"code":"busy"}})");
  session.gateway.Answer("a", R"({"id":1,"ok":true})");  // Too late: that call has ended.
  EXPECT_EQ(session.Poll(),
            R"({"jsonrpc":"2.0","id":"x")" + kOk + "\n" + Failed("1", R"({"code":"busy"})"));
  EXPECT_EQ(session.server.PendingCount(), 1u);
  session.gateway.Answer("a", R"({"id":3})");
  session.Poll();
  EXPECT_EQ(session.log, (Lines{"world_info -> ok em 12 ms", "world_info -> busy em 12 ms",
                                "world_info -> erro em 12 ms"}));
}

TEST_F(PendingCallsTest, ALostEditorCostsItsCallsOnlyAndARepliedOneWins) {
  session.Ask(Call("1", "a"));
  session.Ask(Call("2", "b"));
  session.Ask(Call("3", "a"));
  session.gateway.Answer("a", R"({"id":3,"ok":true})");
  session.gateway.lost = {"a", "a"};
  EXPECT_EQ(session.Poll(), R"({"jsonrpc":"2.0","id":3)" + kOk + "\n" + Failed("1", kLost));
  EXPECT_EQ(session.server.PendingCount(), 1u);
  EXPECT_EQ(session.log.back(), "world_info -> editor_disconnected");
}

TEST_F(PendingCallsTest, TheDeadlineIsExact) {
  session.Ask(Call("1", "a"));
  session.time += milliseconds(5);
  session.Ask(Call("2", "a"));
  session.time += milliseconds(120'000 - 5) - nanoseconds(1);
  EXPECT_EQ(session.Poll(), "");
  session.time += nanoseconds(1);
  EXPECT_EQ(session.Poll(), Failed("1", kTimeout));
  session.time += milliseconds(5);
  session.gateway.Answer("a", R"({"id":2,"ok":true})");
  EXPECT_EQ(session.Poll(), R"({"jsonrpc":"2.0","id":2)" + kOk);  // In time for this poll.
  EXPECT_EQ(session.log.front(), "world_info -> timeout");
}

TEST_F(PendingCallsTest, CancellationTellsTheEditorAndNeverTheClient) {
  session.Ask(Call("1", "a"));
  session.Ask(Call("1", "b"));
  session.Ask(Call("\"1\"", "a"));
  session.gateway.sent.clear();
  for (const char* unknown : {"9", "null", "true", "\"9\""}) session.Ask(Cancelled(unknown));
  EXPECT_TRUE(session.gateway.sent.empty());
  EXPECT_TRUE(session.log.empty());

  session.Ask(Cancelled("1.0"));
  session.gateway.editors.erase(session.gateway.editors.begin() + 1);
  session.Ask(Cancelled("1"));  // Its editor has gone from the list: dropped without a message.
  session.gateway.send_failure = "x";
  session.Ask(Cancelled("\"1\""));
  using Sent = std::pair<std::string, std::string>;
  EXPECT_EQ(session.gateway.sent,
            (std::vector<Sent>{{"a", R"({"id":4,"op":"cancel","target":1,"token":"token-a"})"}}));
  EXPECT_EQ(session.log, Lines(3, "cancelado pelo cliente: world_info"));
  session.gateway.Answer("a", R"({"id":1,"ok":true})");
  session.gateway.Answer("a", R"({"id":4,"ok":true})");
  EXPECT_EQ(session.Poll(), "");

  session.gateway.send_failure.clear();
  session.Ask(Call("5", "a"));
  EXPECT_NE(session.gateway.sent.back().second.find(R"("id":7,)"), std::string::npos);
}

TEST_F(PendingCallsTest, AnswersHaveTheFormThatTheirRequestAskedFor) {
  session.Ask(
      R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"world_info","arguments":)"
      R"({"editor_id":"a"},"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
      R"("io.modelcontextprotocol/clientCapabilities":{}}}})");
  session.Ask(Call("2", "a"));
  session.Initialize("2025-11-25");
  session.gateway.Answer("a", R"({"id":1,"ok":true})");
  session.gateway.Answer("a", R"({"id":2,"ok":true})");
  EXPECT_EQ(
      session.Poll(),
      R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":"{\"ok\":true}"}],)"
      R"("structuredContent":{"ok":true},"isError":false,"resultType":"complete","_meta":)"
      R"({"io.modelcontextprotocol/serverInfo":{"name":"zorvik-mcp","title":"ZORVIK - autoria de )"
      R"(mundos","version":"0.1.0"}}}})"
      "\n"
      R"({"jsonrpc":"2.0","id":2)" +
          kOk);
}

}  // namespace
}  // namespace zorvik::mcp
