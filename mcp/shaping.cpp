#include <string>
#include <utility>

#include "authoring/catalog.h"
#include "core/json.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::Json;

namespace {

// Takes the image data out of an element of `images` and gives it back as a content block. What
// stays in the element is what the structured result shows.
Json TakeImage(Json& element) {
  Json data;
  Json cleaned = Json::Object();
  if (element.kind == Json::Kind::Object) {
    cleaned.fields.reserve(element.fields.size());
    for (auto& [key, value] : element.fields)
      if (key == "data_base64")
        data = std::move(value);
      else
        cleaned.fields.emplace_back(std::move(key), std::move(value));
  }
  Json block = Json::Object();
  block.Set("type", Json::Text("image"));
  block.Set("data", std::move(data));
  block.Set("mimeType", Json::Text(cleaned.At("mime").TextOr("image/png")));
  element = std::move(cleaned);
  return block;
}

}  // namespace

Json Server::ToolList(const Era& era) {
  Json rows = Json::Array();
  rows.items.reserve(authoring::Tools().size());
  for (const authoring::ToolSpec& tool : authoring::Tools()) {
    const bool reads = tool.kind == authoring::ToolKind::Read;
    Json annotations = Json::Object();
    if (era.Oldest()) annotations.Set("title", Json::Text(tool.title));
    annotations.Set("readOnlyHint", Json::Bool(reads));
    annotations.Set("destructiveHint", Json::Bool(false));
    annotations.Set("idempotentHint", Json::Bool(reads));
    annotations.Set("openWorldHint", Json::Bool(false));

    Json& row = rows.Add(Json::Object());
    row.Set("name", Json::Text(tool.name));
    if (!era.Oldest()) row.Set("title", Json::Text(tool.title));
    row.Set("description", Json::Text(tool.description));
    row.Set("inputSchema", tool.input);
    if (!era.Oldest()) row.Set("outputSchema", tool.output);
    row.Set("annotations", std::move(annotations));
  }
  Json list = Json::Object();
  list.Set("tools", std::move(rows));
  return list;
}

Json Server::ToolError(std::string code, std::string message, std::string hint, Json details) {
  Json document = Json::Object();
  document.Set("ok", Json::Bool(false));
  document.Set("error", authoring::ErrorBody(std::move(code), std::move(message), std::move(hint),
                                             std::move(details)));
  return document;
}

Json Server::ToolResult(const Era& era, Json document) {
  const bool failed = !document.At("ok").BoolOr(false);
  Json content = Json::Array();
  Json& text = content.Add(Json::Object());
  text.Set("type", Json::Text("text"));
  for (auto& [key, value] : document.fields) {
    if (key != "images" || value.kind != Json::Kind::Array) continue;
    for (Json& element : value.items) content.Add(TakeImage(element));
  }
  // Found again by its place: the blocks that were added may have moved it.
  content.items.front().Set("text", Json::Text(core::WriteJson(document)));

  Json result = Json::Object();
  result.Set("content", std::move(content));
  if (!era.Oldest()) result.Set("structuredContent", std::move(document));
  result.Set("isError", Json::Bool(failed));
  return result;
}

Json Server::ToolAnswer(const Json& id, const Era& era, Json document) {
  return Response(id, Result(era, ToolResult(era, std::move(document))));
}

}  // namespace zorvik::mcp
