#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

std::string Call(const std::string& params) {
  return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":)" + params + "}";
}

// The tool document in the oldest form of answer, whose text block holds it.
std::string Document(const std::string& answer) {
  core::Json value;
  std::string error;
  core::ParseJson(answer, value, error);
  return value.At("result").At("content")[0].At("text").TextOr(answer);
}

TEST(ToolCallsTest, RefusesInAFixedOrder) {
  const auto invalid = [](const std::string& message, const std::string& tool,
                          const std::string& field, const std::string& reason) {
    return R"({"ok":false,"error":{"code":"invalid_argument","message":")" + message +
           R"(","hint":"Confira o inputSchema de )" + tool + R"(.","details":{"field":")" + field +
           R"(","reason":")" + reason + R"("}}})";
  };
  const std::string unknown =
      R"({"jsonrpc":"2.0","id":1,"error":{"code":-32602,"message":"Unknown tool: )";
  const std::string none =
      R"({"ok":false,"error":{"code":"no_editor","message":"Nenhum editor de mundo da ZORVIK aberto )"
      R"(com a ponte de IA.","hint":"Abra o editor (zorvik_studio) no projeto e confira Executar > )"
      R"(Permitir IA."}})";
  const auto gone = [](const std::string& editors) {
    return R"({"ok":false,"error":{"code":"editor_disconnected","message":"O editor x nao esta )"
           R"(aberto (ou fechou).","hint":"Chame editor_list e use um dos ids.","details":)"
           R"({"editors":[)" +
           editors + "]}}}";
  };
  const std::string ambiguous =
      R"({"ok":false,"error":{"code":"ambiguous_editor","message":"Ha 2 editores abertos.","hint":)"
      R"("Passe editor_id (editor_list mostra os ids).","details":{"editors":["a","b"]}}})";
  const struct {
    int editors;
    const char* params;
    std::string document;
  } cases[] = {
      {0, R"({})", unknown + "\"}}"},
      {0, R"({"name":"World_Info"})", unknown + "World_Info\"}}"},
      {0, R"({"name":"editor_list","arguments":5})",
       invalid("Argumento invalido: arguments deve ser um objeto", "editor_list", "",
               "arguments deve ser um objeto")},
      {0, R"({"name":"editor_list","arguments":{"editor_id":"a"}})",
       invalid("Argumento invalido em editor_id: nao e um campo desta ferramenta", "editor_list",
               "editor_id", "nao e um campo desta ferramenta")},
      {0, R"({"name":"objects_get","arguments":{"ids":[0]}})",
       invalid("Argumento invalido em ids[0]: deveria ser no minimo 1", "objects_get", "ids[0]",
               "deveria ser no minimo 1")},
      {0, R"({"name":"editor_list","arguments":null})", R"({"ok":true,"editors":[]})"},
      {0, R"({"name":"world_info"})", none},
      {0, R"({"name":"world_info","arguments":{"editor_id":""}})", none},
      {0, R"({"name":"world_info","arguments":{"editor_id":"x"}})", gone("")},
      {1, R"({"name":"world_info","arguments":{"editor_id":"x"}})", gone("\"a\"")},
      {2, R"({"name":"world_info"})", ambiguous},
  };
  for (const auto& c : cases) {
    tests::ServerSession session;
    if (c.editors > 0) session.gateway.Open("a");
    if (c.editors > 1) session.gateway.Open("b");
    session.Initialize("2025-03-26");
    EXPECT_EQ(Document(session.Ask(Call(c.params))), c.document) << c.params;
    EXPECT_TRUE(session.gateway.sent.empty());
    EXPECT_EQ(session.server.PendingCount(), 0u);
    EXPECT_TRUE(session.log.empty());
  }
}

TEST(ToolCallsTest, ForwardsToTheChosenEditor) {
  tests::ServerSession session;
  session.gateway.Open("a");
  session.gateway.Open("b");
  session.Initialize("2025-03-26");
  EXPECT_EQ(
      session.Ask(Call(R"({"name":"objects_get","arguments":{"ids":[2.0,1],"editor_id":"b"}})")),
      "");
  session.gateway.send_failure = "o motivo";
  EXPECT_EQ(
      Document(session.Ask(Call(R"({"name":"world_info","arguments":{"editor_id":"a"}})"))),
      R"({"ok":false,"error":{"code":"editor_disconnected","message":"Sem conexao com o editor a: )"
      R"(o motivo","hint":"O editor pode ter fechado; chame editor_list."}})");
  EXPECT_EQ(session.server.PendingCount(), 1u);
  session.gateway.send_failure.clear();
  session.Ask(Call(R"({"name":"world_info","arguments":{"editor_id":"a"}})"));
  using Sent = std::pair<std::string, std::string>;
  const std::vector<Sent> expected = {
      {"b",
       R"({"id":1,"token":"token-b","op":"objects.get","args":{"ids":[2,1]},"client":"cliente ",)"
       R"("deadline_ms":120000})"},
      // The failed call has used the number 2.
      {"a", R"({"id":3,"token":"token-a","op":"world.info","args":{},"client":"cliente ",)"
            R"("deadline_ms":120000})"},
  };
  EXPECT_EQ(session.gateway.sent, expected);
}

TEST(ToolCallsTest, ListsEditorsWithoutTheirSecrets) {
  tests::ServerSession session;
  session.gateway.Open("a");
  session.gateway.editors[0].world = "w";
  session.gateway.editors[0].started = "s";
  session.Initialize("2025-03-26");
  EXPECT_EQ(
      Document(session.Ask(Call(R"({"name":"editor_list"})"))),
      R"({"ok":true,"editors":[{"editor_id":"a","pid":1,"project":"","project_name":"","world":"w",)"
      R"("world_id":"","bridge":"","engine_version":"","started":"s"}]})");
}

}  // namespace
}  // namespace zorvik::mcp
