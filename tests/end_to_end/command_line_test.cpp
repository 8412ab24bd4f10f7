#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

std::string Output(const std::vector<std::string>& arguments) {
  ChildProcess process({.program = "zorvik_mcp", .arguments = arguments});
  std::string output = process.ReadToEnd();
  EXPECT_EQ(process.Wait(), 0);
  return output;
}

TEST(CommandLineTest, OptionsPrintAndLeaveNothingBehind) {
  const TemporaryHome home;
  EXPECT_EQ(Output({"--nada", "--Help", "--version", "--help"}),
            "zorvik-mcp 0.1.0 (MCP 2026-07-28; legado 2025-11-25 2025-06-18 2025-03-26; "
            "ponte zorvik-bridge/1)\n");
  EXPECT_EQ(Output({"--help", "--version"}),
            "zorvik_mcp: servidor MCP stdio da ZORVIK. Configure-o no cliente (Codex, Claude Code) "
            "como comando stdio;\nele fala com o editor de mundo aberto. Veja "
            "docs/world_editor/MCP.md.\n");
  const std::string catalog = Output({"--catalogo"});
  // The manual holds all of it, and scripts/update-manual compares.
  EXPECT_TRUE(catalog.starts_with("### `editor_list` \xE2\x80\x94 Editores abertos\n\nLista os "));
  EXPECT_TRUE(catalog.ends_with("\n```\n\n"));
  EXPECT_EQ(catalog.find('\r'), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_empty(home.Path()));
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

  std::string shown;
  std::string lines;
  std::istringstream log(client.Log());
  for (std::string line; std::getline(log, line);) {
    shown += "[zorvik_mcp] " + line + "\n";
    // How long a call took is left out.
    lines += (line.ends_with(" ms") ? line.substr(0, line.find(" em ")) : line) + "\n";
  }
  EXPECT_EQ(shown, client.Errors());
  EXPECT_EQ(lines,
            "iniciado: zorvik-mcp 0.1.0, registro em " + home.Path().string() +
                "\ninitialize (legado): cliente pediu 2025-03-26, servindo 2025-03-26 para prova 1"
                "\nmensagem invalida: " +
                refusal.substr(refusal.find(':') + 2) +
                "\nworld_info -> ok"
                "\nobjects_update -> base_revision_required"
                "\nencerrado\n");
}

}  // namespace
}  // namespace zorvik::tests
