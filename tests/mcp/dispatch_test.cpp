#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

constexpr const char* kNotARequest =
    R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,"message":"Invalid Request: esperava um objeto JSON-RPC 2.0"}})";
constexpr const char* kBadId =
    R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,"message":"Invalid Request: id deve ser texto ou inteiro"}})";

struct Exchange {
  const char* line;
  std::string answer;
};

TEST(DispatchTest, AnswersEachKindOfLine) {
  const std::vector<Exchange> exchanges = {
      {"{",
       R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"Parse error: esperava um texto"}})"},
      {"[]",
       R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,"message":"Invalid Request: lote vazio"}})"},
      {"5", kNotARequest},
      {R"({"id":1,"method":"ping"})", kNotARequest},
      {R"({"jsonrpc":"1.0","id":1,"method":"ping"})", kNotARequest},
      {R"({"jsonrpc":"2.0","id":1,"result":{}})", ""},
      {R"({"jsonrpc":"2.0","id":1,"method":7})", ""},
      {R"({"jsonrpc":"2.0","method":"ping"})", ""},
      {R"({"jsonrpc":"2.0","method":"initialize"})", ""},
      {R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})", kBadId},
      {R"({"jsonrpc":"2.0","id":null,"method":"ping"})", kBadId},
      {R"({"jsonrpc":"2.0","id":true,"method":"ping"})", kBadId},
      {R"({"jsonrpc":"2.0","id":2.0,"method":"ping"})", R"({"jsonrpc":"2.0","id":2,"result":{}})"},
      {R"({"jsonrpc":"2.0","id":-3,"method":"ping","params":[1]})",
       R"({"jsonrpc":"2.0","id":-3,"result":{}})"},
      {R"({"jsonrpc":"2.0","id":"a\u0000\"","method":"logging/setLevel"})",
       R"({"jsonrpc":"2.0","id":"a\u0000\"","result":{}})"},
      {R"({"jsonrpc":"2.0","id":1,"method":"Ping"})",
       R"({"jsonrpc":"2.0","id":1,"error":{"code":-32601,"message":"Method not found: Ping"}})"},
      {R"({"jsonrpc":"2.0","id":1,"method":"notifications/cancelled"})",
       R"({"jsonrpc":"2.0","id":1,"error":{"code":-32601,"message":"Method not found: notifications/cancelled"}})"},
      {R"([{"jsonrpc":"2.0","id":1,"method":"ping"},{"jsonrpc":"2.0","method":"x"},5,[]])",
       std::string(R"([{"jsonrpc":"2.0","id":1,"result":{}},)") + kNotARequest + "," +
           kNotARequest + "]"},
      {R"([{"jsonrpc":"2.0","method":"x"}])", ""},
  };
  tests::ServerSession session;
  session.Initialize("2025-11-25");
  for (const Exchange& exchange : exchanges)
    EXPECT_EQ(session.Ask(exchange.line), exchange.answer) << exchange.line;
  EXPECT_EQ(session.log, std::vector<std::string>{"mensagem invalida: esperava um texto"});
}

TEST(DispatchTest, LeavesDeferredCallsOutOfTheBatchAnswer) {
  tests::ServerSession session;
  session.gateway.Open("e");
  session.Initialize("2025-11-25");
  const char* call =
      R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"world_info"}})";
  EXPECT_EQ(session.Ask(std::string("[") + call + R"(,{"jsonrpc":"2.0","id":2,"method":"ping"}])"),
            R"([{"jsonrpc":"2.0","id":2,"result":{}}])");
  EXPECT_EQ(session.Ask(std::string("[") + call + "]"), "");
  EXPECT_EQ(session.server.PendingCount(), 2u);
  session.gateway.Answer("e", R"({"id":1,"ok":true})");
  EXPECT_EQ(
      session.Poll(),
      R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":"{\"ok\":true}"}],)"
      R"("structuredContent":{"ok":true},"isError":false}})");
}

}  // namespace
}  // namespace zorvik::mcp
