#include "mcp/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zorvik::mcp {
namespace {

// What the arguments print, or "(server)" when they start the server.
std::string Printed(std::vector<std::string> arguments) {
  std::string program = "zorvik_mcp";
  std::vector<char*> argv = {program.data()};
  for (std::string& argument : arguments) argv.push_back(argument.data());
  testing::internal::CaptureStdout();
  const bool served = ServeInformationOption(static_cast<int>(argv.size()), argv.data());
  const std::string output = testing::internal::GetCapturedStdout();
  return served ? output : "(server)" + output;
}

TEST(CommandLineTest, TheFirstKnownOptionDecides) {
  const std::string version =
      "zorvik-mcp 0.1.0 (MCP 2026-07-28; legado 2025-11-25 2025-06-18 2025-03-26; ponte "
      "zorvik-bridge/1)\n";
  const std::string help =
      "zorvik_mcp: servidor MCP stdio da ZORVIK. Configure-o no cliente (Codex, Claude Code) como "
      "comando stdio;\nele fala com o editor de mundo aberto. Veja docs/world_editor/MCP.md.\n";
  EXPECT_EQ(Printed({"--version", "--help"}), version);
  EXPECT_EQ(Printed({"--nada", "--help", "--version"}), help);
  EXPECT_EQ(Printed({}), "(server)");
  EXPECT_EQ(Printed({"--Help", "--version=1", "-h", ""}), "(server)");
}

TEST(CommandLineTest, TheCatalogIsMarkdown) {
  const std::string catalog = Printed({"--catalogo"});
  const std::string head = catalog.substr(0, catalog.find("\n\n"));
  EXPECT_EQ(head.substr(0, 22), "### `editor_list` — ");
  EXPECT_NE(catalog.find("\n\nTipo: leitura. Operacao na ponte: `world.info`.\n\n```json\n{\""),
            std::string::npos);
  EXPECT_NE(catalog.find("\n\nTipo: alteracao (transacao). Operacao na ponte: `objects.create`."),
            std::string::npos);
  EXPECT_NE(catalog.find("\n\nTipo: job. Operacao na ponte: `"), std::string::npos);
  EXPECT_EQ(catalog.substr(catalog.size() - 7), "}\n```\n\n");
}

}  // namespace
}  // namespace zorvik::mcp
