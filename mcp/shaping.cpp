#include <string>
#include <utility>
#include <vector>

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
  std::string mime = cleaned.At("mime").TextOr("image/png");
  element = std::move(cleaned);
  return Json::Object(
      {{"type", "image"}, {"data", std::move(data)}, {"mimeType", std::move(mime)}});
}

// Takes the image data of all elements of `images` out of the document, as content blocks.
std::vector<Json> TakeImages(Json& document) {
  std::vector<Json> blocks;
  Json* images = document.Find("images");
  if (images != nullptr && images->kind == Json::Kind::Array)
    for (Json& element : images->items) blocks.push_back(TakeImage(element));
  return blocks;
}

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

Json Server::ToolList(const Era& era) {
  Json rows = Json::Array();
  rows.items.reserve(authoring::Tools().size());
  for (const authoring::ToolSpec& tool : authoring::Tools())
    rows.Add(era.Oldest() ? OldestToolRow(tool) : ToolRow(tool));
  return Json::Object({{"tools", std::move(rows)}});
}

Json Server::ToolError(std::string code, std::string message, std::string hint, Json details) {
  return Json::Object({{"ok", false},
                       {"error", authoring::ErrorBody(std::move(code), std::move(message),
                                                      std::move(hint), std::move(details))}});
}

Json Server::ToolResult(const Era& era, Json document) {
  const bool failed = !document.At("ok").BoolOr(false);
  std::vector<Json> images = TakeImages(document);
  // The text shows the document without the images, which stand behind it.
  Json content =
      Json::Array({Json::Object({{"type", "text"}, {"text", core::WriteJson(document)}})});
  for (Json& image : images) content.Add(std::move(image));
  if (era.Oldest()) return Json::Object({{"content", std::move(content)}, {"isError", failed}});
  return Json::Object({{"content", std::move(content)},
                       {"structuredContent", std::move(document)},
                       {"isError", failed}});
}

Json Server::ToolAnswer(const Json& id, const Era& era, Json document) {
  return Response(id, Result(era, ToolResult(era, std::move(document))));
}

}  // namespace zorvik::mcp
