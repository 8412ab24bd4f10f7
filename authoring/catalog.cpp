#include "authoring/catalog.h"

#include <algorithm>
#include <utility>

#include "authoring/rows/rows.h"

namespace zorvik::authoring {
namespace {

std::vector<ToolSpec> Build() {
  std::vector<ToolSpec> tools;
  AppendReadingTools(tools);
  AppendAssetTools(tools);
  AppendObjectTools(tools);
  AppendTerrainTools(tools);
  AppendWaterTools(tools);
  AppendRoadTools(tools);
  AppendBuildingTools(tools);
  AppendInspectionTools(tools);
  AppendPartitionedWorldTools(tools);
  AppendHistoryTools(tools);
  return tools;
}

const ToolSpec* Find(std::string ToolSpec::*key, std::string_view text) {
  const std::vector<ToolSpec>& tools = Tools();
  const auto found = std::find_if(tools.begin(), tools.end(),
                                  [&](const ToolSpec& tool) { return tool.*key == text; });
  return found != tools.end() ? &*found : nullptr;
}

}  // namespace

const std::vector<ToolSpec>& Tools() {
  static const std::vector<ToolSpec> tools = Build();
  return tools;
}

const ToolSpec* FindTool(std::string_view name) {
  return Find(&ToolSpec::name, name);
}

const ToolSpec* FindOperation(std::string_view operation) {
  return Find(&ToolSpec::operation, operation);
}

core::Json ErrorBody(std::string code, std::string message, std::string hint, core::Json details) {
  core::Json body =
      core::Json::Object({{"code", std::move(code)}, {"message", std::move(message)}});
  if (!hint.empty()) body.Set("hint", core::Json::Text(std::move(hint)));
  if (details.kind != core::Json::Kind::Null) body.Set("details", std::move(details));
  return body;
}

}  // namespace zorvik::authoring
