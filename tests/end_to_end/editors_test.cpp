#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

std::string At(const std::string& editor) {
  return R"({"editor_id":")" + editor + R"("})";
}

std::string Message(const Json& result) {
  return result.At("structuredContent").At("error").At("message").text;
}

std::size_t FileCount(const std::filesystem::path& folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(EditorsTest, EachIsReachedByItsId) {
  const TemporaryHome home;
  EditorProcess first("a");
  EditorProcess second("b");
  second.Person("criar zorvik_rocha 1 1");
  McpClient client;

  const Json ambiguous = client.Call("world_info");
  EXPECT_EQ(Outcome(ambiguous), "ambiguous_editor");
  EXPECT_EQ(Message(ambiguous), "Ha 2 editores abertos.");
  EXPECT_EQ(ambiguous.At("structuredContent").At("error").At("details").At("editors").items.size(),
            2U);
  const Json wrong = client.Call("world_info", At("c"));
  EXPECT_EQ(Outcome(wrong), "editor_disconnected");
  EXPECT_EQ(Message(wrong), "O editor c nao esta aberto (ou fechou).");

  const auto revision = [&](const std::string& id) {
    return client.Call("world_info", At(id)).At("structuredContent").At("revision").IntOr(0);
  };
  EXPECT_EQ(revision("b"), revision("a") + 1);
}

TEST(EditorsTest, DeathEndsExactlyItsOwnCalls) {
  const TemporaryHome home;
  EditorProcess dying("a", {"never=world.info"});
  EditorProcess other("b", {"late=world.info"});
  McpClient client;
  const std::int64_t elsewhere = client.BeginCall("world_info", At("b"));
  const std::vector<std::int64_t> lost = {client.BeginCall("world_info", At("a")),
                                          client.BeginCall("world_info", At("a"))};
  // Once this has its answer, the calls before it have reached the editor too.
  EXPECT_EQ(Outcome(client.Call("world_summary", At("a"))), "ok");
  dying.Kill();
  for (const std::int64_t id : lost) {
    const Json result = client.Answer(id).At("result");
    EXPECT_EQ(Outcome(result), "editor_disconnected");
    EXPECT_EQ(Message(result), "A conexao com o editor a caiu antes da resposta.");
  }
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
  const auto cancel = [&](std::int64_t id) {
    client.Line(R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" +
                std::to_string(id) + R"(,"reason":"x"}})");
  };
  cancel(client.BeginCall("world_info"));
  // This one the editor answers at once, so that its answer and the cancelling cross.
  cancel(client.BeginCall("world_capabilities"));
  EXPECT_EQ(Outcome(client.Call("world_summary")), "ok");
  // As late as the first and asked after it, so that an answer to that would have come before.
  EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
  EXPECT_TRUE(client.Unclaimed().empty());
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_EQ(client.process.ReadToEnd(), "");
  EXPECT_NE(client.Log().find("\ncancelado pelo cliente: world_info\n"), std::string::npos);
}

TEST(RegistryTest, WhatIsBrokenOrDeadCostsNothing) {
  const TemporaryHome home;
  std::optional<McpClient> gone(std::in_place);
  gone->Finish();
  const std::string dead = std::to_string(gone->process.Id());
  EditorProcess editor("vale");
  constexpr int kDead = 1000;
  for (int i = 0; i < kDead; ++i) {
    WriteText(home.Editors() / ("morto" + std::to_string(i) + ".json"),
              R"({"editor_id":"m","pid":)" + dead + R"(,"pipe":"p"})");
  }
  const std::vector<std::string> broken = {
      "", "{", "[]", R"({"pid":"1","pipe":"p"})", R"({"pid":1})", std::string(100000, '[')};
  for (std::size_t i = 0; i < broken.size(); ++i)
    WriteText(home.Editors() / ("ruim" + std::to_string(i) + ".json"), broken[i]);
  std::filesystem::create_directory(home.Editors() / "pasta.json");

  McpClient client;
  EXPECT_EQ(client.Call("editor_list").At("structuredContent").At("editors").items.size(), 1U);
  EXPECT_EQ(FileCount(home.Editors()), 1 + broken.size() + 1);

  // Records come and go while the folder is read again and again.
  std::vector<std::int64_t> ids(100);
  for (std::int64_t& id : ids) id = client.BeginCall("world_summary", At("vale"));
  for (const std::int64_t id : ids) {
    const std::filesystem::path record = home.Editors() / ("x" + std::to_string(id) + ".json");
    WriteText(record, R"({"editor_id":"m","pid":)" + dead + R"(,"pipe":"p"})");
    EXPECT_EQ(Outcome(client.Answer(id).At("result")), "ok");
    std::error_code ignored;
    std::filesystem::remove(record, ignored);
  }
}

}  // namespace
}  // namespace zorvik::tests
