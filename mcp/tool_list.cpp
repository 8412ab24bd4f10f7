#include "mcp/tool_list.h"

#include <utility>

#include "authoring/catalog.h"

namespace zorvik::mcp {

using core::Json;

namespace {

Json ToolRow(const authoring::ToolSpec& tool) {
  const bool reads = tool.kind == authoring::ToolKind::Read;
  return Json::Object({{"name", tool.name},
                       {"title", tool.title},
                       {"description", tool.description},
                       {"inputSchema", tool.input},
                       {"outputSchema", tool.output},
                       {"annotations", Json::Object({{"readOnlyHint", reads},
                                                     {"destructiveHint", false},
                                                     {"idempotentHint", reads},
                                                     {"openWorldHint", false}})}});
}

// The row of the oldest version, which knows a title only among the annotations.
Json OldestToolRow(const authoring::ToolSpec& tool) {
  const bool reads = tool.kind == authoring::ToolKind::Read;
  return Json::Object({{"name", tool.name},
                       {"description", tool.description},
                       {"inputSchema", tool.input},
                       {"annotations", Json::Object({{"title", tool.title},
                                                     {"readOnlyHint", reads},
                                                     {"destructiveHint", false},
                                                     {"idempotentHint", reads},
                                                     {"openWorldHint", false}})}});
}

}  // namespace

Json ToolList(const Era& era) {
  Json rows = Json::Array();
  rows.items.reserve(authoring::Tools().size());
  for (const authoring::ToolSpec& tool : authoring::Tools())
    rows.Add(era.Oldest() ? OldestToolRow(tool) : ToolRow(tool));
  return Json::Object({{"tools", std::move(rows)}});
}

}  // namespace zorvik::mcp
