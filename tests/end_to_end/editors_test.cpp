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
using Ids = std::vector<std::int64_t>;

// All changes go to one editor, so that its revisions tell them apart, and the other's stays.
TEST(EditorsTest, TwoServersAndTwoEditorsKeepTheirAnswersApart) {
  const TemporaryHome home;
  EditorProcess still("para");
  EditorProcess changing("muda");
  McpClient legacy;
  McpClient stateless(kStateless);
  const std::string create =
      R"({"editor_id":"muda","objects":[{"asset":"zorvik_rocha","x":1,"z":1}]})";
  constexpr std::size_t kCalls = 100;
  std::set<std::int64_t> revisions;
  std::map<McpClient*, Ids> calls;
  for (std::size_t i = 0; i < kCalls; ++i) {
    for (McpClient* const client : {&legacy, &stateless}) {
      calls[client].push_back(client->BeginCall("world_info", At("para")));
      calls[client].push_back(client->BeginCall("objects_create", create));
    }
  }
  for (const auto& [client, ids] : calls) {
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const Json document = client->Answer(ids[i]).At("result").At("structuredContent");
      const std::int64_t revision = document.At("revision").IntOr(0);
      EXPECT_TRUE(i % 2 == 0 ? revision == 1 : revisions.insert(revision).second) << revision;
    }
    EXPECT_TRUE(client->Unclaimed().empty());
  }
  EXPECT_EQ(*revisions.begin(), 2);
  EXPECT_EQ(*revisions.rbegin(), 1 + 2 * static_cast<std::int64_t>(kCalls));
}

}  // namespace
}  // namespace zorvik::tests
