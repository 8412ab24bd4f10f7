#include "mcp/answers.h"

#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "mcp/introduction.h"

namespace zorvik::mcp {

using core::Json;

namespace {

Json FailedDocument(Json error) {
  return Json::Object({{"ok", false}, {"error", std::move(error)}});
}

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

std::vector<Json> TakeImages(Json& document) {
  std::vector<Json> blocks;
  Json* images = document.Find("images");
  if (images != nullptr && images->kind == Json::Kind::Array)
    for (Json& element : images->items) blocks.push_back(TakeImage(element));
  return blocks;
}

}  // namespace

Json Response(const Json& id, Json result) {
  return Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

Json Failure(const Json& id, int code, std::string message, Json data) {
  Json error = Json::Object({{"code", code}, {"message", std::move(message)}});
  if (data.kind != Json::Kind::Null) error.Set("data", std::move(data));
  return Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}});
}

Json Result(const Era& era, Json result) {
  if (!era.stateless) return result;
  result.Set("resultType", Json::Text("complete"));
  result.Set("_meta", Json::Object({{"io.modelcontextprotocol/serverInfo", ServerInfo()}}));
  return result;
}

Json LastingResult(const Era& era, Json result) {
  if (era.stateless) {
    constexpr int kHourInMs = 3'600'000;
    result.Set("ttlMs", Json::Number(kHourInMs));
    result.Set("cacheScope", Json::Text("public"));
  }
  return Result(era, std::move(result));
}

Json ToolError(std::string code, std::string message, std::string hint, Json details) {
  return FailedDocument(authoring::ErrorBody(std::move(code), std::move(message), std::move(hint),
                                             std::move(details)));
}

Json ToolDocument(Json reply) {
  if (!reply.At("ok").BoolOr(false)) {
    Json* error = reply.Find("error");
    if (error == nullptr || error->kind != Json::Kind::Object)
      return ToolError("internal", "Resposta do editor sem erro nem resultado.", "");
    return FailedDocument(std::move(*error));
  }
  Json document = Json::Object({{"ok", true}});
  if (const Json& revision = reply.At("revision"); revision.kind == Json::Kind::Number)
    document.Set("revision", revision);
  Json* result = reply.Find("result");
  if (result == nullptr) return document;
  document.fields.reserve(document.fields.size() + result->fields.size());
  for (auto& [key, value] : result->fields) {
    // The keys of `result` differ from each other, so only these two can be there already. Looking
    // every key up would take quadratic time.
    if (key == "ok" || key == "revision")
      document.Set(key, std::move(value));
    else
      document.fields.emplace_back(std::move(key), std::move(value));
  }
  return document;
}

Json ToolResult(const Era& era, Json document) {
  const bool failed = !document.At("ok").BoolOr(false);
  std::vector<Json> images = TakeImages(document);
  // Written only now, since the text shows the document without the image data.
  Json content =
      Json::Array({Json::Object({{"type", "text"}, {"text", core::WriteJson(document)}})});
  for (Json& image : images) content.Add(std::move(image));
  if (era.Oldest()) return Json::Object({{"content", std::move(content)}, {"isError", failed}});
  return Json::Object({{"content", std::move(content)},
                       {"structuredContent", std::move(document)},
                       {"isError", failed}});
}

Json ToolAnswer(const Json& id, const Era& era, Json document) {
  return Response(id, Result(era, ToolResult(era, std::move(document))));
}

}  // namespace zorvik::mcp
