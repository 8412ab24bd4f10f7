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

// All changes go to one editor, so that its revisions tell them apart, and the other's stays.
TEST(SessionTest, TwoServersAndTwoEditorsKeepTheirAnswersApart) {
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
  EXPECT_EQ(changing.Person("criar zorvik_rocha 5 6"), "feito 202");
  // The signature of a PNG and the start of its first chunk, in base64.
  const core::Json image = legacy.Call("inspect_capture", At("muda")).At("content")[1];
  EXPECT_TRUE(image.At("data").text.starts_with("iVBORw0KGgoAAAANSUhEUg"));
}

}  // namespace
}  // namespace zorvik::tests
