#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;
using Streams = ProgramStart::Input;

// One whole session in every protocol version, over both kinds of stream that clients use.
class SessionTest : public testing::TestWithParam<std::tuple<std::string, Streams>> {
 protected:
  const std::string version = std::get<0>(GetParam());
  const bool oldest = version == "2025-03-26";
  TemporaryHome home;
  EditorProcess editor{"vale"};
  McpClient client{version, {.input = std::get<1>(GetParam())}};

  // The whole line that answers a request with `result`, the text of an object.
  std::string AnswerTo(std::int64_t id, std::string result) const {
    if (version == kStateless) {
      result.pop_back();
      result += (result.size() > 1 ? "," : "");
      result += R"("resultType":"complete","_meta":{"io.modelcontextprotocol/serverInfo":)"
                R"({"name":"zorvik-mcp","title":"ZORVIK - autoria de mundos","version":"0.1.0"}}})";
    }
    return R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + R"(,"result":)" + result + "}";
  }
  // The document of a successful call, as the text block holds it in every version.
  Json Document(const std::string& tool) {
    const Json result = client.Call(tool);
    EXPECT_EQ(Outcome(result), "ok");
    const std::string text = result.At("content")[0].At("text").text;
    EXPECT_EQ(core::WriteJson(result.At("structuredContent")), oldest ? "null" : text);
    return Parse(text);
  }
};

TEST_P(SessionTest, AnswersInTheFormOfItsVersion) {
  const Json handshake = client.Ask("initialize", R"({"protocolVersion":")" + version + R"("})");
  EXPECT_EQ(handshake.At("protocolVersion").text, version == kStateless ? "2025-11-25" : version);

  std::int64_t id = client.Begin("ping");
  EXPECT_EQ(client.AnswerLine(id), AnswerTo(id, "{}"));
  id = client.BeginCall("nada");
  EXPECT_EQ(client.AnswerLine(id),
            R"({"jsonrpc":"2.0","id":)" + std::to_string(id) +
                R"(,"error":{"code":-32602,"message":"Unknown tool: nada"}})");

  const std::string refusal =
      R"({"ok":false,"error":{"code":"invalid_argument","message":)"
      R"("Argumento invalido em x: nao e um campo desta ferramenta","hint":)"
      R"("Confira o inputSchema de world_info.","details":{"field":"x","reason":)"
      R"("nao e um campo desta ferramenta"}}})";
  id = client.BeginCall("world_info", R"({"x":1})");
  EXPECT_EQ(
      client.AnswerLine(id),
      AnswerTo(id, R"({"content":[{"type":"text","text":)" + core::WriteJson(Json::Text(refusal)) +
                       "}]," + (oldest ? "" : R"("structuredContent":)" + refusal + ",") +
                       R"("isError":true})"));
}

TEST_P(SessionTest, ReadsAndSeesTheEditorsWorld) {
  const Json editors = Document("editor_list").At("editors");
  ASSERT_EQ(editors.items.size(), 1U);
  EXPECT_EQ(editors[0].At("editor_id").text, "vale");
  EXPECT_EQ(editors[0].At("pid").IntOr(0), editor.process.Id());
  EXPECT_EQ(editors[0].At("bridge").text, "zorvik-bridge/1");
  EXPECT_FALSE(editors[0].Has("token") || editors[0].Has("pipe"));

  const std::int64_t revision = Document("world_info").At("revision").IntOr(-1);
  EXPECT_EQ(editor.Person("criar zorvik_rocha 5 6"), "feito " + std::to_string(revision + 1));
  EXPECT_EQ(Document("world_info").At("revision").IntOr(-1), revision + 1);
  const Json objects = Document("objects_query");
  EXPECT_EQ(objects.At("objects").items.back().At("asset").text, "zorvik_rocha");

  const Json capture = client.Call("inspect_capture");
  ASSERT_EQ(capture.At("content").items.size(), 2U) << core::WriteJson(capture);
  const Json& image = capture.At("content")[1];
  EXPECT_EQ(image.At("mimeType").text, "image/png");
  // The signature of a PNG and the start of its first chunk, in base64.
  EXPECT_TRUE(image.At("data").text.starts_with("iVBORw0KGgoAAAANSUhEUg"));
  EXPECT_EQ(capture.At("content")[0].At("text").text.find("data_base64"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Versions, SessionTest,
                         testing::Combine(testing::Values(kStateless, "2025-11-25", "2025-06-18",
                                                          "2025-03-26"),
                                          testing::Values(Streams::Pipe, Streams::SocketPair)));

}  // namespace
}  // namespace zorvik::tests
