#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/protocols.h"
#include "examples/sample_editor/assets.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr double kMaxSamples = 16384;
constexpr int kDefaultSamplesPerSide = 64;
constexpr int kMaxTiles = 256;
constexpr double kFar = 1e300;
constexpr int kSeaId = 1;

Json TextArray(const std::vector<std::string>& texts) {
  Json array = Json::Array();
  for (const std::string& text : texts) array.Add(Json::Text(text));
  return array;
}

Json LayerNames() {
  return TextArray({kLayers.begin(), kLayers.end()});
}

std::string LowerCase(std::string text) {
  for (char& letter : text)
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  return text;
}

bool PassesFilter(const Objects& objects, const Object& object, const Json& args) {
  const Vec3 at = WorldFrame(objects, object).origin;
  const Json& bounds = args.At("bounds");
  if (args.Has("bounds") && (at.x < bounds.At("min_x").number || at.x > bounds.At("max_x").number ||
                             at.z < bounds.At("min_z").number || at.z > bounds.At("max_z").number))
    return false;
  const Json& near = args.At("near");
  if (args.Has("near") &&
      std::hypot(at.x - near.At("x").number, at.z - near.At("z").number) > near.At("radius").number)
    return false;
  const std::string& asset = object.fields.At("asset").text;
  std::string_view wanted = args.At("asset").text;
  if (wanted.ends_with('*')) {
    wanted.remove_suffix(1);
    if (!asset.starts_with(wanted)) return false;
  } else if (args.Has("asset") && asset != wanted) {
    return false;
  }
  const std::string name = LowerCase(object.fields.At("name").text);
  if (name.find(LowerCase(args.At("name").text)) == std::string::npos) return false;
  if (args.Has("parent") && object.Parent() != args.At("parent").IntOr(0)) return false;
  return args.At("include_hidden").BoolOr(true) || Shown(objects, object);
}

Json Limits() {
  return Json::Object({{"objects", kMaxObjects},
                       {"water_bodies", 1},
                       {"layers", kLayers.size()},
                       {"species", 0},
                       {"scale_min", 0.1},
                       {"scale_max", 4},
                       {"hierarchy_depth", kMaxDepth},
                       {"samples", kMaxSamples},
                       {"page", 200}});
}

// One value of a sampled field; null outside the terrain.
Json SampledValue(const std::string& field, double x, double z) {
  if (!InsideTerrain(x, z)) return {};
  if (field == "height") return Json::Number(GroundHeight(x, z));
  if (field == "slope") return Json::Number(GroundSlope(x, z));
  if (field == "normal") {
    const Vec3 normal = GroundNormal(x, z);
    return Json::Array({normal.x, normal.y, normal.z});
  }
  if (field == "material") {
    Json weights = Json::Array();
    for (const double weight : LayerWeights(x, z)) weights.Add(Json::Number(weight));
    return weights;
  }
  if (GroundHeight(x, z) >= kSeaLevel) return {};
  return Json::Object({{"level", kSeaLevel}, {"body", kSeaId}});
}

}  // namespace

bool WorldCapabilities(World& /*world*/, const Call& /*call*/, Json& result, Json& /*error*/) {
  result = Json::Object(
      {{"versions", Json::Object({{"protocol", authoring::kNewestProtocol},
                                  {"bridge", authoring::kBridgeProtocol},
                                  {"scene_format", 37}})},
       {"units", Json::Object({{"length", "metros"}, {"angle", "graus"}})},
       {"axes", Json::Object({{"x", "leste"}, {"y", "cima"}, {"z", "sul"}})},
       {"rotation", "yaw em Y, depois pitch em X, depois roll em Z"},
       {"limits", Limits()},
       {"world_kinds", Json::Array({"monolitico"})},
       {"families", Json::Array({"leitura", "objetos", "captura", "historico", "jobs", "lote"})},
       {"operations", TextArray(SupportedOperations())}});
  return true;
}

