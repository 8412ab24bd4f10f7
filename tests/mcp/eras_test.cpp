#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

std::string Request(const std::string& method, const std::string& params) {
  return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}";
}

std::string Meta(const std::string& version, const std::string& rest) {
  return R"({"_meta":{"io.modelcontextprotocol/protocolVersion":)" + version + rest + "}}";
}

const std::string kCapable = R"(,"io.modelcontextprotocol/clientCapabilities":{})";
const std::string kServerMeta =
    R"("resultType":"complete","_meta":{"io.modelcontextprotocol/serverInfo":{"name":"zorvik-mcp",)"
    R"("title":"ZORVIK - autoria de mundos","version":"0.1.0"}})";
const std::string kNoEra =
    R"({"jsonrpc":"2.0","id":1,"error":{"code":-32600,"message":"Sem initialize e sem )"
    R"(_meta.io.modelcontextprotocol/protocolVersion; versoes suportadas: 2026-07-28, 2025-11-25, )"
    R"(2025-06-18, 2025-03-26"}})";

std::string Unsupported(const std::string& version) {
  return R"({"jsonrpc":"2.0","id":1,"error":{"code":-32022,"message":"Unsupported protocol version",)"
         R"("data":{"supported":["2026-07-28","2025-11-25","2025-06-18","2025-03-26"],"requested":")" +
         version + R"("}}})";
}

TEST(ErasTest, WorksOutTheEraOfEachRequest) {
  const std::string wrapped = R"({"jsonrpc":"2.0","id":1,"result":{)" + kServerMeta + "}}";
  const std::string plain = R"({"jsonrpc":"2.0","id":1,"result":{}})";
  const std::string incapable =
      R"({"jsonrpc":"2.0","id":1,"error":{"code":-32602,"message":"Invalid params: _meta sem )"
      R"(io.modelcontextprotocol/clientCapabilities"}})";
  const struct {
    std::string params;
    std::string before;  // Without a handshake,
    std::string after;   // and after one.
  } cases[] = {
      {"{}", kNoEra, plain},
      {R"({"_meta":5})", kNoEra, plain},
      {Meta("20260728", kCapable), kNoEra, plain},
      {Meta(R"("2026-07-28")", kCapable), wrapped, wrapped},
      {Meta(R"("2026-07-28")", ""), incapable, incapable},
      {Meta(R"("2026-07-28")", R"(,"io.modelcontextprotocol/clientCapabilities":1)"), incapable,
       incapable},
      {Meta(R"("2025-03-26")", kCapable), Unsupported("2025-03-26"), Unsupported("2025-03-26")},
      {Meta(R"("")", kCapable), Unsupported(""), Unsupported("")},
  };
  for (const auto& c : cases) {
    tests::ServerSession fresh;
    EXPECT_EQ(fresh.Ask(Request("ping", c.params)), c.before) << c.params;
    fresh.Initialize("2025-03-26");
    EXPECT_EQ(fresh.Ask(Request("ping", c.params)), c.after) << c.params;
  }
  tests::ServerSession session;
  EXPECT_EQ(session.Ask(Request("no/such", "{}")), kNoEra);
  session.Ask(R"({"jsonrpc":"2.0","method":"initialize","params":{}})");
  EXPECT_EQ(session.Ask(Request("ping", "{}")), kNoEra);
}

TEST(ErasTest, InitializeSettlesTheVersionAndTheLabel) {
  const struct {
    std::string params;
    std::string version;
    std::string log;
  } cases[] = {
      {R"({"protocolVersion":"2025-06-18","clientInfo":{"name":"c","version":"9"}})", "2025-06-18",
       "cliente pediu 2025-06-18, servindo 2025-06-18 para c 9"},
      {R"({"protocolVersion":"2026-07-28"})", "2025-11-25",
       "cliente pediu 2026-07-28, servindo 2025-11-25 para cliente "},
      {R"({"protocolVersion":7,"clientInfo":{"name":7}})", "2025-11-25",
       "cliente pediu , servindo 2025-11-25 para cliente "},
  };
  tests::ServerSession session;
  for (const auto& c : cases) {
    const std::string answer = session.Ask(Request("initialize", c.params));
    EXPECT_EQ(answer.find(R"({"jsonrpc":"2.0","id":1,"result":{"protocolVersion":")" + c.version +
                          R"(","capabilities":{"tools":{"listChanged":false},"logging":{}},)"
                          R"("serverInfo":{"name":"zorvik-mcp",)"),
              0u)
        << answer;
    EXPECT_EQ(answer.find("resultType"), std::string::npos);
    EXPECT_EQ(session.log.back(), "initialize (legado): " + c.log);
  }
}

TEST(ErasTest, DiscoverNamesTheNewestVersionOnly) {
  tests::ServerSession session;
  session.Initialize("2025-03-26");
  const std::string legacy = session.Ask(Request("server/discover", "{}"));
  const std::string head =
      R"({"jsonrpc":"2.0","id":1,"result":{"supportedVersions":["2026-07-28"],"capabilities":)"
      R"({"tools":{"listChanged":false},"logging":{}},"instructions":"Servidor de autoria)";
  const std::string tail = R"(com um codigo estavel e uma dica.")";
  EXPECT_EQ(legacy.find(head), 0u) << legacy;
  EXPECT_TRUE(legacy.ends_with(tail + "}}")) << legacy;
  const std::string stateless =
      session.Ask(Request("server/discover", Meta(R"("2026-07-28")", kCapable)));
  EXPECT_TRUE(stateless.ends_with(tail + "," + kServerMeta + "}}")) << stateless;
}

TEST(ErasTest, TheLastClientInfoNamesTheClientToTheEditor) {
  tests::ServerSession session;
  session.gateway.Open("e");
  const auto label = [&](const std::string& rest) {
    session.Ask(Request(
        "tools/call", R"({"name":"world_info","_meta":{"io.modelcontextprotocol/protocolVersion":)"
                      R"("2026-07-28")" +
                          kCapable + rest + "}}"));
    core::Json sent;
    std::string error;
    core::ParseJson(session.gateway.sent.back().second, sent, error);
    return sent.At("client").TextOr("none");
  };
  EXPECT_EQ(label(""), "cliente MCP");
  EXPECT_EQ(label(R"(,"io.modelcontextprotocol/clientInfo":{"name":"n","version":"1"})"), "n 1");
  EXPECT_EQ(label(R"(,"io.modelcontextprotocol/clientInfo":5)"), "n 1");
  EXPECT_EQ(label(R"(,"io.modelcontextprotocol/clientInfo":{})"), "cliente ");
}

}  // namespace
}  // namespace zorvik::mcp
