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
  TemporaryHome home;
  EditorProcess editor{"vale"};
  McpClient client;

  Json Document(const std::string& tool, const std::string& arguments = "{}") {
    const Json result = client.Call(tool, arguments);
    EXPECT_EQ(Outcome(result), "ok") << core::WriteJson(result);
    return result.At("structuredContent");
  }
  Json Refusal(const std::string& tool, const std::string& arguments, const std::string& code) {
    const Json result = client.Call(tool, arguments);
    EXPECT_EQ(Outcome(result), code) << core::WriteJson(result);
    return result.At("structuredContent").At("error").At("details");
  }
  Json Object(std::int64_t id) {
    return Document("objects_get", R"({"ids":[)" + std::to_string(id) + "]}").At("objects")[0];
  }
  // What nothing but a change moves: the revision and the objects.
  std::string World() { return core::WriteJson(Document("objects_query")); }
};

std::string Update(std::int64_t id, const std::string& change, std::int64_t base_revision) {
  return R"({"updates":[{"id":)" + std::to_string(id) + "," + change + R"(}],"base_revision":)" +
         std::to_string(base_revision) + "}";
}

TEST_F(AuthoringTest, ClientAndPersonChangeTheSameWorld) {
  const Json made = Document("objects_create", R"({"objects":[
      {"ref":"casa","asset":"zorvik_casa","x":10,"z":10},
      {"parent_ref":"casa","asset":"zorvik_telhado","x":0,"y":3,"z":0}]})");
  const std::int64_t house = made.At("created")[0].At("id").IntOr(0);
  const std::int64_t roof = made.At("created")[1].At("id").IntOr(0);
  EXPECT_EQ(made.At("created")[0].At("ref").text, "casa");
  EXPECT_EQ(Object(roof).At("parent").IntOr(0), house);

  const std::int64_t read = made.At("revision").IntOr(0);
  const Json turned = Document("objects_update", Update(roof, R"("yaw":45)", read));
  EXPECT_EQ(turned.At("revision").IntOr(0), read + 1);
  EXPECT_EQ(Object(roof).At("yaw").number, 45);

  EXPECT_EQ(editor.Person("mover " + std::to_string(house) + " 30 40"),
            "feito " + std::to_string(read + 2));
  const std::string before = World();
  const Json conflict = Refusal("objects_update", Update(house, R"("x":1)", read), "conflict");
  EXPECT_EQ(conflict.At("changed")[0].At("id").IntOr(0), house);
  // Another element is not concerned, so the old revision still does for it.
  EXPECT_EQ(World(), before);
  Document("objects_update", Update(roof, R"("pitch":5)", read));

  const auto revert = [](const Json& document) {
    return R"({"transaction":)" + std::to_string(document.At("transaction").At("id").IntOr(0)) +
           "}";
  };
  Refusal("history_revert", revert(made), "conflict");
  const Json again = Document("objects_update", Update(house, R"("yaw":90)", read + 3));
  Document("history_revert", revert(again));
  EXPECT_EQ(Object(house).At("yaw").number, 0);
  EXPECT_EQ(Object(house).At("x").number, 30);
}

TEST_F(AuthoringTest, BatchIsAllOrNothing) {
  const std::string revision = std::to_string(Document("world_info").At("revision").IntOr(0));
  const std::string create = R"({"tool":"objects_create","args":{"objects":[
      {"ref":"a","asset":"zorvik_casa","x":1,"z":1}]}})";
  const std::string child = R"({"tool":"objects_create","args":{"objects":[
      {"parent_ref":"a","asset":"zorvik_porta","x":0,"z":3}]}})";
  const std::string missing = R"({"tool":"objects_delete","args":{"ids":[9999]}})";
  const std::string before = World();
  const Json details =
      Refusal("batch_apply",
              R"({"base_revision":)" + revision + R"(,"ops":[)" + create + "," + missing + "]}",
              "not_found");
  EXPECT_EQ(details.At("op").IntOr(-1), 1);
  EXPECT_EQ(World(), before);

  const Json done = Document("batch_apply", R"({"ops":[)" + create + "," + child + "]}");
  ASSERT_EQ(done.At("results").items.size(), 2U);
  const Json& results = done.At("results");
  EXPECT_EQ(results[1].At("objects")[0].At("parent").IntOr(-1),
            results[0].At("created")[0].At("id").IntOr(0));
}

TEST_F(AuthoringTest, RepeatedRequestAppliesOnce) {
  const std::string create =
      R"({"objects":[{"asset":"zorvik_rocha","x":1,"z":1}],"request_id":"pedido-1"})";
  const std::string first = core::WriteJson(Document("objects_create", create));
  const std::string after = World();
  EXPECT_EQ(core::WriteJson(Document("objects_create", create)), first);
  // A second server, as after a client that started anew.
  EXPECT_EQ(core::WriteJson(McpClient().Call("objects_create", create).At("structuredContent")),
            first);
  EXPECT_EQ(World(), after);
}

}  // namespace
}  // namespace zorvik::tests
