#include "mcp/command_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace zorvik::mcp {
namespace {

TEST(CommandLineTest, TheCatalogNamesEachKindOfTool) {
  std::string program = "zorvik_mcp";
  std::string option = "--catalogo";
  std::array<char*, 2> arguments = {program.data(), option.data()};
  testing::internal::CaptureStdout();
  EXPECT_TRUE(ServeInformationOption(2, arguments.data()));
  const std::string catalog = testing::internal::GetCapturedStdout();
  for (const char* line : {"Tipo: leitura. Operacao na ponte: `world.info`.",
                           "Tipo: alteracao (transacao). Operacao na ponte: `objects.create`.",
                           "Tipo: job. Operacao na ponte: `scatter.run`."}) {
    EXPECT_NE(catalog.find(std::string("\n\n") + line + "\n\n```json\n{\""), std::string::npos)
        << line;
  }
}

}  // namespace
}  // namespace zorvik::mcp
