#include <gtest/gtest.h>

#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

// A whole session in every protocol version.
class SessionTest : public testing::TestWithParam<std::string> {
 protected:
  TemporaryHome home;
  EditorProcess editor{"vale"};
  McpClient client{GetParam()};

  // The document of a successful call, as the text block holds it in every version.
  Json Document(const std::string& tool) {
    const Json result = client.Call(tool);
    EXPECT_EQ(Outcome(result), "ok");
    const std::string text = result.At("content")[0].At("text").text;
    EXPECT_EQ(core::WriteJson(result.At("structuredContent")),
              GetParam() == "2025-03-26" ? "null" : text);
    return Parse(text);
  }
};

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
                         testing::Values(kStateless, "2025-11-25", "2025-06-18", "2025-03-26"));

}  // namespace
}  // namespace zorvik::tests