bool WorldInfo(World& world, const Call& /*call*/, Json& result, Json& /*error*/) {
  result = Json::Object(
      {{"world_id", "sample-vale"},
       {"project", "Exemplo"},
       {"file", "maps/vale.scene"},
       {"kind", "monolitico"},
       {"name", "Vale de exemplo"},
       {"terrain", Json::Object({{"width", 2 * kTerrainHalf},
                                 {"depth", 2 * kTerrainHalf},
                                 {"resolution", kTerrainResolution},
                                 {"step_x", kTerrainStep},
                                 {"step_z", kTerrainStep},
                                 {"min_height", GroundStatistics().min},
                                 {"max_height", GroundStatistics().max}})},
       {"counts",
        Json::Object({{"objects", world.objects.size()}, {"water_bodies", 1}, {"waterfalls", 0}})},
       // Nothing is ever saved here, and the person's edits are single steps.
       {"dirty", world.revision != 1},
       {"gesture_open", false},
       {"ai_allowed", true}});
  return true;
}

bool WorldSummary(World& world, const Call& call, Json& result, Json& error) {
  const double tile = call.args.Has("tile") ? call.args.At("tile").number : 128;
  const int side = static_cast<int>(std::ceil(2 * kTerrainHalf / tile));
  if (side * side > kMaxTiles) {
    error = InvalidArgument("tile", "daria " + std::to_string(side * side) +
                                        " ladrilhos; o limite e 256 (aqui, tile de 32 ou mais)");
    return false;
  }
  std::map<std::string, int> by_asset;
  std::vector<std::vector<int>> counts(static_cast<std::size_t>(side),
                                       std::vector<int>(static_cast<std::size_t>(side)));
  int outside = 0;
  Vec3 low = {kFar, kFar, kFar};
  Vec3 high = {-kFar, -kFar, -kFar};
  for (const auto& [id, object] : world.objects) {
    ++by_asset[object->fields.At("asset").text];
    const Vec3 at = WorldFrame(world.objects, *object).origin;
    if (InsideTerrain(at.x, at.z)) {
      const auto last = counts.size() - 1;  // It takes in the far edges of the terrain.
      const auto column = static_cast<std::size_t>((at.x + kTerrainHalf) / tile);
      const auto row = static_cast<std::size_t>((at.z + kTerrainHalf) / tile);
      ++counts[std::min(row, last)][std::min(column, last)];
    } else {
      ++outside;
    }
    const auto [box_low, box_high] = WorldBox(world.objects, *object);
    low = {std::min(low.x, box_low.x), 0, std::min(low.z, box_low.z)};
    high = {std::max(high.x, box_high.x), 0, std::max(high.z, box_high.z)};
  }
  Json assets = Json::Array();
  Json missing = Json::Array();
  for (const auto& [asset, count] : by_asset) {
    assets.Add(Json::Object({{"asset", asset}, {"count", count}}));
    if (FindAsset(asset) == nullptr) missing.Add(Json::Text(asset));
  }
  Json bounds;
  if (!world.objects.empty())
    bounds =
        Json::Object({{"min_x", low.x}, {"min_z", low.z}, {"max_x", high.x}, {"max_z", high.z}});
  Json cells = Json::Array();
  for (const std::vector<int>& row : counts)
    for (const int count : row) cells.Add(Json::Int(count));
  result = Json::Object({{"objects_by_asset", std::move(assets)},
                         {"content_bounds", std::move(bounds)},
                         {"missing_assets", std::move(missing)},
                         {"terrain", Json::Object({{"min", GroundStatistics().min},
                                                   {"max", GroundStatistics().max},
                                                   {"mean", GroundStatistics().mean}})},
                         {"density", Json::Object({{"tile", tile},
                                                   {"origin_x", -kTerrainHalf},
                                                   {"origin_z", -kTerrainHalf},
                                                   {"columns", side},
                                                   {"rows", side},
                                                   {"counts", std::move(cells)},
                                                   {"outside", outside}})}});
  return true;
}

