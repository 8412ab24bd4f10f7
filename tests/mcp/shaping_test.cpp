#include <gtest/gtest.h>

#include "authoring/catalog.h"
#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using core::Json;

constexpr const char* kCall =
    R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"inspect_capture"}})";

Json Parse(const std::string& text) {
  Json value;
  std::string error;
  EXPECT_TRUE(core::ParseJson(text, value, error)) << error << ": " << text;
  return value;
}

// The result that a client of that version gets for an editor's reply.
std::string Shaped(const std::string& version, const std::string& reply) {
  tests::ServerSession session;
  session.gateway.Open("e");
  session.Initialize(version);
  session.Ask(kCall);
  session.gateway.Answer("e", reply);
  return core::WriteJson(Parse(session.Poll()).At("result"));
}

TEST(ShapingTest, MakesADocumentOfEachReply) {
  const struct {
    const char* reply;
    const char* document;
    bool failed;
  } cases[] = {
      {R"({"id":1,"ok":true,"revision":5,"result":{"a":1}})", R"({"ok":true,"revision":5,"a":1})",
       false},
      {R"({"id":1,"ok":true,"revision":"5","result":[1],"error":{}})", R"({"ok":true})", false},
      {R"({"id":1,"ok":true,"revision":5,"result":{"a":1,"ok":false,"revision":6}})",
       R"({"ok":false,"revision":6,"a":1})", true},
      {R"({"id":1,"ok":true,"result":{"a":1,"revision":"x"}})",
       R"({"ok":true,"a":1,"revision":"x"})", false},
      {R"({"id":1,"ok":false,"revision":5,"error":{"code":"conflict","z":[]}})",
       R"({"ok":false,"error":{"code":"conflict","z":[]}})", true},
      {R"({"id":1,"ok":1})",
       R"({"ok":false,"error":{"code":"internal","message":"Resposta do editor sem erro nem resultado."}})",
       true},
  };
  for (const auto& c : cases) {
    Json result = Json::Object();
    Json& block = result.Set("content", Json::Array()).Add(Json::Object());
    block.Set("type", Json::Text("text"));
    block.Set("text", Json::Text(c.document));
    result.Set("structuredContent", Parse(c.document));
    result.Set("isError", Json::Bool(c.failed));
    EXPECT_EQ(Shaped("2025-06-18", c.reply), core::WriteJson(result)) << c.reply;
  }
}

TEST(ShapingTest, MovesImagesIntoBlocks) {
  const std::string reply =
      R"({"id":1,"ok":true,"result":{"images":[{"w":1,"data_base64":"QQ==","mime":"image/x"},)"
      R"({"data_base64":[7],"mime":7},3],"z":0}})";
  const std::string content =
      R"("content":[{"type":"text","text":"{\"ok\":true,\"images\":[{\"w\":1,\"mime\":\"image/x\"},)"
      R"({\"mime\":7},{}],\"z\":0}"},{"type":"image","data":"QQ==","mimeType":"image/x"},)"
      R"({"type":"image","data":[7],"mimeType":"image/png"},)"
      R"({"type":"image","data":null,"mimeType":"image/png"}])";
  EXPECT_EQ(
      Shaped("2025-11-25", reply),
      "{" + content +
          R"(,"structuredContent":{"ok":true,"images":[{"w":1,"mime":"image/x"},{"mime":7},{}],)"
          R"("z":0},"isError":false})");
  EXPECT_EQ(Shaped("2025-03-26", reply), "{" + content + R"(,"isError":false})");
  EXPECT_EQ(
      Shaped("2025-03-26", R"({"id":1,"ok":true,"result":{"images":"x"}})"),
      R"({"content":[{"type":"text","text":"{\"ok\":true,\"images\":\"x\"}"}],"isError":false})");
}

TEST(ShapingTest, ListsTheWholeCatalogInBothForms) {
  tests::ServerSession session;
  session.Initialize("2025-03-26");
  const std::string request =
      R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"cursor":"x")";
  const Json oldest = Parse(session.Ask(request + "}}")).At("result");
  const Json newest =
      Parse(session.Ask(request +
                        R"(,"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
                        R"("io.modelcontextprotocol/clientCapabilities":{}}}})"))
          .At("result");
  const auto keys = [](const Json& object) {
    std::string names;
    for (const auto& [key, value] : object.fields) names += key + " ";
    return names;
  };
  EXPECT_EQ(keys(oldest), "tools ");
  EXPECT_EQ(keys(newest), "tools resultType _meta ");
  ASSERT_EQ(oldest.At("tools").items.size(), authoring::Tools().size());
  for (std::size_t i = 0; i < authoring::Tools().size(); ++i) {
    const authoring::ToolSpec& tool = authoring::Tools()[i];
    const Json& old_row = oldest.At("tools")[i];
    const Json& row = newest.At("tools")[i];
    const std::string hints = "readOnlyHint destructiveHint idempotentHint openWorldHint ";
    EXPECT_EQ(keys(old_row), "name description inputSchema annotations ");
    EXPECT_EQ(keys(row), "name title description inputSchema outputSchema annotations ");
    EXPECT_EQ(keys(old_row.At("annotations")), "title " + hints);
    EXPECT_EQ(keys(row.At("annotations")), hints);
    EXPECT_EQ(row.At("name").text, tool.name);
    EXPECT_EQ(old_row.At("annotations").At("title").text, row.At("title").text);
    const bool reads = tool.kind == authoring::ToolKind::Read;
    EXPECT_EQ(row.At("annotations").At("readOnlyHint").boolean, reads) << tool.name;
    EXPECT_EQ(row.At("annotations").At("idempotentHint").boolean, reads) << tool.name;
  }
}

}  // namespace
}  // namespace zorvik::mcp
