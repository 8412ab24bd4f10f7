#include <gtest/gtest.h>

#include <filesystem>
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

TEST(EditorsTest, DeathEndsExactlyItsOwnCalls) {
  const TemporaryHome home;
  EditorProcess dying("a", {"never=world.info"});
  EditorProcess other("b", {"late=world.info"});
  McpClient client;
  const std::int64_t elsewhere = client.BeginCall("world_info", At("b"));
  const Ids lost = {client.BeginCall("world_info", At("a")),
                    client.BeginCall("world_info", At("a"))};
  // Once this has its answer, the calls before it have reached the editor too.
  EXPECT_EQ(Outcome(client.Call("world_summary", At("a"))), "ok");
  dying.Kill();
  for (const std::int64_t id : lost)
    EXPECT_EQ(Outcome(client.Answer(id).At("result")), "editor_disconnected");
  EXPECT_EQ(Outcome(client.Answer(elsewhere).At("result")), "ok");

  // What the dead one left behind goes with the next look, and the one that lives is found alone.
  EXPECT_TRUE(std::filesystem::exists(dying.RecordPath()));
  EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");
  EXPECT_FALSE(std::filesystem::exists(dying.RecordPath()));
  EXPECT_TRUE(std::filesystem::exists(other.RecordPath()));
}

TEST(EditorsTest, CancelledCallIsNeverAnswered) {
  const TemporaryHome home;
  EditorProcess editor("vale", {"late=world.info"});
  McpClient client;
  client.Cancel(client.BeginCall("world_info"));
  // This one the editor answers at once, so that its answer and the cancelling cross.
  client.Cancel(client.BeginCall("world_capabilities"));
  EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");
  // As late as the first and asked after it, so that an answer to that would have come before.
  EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
  EXPECT_TRUE(client.Unclaimed().empty());
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_EQ(client.process.ReadToEnd(), "");
  EXPECT_NE(client.Log().find("\ncancelado pelo cliente: world_info\n"), std::string::npos);
}

}  // namespace
}  // namespace zorvik::tests
