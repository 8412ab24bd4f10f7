#include "mcp/answers.h"

#include <cstddef>
#include <string_view>
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

// For what stands round a document in its answer.
constexpr std::size_t kRoomForFrame = 32'768;

constexpr const char* kUsualMime = "image/png";

// What an element of `images` brings to its content block.
struct Image {
  std::size_t index = 0;
  Json data;
  std::string mime;
};

// Takes the image out of an object. What stays is what the structured result shows.
Image TakeImage(Json& element) {
  Image image;
  Json cleaned = Json::Object();
  cleaned.fields.reserve(element.fields.size());
  for (auto& [key, value] : element.fields)
    if (key == "data_base64")
      image.data = std::move(value);
    else
      cleaned.fields.emplace_back(std::move(key), std::move(value));
  image.mime = cleaned.At("mime").TextOr(kUsualMime);
  element = std::move(cleaned);
  return image;
}

// Takes the images of all elements, and counts those. Elements without data and mime all get the
// same block and are left out: a line may hold millions of them.
std::vector<Image> TakeImages(Json& document, std::size_t& count) {
  std::vector<Image> images;
  Json* elements = document.Find("images");
  if (elements == nullptr || elements->kind != Json::Kind::Array) return images;
  for (Json& element : elements->items) {
    const std::size_t index = count++;
    if (element.kind != Json::Kind::Object) {
      element = Json::Object();
      continue;
    }
    Image image = TakeImage(element);
    image.index = index;
    if (image.data.kind != Json::Kind::Null || image.mime != kUsualMime)
      images.push_back(std::move(image));
  }
  return images;
}

void AppendImageBlock(const Json& data, std::string_view mime, std::string& answer) {
  answer += R"(,{"type":"image","data":)";
  core::AppendJson(data, answer);
  answer += R"(,"mimeType":)";
  core::AppendJson(Json::Text(std::string(mime)), answer);
  answer += '}';
}

}  // namespace

std::string Response(const Json& id, Json result) {
  return core::WriteJson(
      Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}}));
}

std::string Failure(const Json& id, int code, std::string message, Json data) {
  Json error = Json::Object({{"code", code}, {"message", std::move(message)}});
  if (data.kind != Json::Kind::Null) error.Set("data", std::move(data));
  return core::WriteJson(
      Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}}));
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

std::string ToolAnswer(const Json& id, const Era& era, Json document) {
  const bool failed = !document.At("ok").BoolOr(false);
  std::size_t image_count = 0;
  const std::vector<Image> images = TakeImages(document, image_count);
  // Written only now, since the text shows the document without the image data.
  const Json text = Json::Text(core::WriteJson(document));
  document = Json();  // It may be as large as the memory that the answer takes.

  std::string usual_block;
  AppendImageBlock(core::Nothing, kUsualMime, usual_block);
  std::size_t room = 3 * text.text.size() + image_count * usual_block.size() + kRoomForFrame;
  for (const Image& image : images) room += image.data.text.size() + image.mime.size();
  std::string answer;
  answer.reserve(room);
  answer += R"({"jsonrpc":"2.0","id":)";
  core::AppendJson(id, answer);
  answer += R"(,"result":{"content":[{"type":"text","text":)";
  core::AppendJson(text, answer);
  answer += '}';
  auto image = images.begin();
  for (std::size_t index = 0; index < image_count; ++index) {
    if (image == images.end() || image->index != index) {
      answer += usual_block;
      continue;
    }
    AppendImageBlock(image->data, image->mime, answer);
    ++image;
  }
  answer += ']';
  if (!era.Oldest()) answer.append(R"(,"structuredContent":)").append(text.text);
  // The rest of the result, from behind its brace on.
  answer += ',';
  answer.append(core::WriteJson(Result(era, Json::Object({{"isError", failed}}))), 1);
  answer += '}';
  return answer;
}

}  // namespace zorvik::mcp
