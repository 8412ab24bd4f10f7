// What editors that are made after the example have to keep of it.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

class AuthoringTest : public testing::Test {
 protected:
  Json Do(const std::string& tool, const std::string& arguments, const std::string& outcome) {
    const Json result = client.Call(tool, arguments);
    EXPECT_EQ(Outcome(result), outcome) << core::WriteJson(result);
    return result.At("structuredContent");
  }
  // What nothing but a change moves: the revision and the objects.
  std::string World() { return core::WriteJson(Do("objects_query", "{}", "ok")); }

  TemporaryHome home;
  EditorProcess editor{"vale"};
  McpClient client;
};

TEST_F(AuthoringTest, OnlyAForeignChangeToTheSameElementConflicts) {
  EXPECT_EQ(editor.Person("mover 4 30 40"), "feito 2");
  Do("objects_update", R"({"updates":[{"id":5,"x":51}],"base_revision":1})", "ok");
  // The client's own later change doesn't hide the foreign one before it.
  Do("objects_update", R"({"updates":[{"id":4,"yaw":9}],"base_revision":2})", "ok");
  const std::string before = World();
  const Json stale =
      Do("objects_update", R"({"updates":[{"id":5,"x":0},{"id":4,"x":0}],"base_revision":1})",
         "conflict");
  const Json& changed = stale.At("error").At("details").At("changed");
  ASSERT_EQ(changed.items.size(), 1U);
  EXPECT_EQ(changed[0].At("id").IntOr(0), 4);
  EXPECT_EQ(World(), before);
}

TEST_F(AuthoringTest, BatchIsAllOrNothing) {
  const std::string create = R"({"ops":[{"tool":"objects_create","args":{"objects":[)"
                             R"({"ref":"a","asset":"zorvik_casa","x":1,"z":1}]}},{"tool":)";
  const std::string before = World();
  const std::string bad = R"("objects_delete","args":{"ids":[9999]}}],"base_revision":1})";
  const Json refused = Do("batch_apply", create + bad, "not_found");
  EXPECT_EQ(refused.At("error").At("details").At("op").IntOr(-1), 1);
  EXPECT_EQ(World(), before);

  const std::string good = R"("objects_create","args":{"objects":[)"
                           R"({"parent_ref":"a","asset":"zorvik_porta","x":0,"z":3}]}}]})";
  const Json results = Do("batch_apply", create + good, "ok").At("results");
  EXPECT_EQ(results[1].At("objects")[0].At("parent").IntOr(-1),
            results[0].At("created")[0].At("id").IntOr(0));
}

TEST_F(AuthoringTest, RepeatedRequestAppliesOnce) {
  const std::string create =
      R"({"objects":[{"asset":"zorvik_rocha","x":1,"z":1}],"request_id":"pedido-1"})";
  const std::string first = core::WriteJson(Do("objects_create", create, "ok"));
  const std::string after = World();
  EXPECT_EQ(core::WriteJson(Do("objects_create", create, "ok")), first);
  // A second server, as after a client that started anew.
  EXPECT_EQ(core::WriteJson(McpClient().Call("objects_create", create).At("structuredContent")),
            first);
  EXPECT_EQ(World(), after);
}

}  // namespace
}  // namespace zorvik::tests
