#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

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
  EXPECT_EQ(Document("editor_list").At("editors")[0].At("pid").IntOr(0), editor.process.Id());
  EXPECT_EQ(Document("world_info").At("revision").IntOr(0), 1);
  EXPECT_EQ(editor.Person("criar zorvik_rocha 5 6"), "feito 2");
  const Json objects = Document("objects_query").At("objects");
  EXPECT_EQ(objects.items.back().At("asset").text, "zorvik_rocha");
  // The signature of a PNG and the start of its first chunk, in base64.
  const Json image = client.Call("inspect_capture").At("content")[1];
  EXPECT_TRUE(image.At("data").text.starts_with("iVBORw0KGgoAAAANSUhEUg"));
}

INSTANTIATE_TEST_SUITE_P(Versions, SessionTest,
                         testing::Values(kStateless, "2025-11-25", "2025-06-18", "2025-03-26"));

// All changes go to one editor, so that its revisions tell them apart, and the other's stays.
TEST(SessionsTest, TwoServersAndTwoEditorsKeepTheirAnswersApart) {
  const TemporaryHome home;
  EditorProcess still("para");
  EditorProcess changing("muda");
  McpClient legacy;
  McpClient stateless(kStateless);
  const std::string create =
      R"({"editor_id":"muda","objects":[{"asset":"zorvik_rocha","x":1,"z":1}]})";
  constexpr int kCalls = 100;
  std::map<McpClient*, std::vector<std::int64_t>> calls;
  for (int i = 0; i < kCalls; ++i) {
    for (McpClient* const client : {&legacy, &stateless}) {
      calls[client].push_back(client->BeginCall("objects_create", create));
      client->BeginCall("world_info", At("para"));
    }
  }
  std::set<std::int64_t> revisions;
  for (const auto& [client, ids] : calls) {
    const auto revision = [client = client](std::int64_t id) {
      return client->Answer(id).At("result").At("structuredContent").At("revision").IntOr(0);
    };
    for (const std::int64_t id : ids) {
      revisions.insert(revision(id));
      EXPECT_EQ(revision(id + 1), 1);
    }
    EXPECT_TRUE(client->Unclaimed().empty());
  }
  EXPECT_EQ(revisions.size(), 2U * kCalls);
  EXPECT_EQ(*revisions.begin(), 2);
  EXPECT_EQ(*revisions.rbegin(), 1 + 2 * kCalls);
}

}  // namespace
}  // namespace zorvik::tests
