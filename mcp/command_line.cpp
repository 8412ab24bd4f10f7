#include "mcp/command_line.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "authoring/catalog.h"
#include "authoring/protocols.h"
#include "core/json.h"

namespace zorvik::mcp {
namespace {

void PrintVersion() {
  std::printf("%s %s (MCP %s; legado", authoring::kServerName, authoring::kServerVersion,
              authoring::kNewestProtocol);
  for (const std::string& version : authoring::LegacyProtocols())
    std::printf(" %s", version.c_str());
  std::printf("; ponte %s)\n", authoring::kBridgeProtocol);
}

const char* KindWord(authoring::ToolKind kind) {
  switch (kind) {
    case authoring::ToolKind::Read:
      return "leitura";
    case authoring::ToolKind::Transaction:
      return "alteracao (transacao)";
    case authoring::ToolKind::Job:
      break;
  }
  return "job";
}

void PrintCatalog() {
  for (const authoring::ToolSpec& tool : authoring::Tools()) {
    std::printf("### `%s` — %s\n\n%s\n\nTipo: %s. Operacao na ponte: `%s`.\n\n```json\n%s\n```\n\n",
                tool.name.c_str(), tool.title.c_str(), tool.description.c_str(),
                KindWord(tool.kind), tool.operation.c_str(), core::WriteJson(tool.input).c_str());
  }
}

void PrintHelp() {
  std::printf("%s",
              "zorvik_mcp: servidor MCP stdio da ZORVIK. Configure-o no cliente (Codex, Claude "
              "Code) como comando stdio;\n"
              "ele fala com o editor de mundo aberto. Veja docs/world_editor/MCP.md.\n");
}

}  // namespace

bool ServeInformationOption(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--version")
      PrintVersion();
    else if (argument == "--catalogo")
      PrintCatalog();
    else if (argument == "--help")
      PrintHelp();
    else
      continue;
    return true;
  }
  return false;
}

}  // namespace zorvik::mcp
