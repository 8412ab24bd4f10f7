#include "bench/documents.h"

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "core/json.h"
#include "examples/sample_editor/operations.h"
#include "tests/support/server_session.h"

namespace zorvik::bench {

using core::Json;

namespace {

constexpr std::size_t kDocumentLimit = 16'777'216;
constexpr std::size_t kImageSize = 12'000'000;
constexpr int kFieldLimit = 65'536;

std::string ToolListAnswer() {
  tests::ServerSession session;
  session.Initialize("2025-11-25");
  return session.Ask(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})");
}

// What the example editor says to one request, as it goes over the pipe.
std::string Reply(sample_editor::World& world, const std::string& operation,
                  const std::string& arguments) {
  Json args;
  std::string fault;
  Json result = Json::Object();
  Json error;
  if (!core::ParseJson(arguments, args, fault) ||
      !RunOperation(world, {operation, std::move(args), {"agent", "bench"}}, result, error))
    throw std::runtime_error(operation + ": " + fault + core::WriteJson(error));
  return core::WriteJson(Json::Object(
      {{"id", 1}, {"ok", true}, {"revision", world.revision}, {"result", std::move(result)}}));
}

std::string ObjectsQueryReply() {
  sample_editor::World world = sample_editor::MakeSampleWorld();
  std::string objects;
  for (int i = 0; i < 200; ++i) {
    objects += (i > 0 ? "," : "") + std::string(R"({"asset":"zorvik_pinheiro","name":"Pinheiro )") +
               std::to_string(i) + R"(","x":)" + std::to_string(-200 + 1.37 * i) + R"(,"z":)" +
               std::to_string(150 - 1.91 * i) + R"(,"yaw":)" + std::to_string(i * 7 % 360) +
               R"(,"scale":0.9,"tint":[1,0.95,0.9]})";
  }
  Reply(world, "objects.create", R"({"objects":[)" + objects + "]}");
  return Reply(world, "objects.query", R"({"limit":200})");
}

std::string TerrainSampleReply() {
  sample_editor::World world = sample_editor::MakeSampleWorld();
  return Reply(world, "terrain.sample",
               R"({"bounds":{"min_x":-127.3,"min_z":-127.3,"max_x":126.7,"max_z":126.7},"step":2,)"
               R"("fields":["height","slope","normal","material","water"]})");
}

std::string CaptureReply() {
  return R"({"id":1,"ok":true,"revision":7,"result":{"width":1920,"height":1080,"complete":true,)"
         R"("images":[{"mime":"image/png","data_base64":")" +
         Base64Noise(kImageSize) + R"(","width":1920,"height":1080}]}})";
}

// One object with as many fields as are allowed, no two objects with the same keys.
std::string LargeObject(int first_key) {
  std::string text = "{";
  for (int i = 0; i < kFieldLimit; ++i)
    text += (i > 0 ? ",\"k" : "\"k") + std::to_string(first_key + i) + "\":1";
  return text + "}";
}

std::string LargeObjects() {
  std::string text = "[" + LargeObject(0);
  for (int key = kFieldLimit;; key += kFieldLimit) {
    const std::string object = LargeObject(key);
    if (text.size() + object.size() + 2 > kDocumentLimit) return text + "]";
    text += "," + object;
  }
}

std::string ShortNumbers() {
  std::string text = "[1";
  for (int i = 2; text.size() + 3 <= kDocumentLimit; ++i) {
    text += ',';
    text += static_cast<char>('0' + i % 10);
  }
  return text + "]";
}

// Lists of one list each, as deep as is allowed: the most memory for its text.
std::string NestedLists() {
  constexpr std::size_t kDepth = 63;
  const std::string piece = std::string(kDepth, '[') + std::string(kDepth, ']');
  std::string text = "[" + piece;
  while (text.size() + piece.size() + 2 <= kDocumentLimit) text += "," + piece;
  return text + "]";
}

std::string Escapes() {
  const std::string piece = R"(\n\"\u00e9\\\u0001\t\ud83d\ude00)";
  std::string text = "\"";
  while (text.size() + piece.size() + 1 <= kDocumentLimit) text += piece;
  return text + "\"";
}

}  // namespace

const std::vector<Document>& Documents() {
  static const std::vector<Document> documents = {
      {"tools_list", ToolListAnswer()},         {"objects_query", ObjectsQueryReply()},
      {"terrain_sample", TerrainSampleReply()}, {"capture", CaptureReply()},
      {"hostile_keys", LargeObject(0)},         {"hostile_objects", LargeObjects()},
      {"hostile_numbers", ShortNumbers()},      {"hostile_escapes", Escapes()},
      {"hostile_lists", NestedLists()},
  };
  return documents;
}

std::string Base64Noise(std::size_t size) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text(size, '\0');
  std::uint64_t state = 1;
  for (char& letter : text) {
    state = state * 6'364'136'223'846'793'005 + 1'442'695'040'888'963'407;
    letter = kLetters[state >> 58];
  }
  return text;
}

std::string FullObjects(int count) {
  constexpr std::string_view kObject =
      R"({"asset":"zorvik_casa","name":"Casa @","ref":"casa@","x":@.5,"z":-@.25,"y":0.125,)"
      R"("y_mode":"ground_offset","pitch":1.5,"yaw":90,"roll":-2,"scale":1.25,)"
      R"("scale_xyz":{"x":1,"y":1.5,"z":2},"parent":0,"visible":true,"locked":false,"solid":true,)"
      R"("draw_distance":1500,"cast_shadow":true,"tint":[1,0.9,0.8],"tint_hex":"#ffeedd",)"
      R"("color_variation":0.25,"body":"dynamic","mass":120.5,"friction":0.6,"restitution":0.1})";
  std::string text = R"({"objects":[)";
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    for (const char c : kObject)
      if (c == '@')
        text += std::to_string(i);
      else
        text += c;
  }
  return text + R"(],"label":"Vila","request_id":"bench-1"})";
}

}  // namespace zorvik::bench
