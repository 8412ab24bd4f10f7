#include <gtest/gtest.h>

#include <array>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;

std::string Meta(const std::string& version, const std::string& rest) {
  return R"({"_meta":{"io.modelcontextprotocol/protocolVersion":)" + version + rest + "}}";
}

const std::string kCapable = R"(,"io.modelcontextprotocol/clientCapabilities":{})";

TEST(ErasTest, WorksOutTheEraOfEachRequest) {
  const std::string plain = ResultLine("1", "{}");
  const std::string wrapped = ResultLine("1", "{" + kServerMeta + "}");
  const std::string no_era = FailureLine(
      "1", -32600,
      "Sem initialize e sem _meta.io.modelcontextprotocol/protocolVersion; versoes suportadas: "
      "2026-07-28, 2025-11-25, 2025-06-18, 2025-03-26");
  const std::string incapable = FailureLine(
      "1", -32602, "Invalid params: _meta sem io.modelcontextprotocol/clientCapabilities");
  const auto unsupported = [](const std::string& version) {
    const std::string data =
        R"(,"data":{"supported":["2026-07-28","2025-11-25","2025-06-18","2025-03-26"],)";
    return FailureLine("1", -32022, "Unsupported protocol version",
                       data + R"("requested":")" + version + "\"}");
  };
  // Params, and the answer without a handshake and after one.
  const std::array<std::string, 3> cases[] = {
      {"{}", no_era, plain},
      {Meta("20260728", kCapable), no_era, plain},
      {"{" + kMeta + "}", wrapped, wrapped},
      {Meta(R"("2026-07-28")", ""), incapable, incapable},
      {Meta(R"("2025-03-26")", kCapable), unsupported("2025-03-26"), unsupported("2025-03-26")},
      {Meta(R"("")", ""), unsupported(""), unsupported("")},
  };
  for (const auto& [params, before, after] : cases) {
    ServerSession session;
    session.Ask(R"({"jsonrpc":"2.0","method":"initialize","params":{}})");  // Not a request.
    EXPECT_EQ(session.Ask(RequestLine("1", "ping", params)), before) << params;
    session.Initialize("2025-03-26");
    EXPECT_EQ(session.Ask(RequestLine("1", "ping", params)), after) << params;
  }
  EXPECT_EQ(ServerSession().Ask(RequestLine("1", "no/such")), no_era);
}

TEST(ErasTest, HandshakeAndDiscoveryTellWhatIsServed) {
  ServerSession session;
  const std::string stateless = session.Ask(RequestLine("1", "server/discover", "{" + kMeta + "}"));
  const core::Json instructions = Parse(stateless).At("result").At("instructions");
  EXPECT_TRUE(instructions.text.starts_with("Servidor de autoria de mundos da ZORVIK: controla o"));
  EXPECT_TRUE(instructions.text.ends_with("error.code com um codigo estavel e uma dica."));
  const std::string capabilities =
      R"("capabilities":{"tools":{"listChanged":false},"logging":{}},)";
  const std::string end = R"("instructions":)" + core::WriteJson(instructions);
  const std::string discovered = R"({"supportedVersions":["2026-07-28"],)" + capabilities + end;
  EXPECT_EQ(stateless, ResultLine("1", discovered + "," + kLastingMeta + "}"));

  const std::string rest =
      "\"," + capabilities + R"("serverInfo":)" + kServerInfo + "," + end + "}";
  for (const auto& [asked, served] :
       {std::pair(R"({"protocolVersion":"2025-06-18"})", "2025-06-18"),
        {R"({"protocolVersion":"2026-07-28"})", "2025-11-25"},
        {R"({"protocolVersion":7})", "2025-11-25"}}) {
    EXPECT_EQ(session.Ask(RequestLine("1", "initialize", asked)),
              ResultLine("1", R"({"protocolVersion":")" + std::string(served) + rest));
  }
  EXPECT_EQ(session.log.back(),
            "initialize (legado): cliente pediu , servindo 2025-11-25 para cliente ");
  EXPECT_EQ(session.Ask(RequestLine("1", "server/discover")), ResultLine("1", discovered + "}"));
}

TEST(ErasTest, TheLastClientInfoNamesTheClientToTheEditor) {
  ServerSession session;
  session.gateway.Open("e");
  for (const auto& [info, label] : {std::pair("null", "cliente MCP"),
                                    {R"({"name":"n","version":"1"})", "n 1"},
                                    {"5", "n 1"},
                                    {"{}", "cliente "}}) {
    std::string params =
        Meta(R"("2026-07-28")", kCapable + R"(,"io.modelcontextprotocol/clientInfo":)" + info);
    session.Ask(RequestLine("1", "tools/call", params.insert(1, R"("name":"world_info",)")));
    EXPECT_EQ(Parse(session.gateway.sent.back().second).At("client").text, label) << info;
  }
}

}  // namespace
}  // namespace zorvik::mcp
