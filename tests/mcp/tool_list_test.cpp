#include <gtest/gtest.h>

#include "authoring/catalog.h"
#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;
using core::Json;
using core::WriteJson;

std::string Row(const authoring::ToolSpec& tool, bool oldest) {
  const std::string title = R"("title":)" + WriteJson(Json::Text(tool.title)) + ",";
  const std::string output = R"(,"outputSchema":)" + WriteJson(tool.output);
  const std::string reads = tool.kind == authoring::ToolKind::Read ? "true" : "false";
  return R"({"name":")" + tool.name + "\"," + (oldest ? "" : title) + R"("description":)" +
         WriteJson(Json::Text(tool.description)) + R"(,"inputSchema":)" + WriteJson(tool.input) +
         (oldest ? "" : output) + R"(,"annotations":{)" + (oldest ? title : "") +
         R"("readOnlyHint":)" + reads + R"(,"destructiveHint":false,"idempotentHint":)" + reads +
         R"(,"openWorldHint":false}})";
}

TEST(ToolListTest, HoldsTheWholeCatalogInBothForms) {
  std::string oldest;
  std::string newest;
  for (const authoring::ToolSpec& tool : authoring::Tools()) {
    oldest.append(oldest.empty() ? "" : ",").append(Row(tool, true));
    newest.append(newest.empty() ? "" : ",").append(Row(tool, false));
  }
  ServerSession session;
  session.Initialize("2025-03-26");
  EXPECT_EQ(session.Ask(RequestLine("1", "tools/list")),
            ResultLine("1", R"({"tools":[)" + oldest + "]}"));
  EXPECT_EQ(session.Ask(RequestLine("1", "tools/list", "{" + kMeta + "}")),
            ResultLine("1", R"({"tools":[)" + newest + "]," + kLastingMeta + "}"));
}

}  // namespace
}  // namespace zorvik::mcp
