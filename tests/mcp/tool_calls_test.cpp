#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;

using Sent = std::vector<std::pair<std::string, std::string>>;

TEST(ToolCallsTest, AnswersWithoutAnEditorInAFixedOrder) {
  const std::string none =
      ToolFailure("no_editor", "Nenhum editor de mundo da ZORVIK aberto com a ponte de IA.",
                  "Abra o editor (zorvik_studio) no projeto e confira Executar > Permitir IA.");
  const auto gone = [](const std::string& editors) {
    return ToolFailure("editor_disconnected", "O editor x nao esta aberto (ou fechou).",
                       "Chame editor_list e use um dos ids.",
                       R"(,"details":{"editors":[)" + editors + "]}");
  };
  const struct {
    int editors;
    const char* params;
    std::string answer;
  } cases[] = {
      {0, R"({})", FailureLine("1", -32602, "Unknown tool: ")},
      {0, R"({"name":"world_info","arguments":5})",
       ToolFailure("invalid_argument", "Argumento invalido: arguments deve ser um objeto",
                   "Confira o inputSchema de world_info.",
                   R"(,"details":{"field":"","reason":"arguments deve ser um objeto"})")},
      {0, R"({"name":"editor_list","arguments":null})",
       OldestAnswer("1", R"({"ok":true,"editors":[]})", false)},
      {0, R"({"name":"world_info"})", none},
      {0, R"({"name":"world_info","arguments":{"editor_id":""}})", none},
      {0, R"({"name":"world_info","arguments":{"editor_id":"x"}})", gone("")},
      {1, R"({"name":"world_info","arguments":{"editor_id":"x"}})", gone("\"a\"")},
      {1, R"({"name":"editor_list"})",
       OldestAnswer("1",
                    R"({"ok":true,"editors":[{"editor_id":"a","pid":1,"project":"",)"
                    R"("project_name":"","world":"w","world_id":"","bridge":"w",)"
                    R"("engine_version":"","started":""}]})",
                    false)},
      {2, R"({"name":"world_info"})",
       ToolFailure("ambiguous_editor", "Ha 2 editores abertos.",
                   "Passe editor_id (editor_list mostra os ids).",
                   R"(,"details":{"editors":["a","b"]})")},
  };
  for (const auto& c : cases) {
    ServerSession session;
    for (int i = 0; i < c.editors; ++i) session.gateway.Open(i == 0 ? "a" : "b");
    for (core::EditorRecord& record : session.gateway.editors) record.world = record.bridge = "w";
    session.Initialize("2025-03-26");
    EXPECT_EQ(session.Ask(RequestLine("1", "tools/call", c.params)), c.answer);
    EXPECT_EQ(session.gateway.sent, Sent{});
    EXPECT_EQ(session.server.PendingCount(), 0u);
    EXPECT_TRUE(session.log.empty());
  }
}

TEST(ToolCallsTest, ForwardsToTheChosenEditor) {
  ServerSession session;
  session.gateway.Open("a");
  session.gateway.Open("b");
  session.Initialize("2025-03-26");
  const std::string at_a =
      RequestLine("1", "tools/call", R"({"name":"world_info","arguments":{"editor_id":"a"}})");
  session.Ask(RequestLine("1", "tools/call",
                          R"({"name":"objects_get","arguments":{"ids":[2.0,1],"editor_id":"b"}})"));
  session.gateway.send_failure = "o motivo";
  EXPECT_EQ(session.Ask(at_a),
            ToolFailure("editor_disconnected", "Sem conexao com o editor a: o motivo",
                        "O editor pode ter fechado; chame editor_list."));
  session.gateway.send_failure.clear();
  EXPECT_EQ(session.Ask(at_a), "");
  EXPECT_EQ(session.server.PendingCount(), 2u);
  const std::string rest = R"(,"client":"cliente ","deadline_ms":120000})";
  EXPECT_EQ(
      session.gateway.sent,
      (Sent{{"b", R"({"id":1,"token":"token-b","op":"objects.get","args":{"ids":[2,1]})" + rest},
            // The failed call has used the number 2.
            {"a", R"({"id":3,"token":"token-a","op":"world.info","args":{})" + rest}}));
}

}  // namespace
}  // namespace zorvik::mcp
