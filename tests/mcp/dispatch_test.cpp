#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;

TEST(DispatchTest, AnswersEachKindOfLine) {
  const std::string no_request =
      FailureLine("null", -32600, "Invalid Request: esperava um objeto JSON-RPC 2.0");
  const std::string bad_id =
      FailureLine("null", -32600, "Invalid Request: id deve ser texto ou inteiro");
  const std::string call = RequestLine("1", "tools/call", R"({"name":"world_info"})");
  const std::pair<std::string, std::string> cases[] = {
      {"{", FailureLine("null", -32700, "Parse error: esperava um texto")},
      {"[]", FailureLine("null", -32600, "Invalid Request: lote vazio")},
      {R"({"id":1,"method":"ping"})", no_request},
      {R"({"jsonrpc":"1.0","id":1,"method":"ping"})", no_request},
      {R"({"jsonrpc":"2.0","id":1,"result":{}})", ""},
      {R"({"jsonrpc":"2.0","id":1,"method":7})", ""},
      {RequestLine("1.5", "ping"), bad_id},
      {RequestLine("null", "ping"), bad_id},
      {RequestLine("2.0", "ping"), ResultLine("2", "{}")},
      {RequestLine("-3", "ping", "[1]"), ResultLine("-3", "{}")},
      {RequestLine(R"("a\u0000\"")", "logging/setLevel"), ResultLine(R"("a\u0000\"")", "{}")},
      {RequestLine("1", "notifications/cancelled"),
       FailureLine("1", -32601, "Method not found: notifications/cancelled")},
      {"[" + RequestLine("1", "ping") + R"(,{"jsonrpc":"2.0","method":"x"},5,[]])",
       "[" + ResultLine("1", "{}") + "," + no_request + "," + no_request + "]"},
      {R"([{"jsonrpc":"2.0","method":"x"}])", ""},
      // Calls that an editor has are left out of the answer to their batch.
      {"[" + call + "," + RequestLine("2", "ping") + "]", "[" + ResultLine("2", "{}") + "]"},
  };
  ServerSession session;
  session.gateway.Open("e");
  session.Initialize("2025-11-25");
  for (const auto& [line, answer] : cases) EXPECT_EQ(session.Ask(line), answer) << line;
  EXPECT_EQ(session.log, std::vector<std::string>{"mensagem invalida: esperava um texto"});
  EXPECT_EQ(session.server.PendingCount(), 1u);
}

}  // namespace
}  // namespace zorvik::mcp
