#include <gtest/gtest.h>

#include "tests/mcp/wire.h"
#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

TEST(DispatchTest, AnswersEachKindOfLine) {
  const std::string no_request =
      Failure("null", -32600, "Invalid Request: esperava um objeto JSON-RPC 2.0");
  const std::string bad_id =
      Failure("null", -32600, "Invalid Request: id deve ser texto ou inteiro");
  const std::string call = Request("1", "tools/call", R"({"name":"world_info"})");
  const std::pair<std::string, std::string> cases[] = {
      {"{", Failure("null", -32700, "Parse error: esperava um texto")},
      {"[]", Failure("null", -32600, "Invalid Request: lote vazio")},
      {"5", no_request},
      {R"({"id":1,"method":"ping"})", no_request},
      {R"({"jsonrpc":"1.0","id":1,"method":"ping"})", no_request},
      {R"({"jsonrpc":"2.0","id":1,"result":{}})", ""},
      {R"({"jsonrpc":"2.0","id":1,"method":7})", ""},
      {R"({"jsonrpc":"2.0","method":"ping"})", ""},
      {Request("1.5", "ping"), bad_id},
      {Request("null", "ping"), bad_id},
      {Request("true", "ping"), bad_id},
      {Request("2.0", "ping"), Result("2", "{}")},
      {Request("-3", "ping", "[1]"), Result("-3", "{}")},
      {Request(R"("a\u0000\"")", "logging/setLevel"), Result(R"("a\u0000\"")", "{}")},
      {Request("1", "Ping"), Failure("1", -32601, "Method not found: Ping")},
      {Request("1", "notifications/cancelled"),
       Failure("1", -32601, "Method not found: notifications/cancelled")},
      {"[" + Request("1", "ping") + R"(,{"jsonrpc":"2.0","method":"x"},5,[]])",
       "[" + Result("1", "{}") + "," + no_request + "," + no_request + "]"},
      {R"([{"jsonrpc":"2.0","method":"x"}])", ""},
      // Calls that an editor has are left out of the answer to their batch.
      {"[" + call + "," + Request("2", "ping") + "]", "[" + Result("2", "{}") + "]"},
      {"[" + call + "]", ""},
  };
  tests::ServerSession session;
  session.gateway.Open("e");
  session.Initialize("2025-11-25");
  for (const auto& [line, answer] : cases) EXPECT_EQ(session.Ask(line), answer) << line;
  EXPECT_EQ(session.log, std::vector<std::string>{"mensagem invalida: esperava um texto"});
  EXPECT_EQ(session.server.PendingCount(), 2u);
}

}  // namespace
}  // namespace zorvik::mcp
