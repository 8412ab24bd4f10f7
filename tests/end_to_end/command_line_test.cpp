#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/environment.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

const std::string kVersion =
    "zorvik-mcp 0.1.0 (MCP 2026-07-28; legado 2025-11-25 2025-06-18 2025-03-26; "
    "ponte zorvik-bridge/1)\n";
const std::string kHelp =
    "zorvik_mcp: servidor MCP stdio da ZORVIK. Configure-o no cliente (Codex, Claude Code) como "
    "comando stdio;\nele fala com o editor de mundo aberto. Veja docs/world_editor/MCP.md.\n";

std::string Output(const std::vector<std::string>& arguments) {
  ChildProcess process({.program = "zorvik_mcp", .arguments = arguments});
  std::string output = process.ReadToEnd();
  EXPECT_EQ(process.Wait(), 0);
  return output;
}

TEST(CommandLineTest, OptionsPrintAndLeaveNothingBehind) {
  const TemporaryHome home;
  EXPECT_EQ(Output({"--version"}), kVersion);
  EXPECT_EQ(Output({"--help"}), kHelp);
  EXPECT_EQ(Output({"--nada", "--Help", "--version", "--help"}), kVersion);
  EXPECT_EQ(Output({"--help", "--version"}), kHelp);
  const std::string catalog = Output({"--catalogo"});
  // The manual holds all of it, and scripts/update-manual compares.
  EXPECT_TRUE(catalog.starts_with("### `editor_list` \xE2\x80\x94 Editores abertos\n\nLista os "))
      << catalog.substr(0, 700);
  EXPECT_TRUE(catalog.ends_with("\n```\n\n"));
  EXPECT_EQ(catalog.find('\r'), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_empty(home.Path()));
}

// The same text with every digit as a 0, for what has the shape of a time.
std::string Shape(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
  return text;
}

TEST(LogTest, TellsTheSessionOnStandardErrorAndInItsFile) {
  const TemporaryHome home;
  EditorProcess editor("vale");
  McpClient client("2025-03-26");
  client.Line("{");
  const std::string refusal = Parse(*client.process.ReadLine()).At("error").At("message").text;
  ASSERT_TRUE(refusal.starts_with("Parse error: "));
  client.Call("world_info");
  client.Call("objects_update", R"({"updates":[{"id":1}]})");
  client.Call("editor_list");
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_EQ(client.process.ReadToEnd(), "");

  const std::vector<std::string> expected = {
      "iniciado: zorvik-mcp 0.1.0, registro em " + home.Path().string(),
      "initialize (legado): cliente pediu 2025-03-26, servindo 2025-03-26 para prova 1",
      "mensagem invalida: " + refusal.substr(refusal.find(':') + 2),
      "world_info -> ok em ",
      "objects_update -> base_revision_required em ",
      "encerrado"};
  std::istringstream file(ReadText(client.LogPath()));
  std::string shown;
  for (std::string text : expected) {
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(Shape(line.substr(0, 20)), "0000-00-00T00:00:00 ");
    line.erase(0, 20);
    shown += "[zorvik_mcp] " + line + "\n";
    if (text.ends_with(" em "))
      text += std::to_string(std::atoi(line.c_str() + text.size())) + " ms";
    EXPECT_EQ(line, text);
  }
  EXPECT_EQ(file.peek(), std::istringstream::traits_type::eof());
  EXPECT_EQ(client.Errors(), shown);
}

TEST(LogTest, ServerRunsOnWhereItCanNotBeWritten) {
  const TemporaryHome home;
  const std::filesystem::path file = home.Path() / "arquivo";
  WriteText(file, "");
  const ScopedEnvironment nowhere("ZORVIK_MCP_HOME", file.string());
  McpClient client;
  EXPECT_EQ(Outcome(client.Call("editor_list")), "ok");
  EXPECT_EQ(Outcome(client.Call("world_info")), "no_editor");
  EXPECT_EQ(client.Finish(), 0);
  EXPECT_TRUE(client.Errors().ends_with("\n[zorvik_mcp] encerrado\n"));
  EXPECT_EQ(ReadText(file), "");
}

}  // namespace
}  // namespace zorvik::tests
