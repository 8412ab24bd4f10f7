#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

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
  McpClient client;
  client.Line("{");
  EXPECT_EQ(Outcome(client.Call("world_info")), "no_editor");
  EXPECT_EQ(client.Finish(), 0);
  std::string shown;
  std::istringstream log(client.Log());
  for (std::string line; std::getline(log, line);) shown += "[zorvik_mcp] " + line + "\n";
  EXPECT_EQ(shown, client.Errors());
  EXPECT_NE(shown.find("\n[zorvik_mcp] mensagem invalida: esperava um texto\n"), shown.npos);
}

}  // namespace
}  // namespace zorvik::tests