bool ObjectsQuery(World& world, const Call& call, Json& result, Json& error) {
  // A page begins behind the id that ended the one before, whatever was created or deleted since.
  std::int64_t last = 0;
  if (!ReadCursor(call.args, last, error)) return false;
  const auto limit = static_cast<std::size_t>(call.args.At("limit").IntOr(50));
  Json page = Json::Array();
  std::string next;
  std::int64_t total = 0;
  for (const auto& [id, object] : world.objects) {
    if (!PassesFilter(world.objects, *object, call.args)) continue;
    ++total;
    if (id <= last) continue;
    if (page.items.size() < limit)
      page.Add(ObjectJson(world.objects, *object, false));
    else if (next.empty())
      next = std::to_string(page.items.back().At("id").IntOr(0));
  }
  result = Json::Object({{"objects", std::move(page)}, {"total", total}});
  if (!next.empty()) result.Set("next_cursor", Json::Text(std::move(next)));
  return true;
}

bool ObjectsGet(World& world, const Call& call, Json& result, Json& /*error*/) {
  Json objects = Json::Array();
  Json missing = Json::Array();
  for (const Json& id : call.args.At("ids").items)
    if (const ObjectPtr object = Find(world.objects, id.IntOr(0)))
      objects.Add(ObjectJson(world.objects, *object, true));
    else
      missing.Add(id);
  result = Json::Object({{"objects", std::move(objects)}, {"missing", std::move(missing)}});
  return true;
}

bool TerrainSample(World& /*world*/, const Call& call, Json& result, Json& error) {
  const Json& bounds = call.args.At("bounds");
  const double west = bounds.At("min_x").number;
  const double north = bounds.At("min_z").number;
  const double width = bounds.At("max_x").number - west;
  const double depth = bounds.At("max_z").number - north;
  if (width < 0 || depth < 0) {
    error = InvalidArgument("bounds", "min_x e min_z nao podem passar de max_x e max_z");
    return false;
  }
  double step =
      std::max({width / (kDefaultSamplesPerSide - 1), depth / (kDefaultSamplesPerSide - 1), 0.25});
  if (call.args.Has("step")) step = call.args.At("step").number;
  // The little more keeps a last column that rounding would take away.
  const double columns = std::floor(width / step + 1e-9) + 1;
  const double rows = std::floor(depth / step + 1e-9) + 1;
  if (!(columns * rows <= kMaxSamples)) {
    error =
        InvalidArgument("step", "a grade passaria de 16384 pontos; aumente step ou divida bounds");
    return false;
  }
  std::vector<std::string> fields;
  for (const Json& field : call.args.At("fields").items) fields.push_back(field.text);
  if (fields.empty()) fields.emplace_back("height");

  result = Json::Object({{"columns", columns},
                         {"rows", rows},
                         {"origin_x", west},
                         {"origin_z", north},
                         {"step", step}});
  Json status = Json::Array();
  bool any_outside = false;
  for (int row = 0; row < static_cast<int>(rows); ++row) {
    for (int column = 0; column < static_cast<int>(columns); ++column) {
      const bool inside = InsideTerrain(west + column * step, north + row * step);
      any_outside = any_outside || !inside;
      status.Add(Json::Text(inside ? "ok" : "outside"));
    }
  }
  for (const std::string& field : fields) {
    Json values = Json::Array();
    for (int row = 0; row < static_cast<int>(rows); ++row)
      for (int column = 0; column < static_cast<int>(columns); ++column)
        values.Add(SampledValue(field, west + column * step, north + row * step));
    result.Set(field, std::move(values));
    if (field == "material") result.Set("layers", LayerNames());
  }
  if (any_outside) result.Set("status", std::move(status));
  return true;
}

bool WaterList(World& /*world*/, const Call& /*call*/, Json& result, Json& /*error*/) {
  Json sea =
      Json::Object({{"id", kSeaId},
                    {"kind", "sea"},
                    {"name", "Mar"},
                    {"enabled", true},
                    {"level", kSeaLevel},
                    {"material", "mar"},
                    {"swell", Json::Object({{"height", 0}, {"period", 8}, {"direction", 0}})}});
  result = Json::Object({{"bodies", Json::Array({std::move(sea)})},
                         {"waterfalls", Json::Array()},
                         {"limits", Json::Object({{"bodies", 1}, {"waterfalls", 0}})}});
  return true;
}

}  // namespace zorvik::sample_editor
