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
  Json limits = Json::Object();
  limits.Set("objects", Json::Int(static_cast<long long>(kMaxObjects)));
  limits.Set("water_bodies", Json::Int(1));
  limits.Set("layers", Json::Int(static_cast<long long>(kLayers.size())));
  limits.Set("species", Json::Int(0));
  limits.Set("scale_min", Json::Number(0.1));
  limits.Set("scale_max", Json::Number(4));
  limits.Set("hierarchy_depth", Json::Int(kMaxDepth));
  limits.Set("samples", Json::Number(kMaxSamples));
  limits.Set("page", Json::Int(200));
  return limits;
}

// One value of a sampled field; null outside the terrain.
Json SampledValue(const std::string& field, double x, double z) {
  if (!InsideTerrain(x, z)) return {};
  if (field == "height") return Json::Number(GroundHeight(x, z));
  if (field == "slope") return Json::Number(GroundSlope(x, z));
  Json value = Json::Array();
  if (field == "normal") {
    const Vec3 normal = GroundNormal(x, z);
    for (const double part : {normal.x, normal.y, normal.z}) value.Add(Json::Number(part));
    return value;
  }
  if (field == "material") {
    for (const double weight : LayerWeights(x, z)) value.Add(Json::Number(weight));
    return value;
  }
  if (GroundHeight(x, z) >= kSeaLevel) return {};
  value = Json::Object();
  value.Set("level", Json::Number(kSeaLevel));
  value.Set("body", Json::Int(kSeaId));
  return value;
}

}  // namespace

bool WorldCapabilities(World& /*world*/, const Call& /*call*/, Json& result, Json& /*error*/) {
  Json& versions = result.Set("versions", Json::Object());
  versions.Set("protocol", Json::Text(authoring::kNewestProtocol));
  versions.Set("bridge", Json::Text(authoring::kBridgeProtocol));
  versions.Set("scene_format", Json::Int(37));
  Json& units = result.Set("units", Json::Object());
  units.Set("length", Json::Text("metros"));
  units.Set("angle", Json::Text("graus"));
  Json& axes = result.Set("axes", Json::Object());
  axes.Set("x", Json::Text("leste"));
  axes.Set("y", Json::Text("cima"));
  axes.Set("z", Json::Text("sul"));
  result.Set("rotation", Json::Text("yaw em Y, depois pitch em X, depois roll em Z"));
  result.Set("limits", Limits());
  result.Set("world_kinds", TextArray({"monolitico"}));
  result.Set("families", TextArray({"leitura", "objetos", "captura", "historico", "jobs", "lote"}));
  result.Set("operations", TextArray(SupportedOperations()));
  return true;
}

bool WorldInfo(World& world, const Call& /*call*/, Json& result, Json& /*error*/) {
  result.Set("world_id", Json::Text("sample-vale"));
  result.Set("project", Json::Text("Exemplo"));
  result.Set("file", Json::Text("maps/vale.scene"));
  result.Set("kind", Json::Text("monolitico"));
  result.Set("name", Json::Text("Vale de exemplo"));
  Json& terrain = result.Set("terrain", Json::Object());
  terrain.Set("width", Json::Number(2 * kTerrainHalf));
  terrain.Set("depth", Json::Number(2 * kTerrainHalf));
  terrain.Set("resolution", Json::Int(kTerrainResolution));
  terrain.Set("step_x", Json::Number(kTerrainStep));
  terrain.Set("step_z", Json::Number(kTerrainStep));
  terrain.Set("min_height", Json::Number(GroundStatistics().min));
  terrain.Set("max_height", Json::Number(GroundStatistics().max));
  Json& counts = result.Set("counts", Json::Object());
  counts.Set("objects", Json::Int(static_cast<long long>(world.objects.size())));
  counts.Set("water_bodies", Json::Int(1));
  counts.Set("waterfalls", Json::Int(0));
  // Nothing is ever saved here, and the person's edits are single steps.
  result.Set("dirty", Json::Bool(world.revision != 1));
  result.Set("gesture_open", Json::Bool(false));
  result.Set("ai_allowed", Json::Bool(true));
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
  Json& assets = result.Set("objects_by_asset", Json::Array());
  Json missing = Json::Array();
  for (const auto& [asset, count] : by_asset) {
    Json& entry = assets.Add(Json::Object());
    entry.Set("asset", Json::Text(asset));
    entry.Set("count", Json::Int(count));
    if (FindAsset(asset) == nullptr) missing.Add(Json::Text(asset));
  }
  Json bounds;
  if (!world.objects.empty()) {
    bounds.Set("min_x", Json::Number(low.x));
    bounds.Set("min_z", Json::Number(low.z));
    bounds.Set("max_x", Json::Number(high.x));
    bounds.Set("max_z", Json::Number(high.z));
  }
  result.Set("content_bounds", std::move(bounds));
  result.Set("missing_assets", std::move(missing));
  Json& terrain = result.Set("terrain", Json::Object());
  terrain.Set("min", Json::Number(GroundStatistics().min));
  terrain.Set("max", Json::Number(GroundStatistics().max));
  terrain.Set("mean", Json::Number(GroundStatistics().mean));
  Json& density = result.Set("density", Json::Object());
  density.Set("tile", Json::Number(tile));
  density.Set("origin_x", Json::Number(-kTerrainHalf));
  density.Set("origin_z", Json::Number(-kTerrainHalf));
  density.Set("columns", Json::Int(side));
  density.Set("rows", Json::Int(side));
  Json& cells = density.Set("counts", Json::Array());
  for (const std::vector<int>& row : counts)
    for (const int count : row) cells.Add(Json::Int(count));
  density.Set("outside", Json::Int(outside));
  return true;
}

bool ObjectsQuery(World& world, const Call& call, Json& result, Json& error) {
  // A page begins behind the id that ended the one before, whatever was created or deleted since.
  std::int64_t last = 0;
  if (!ReadCursor(call.args, last, error)) return false;
  const auto limit = static_cast<std::size_t>(call.args.At("limit").IntOr(50));
  Json& page = result.Set("objects", Json::Array());
  Json next;
  std::int64_t total = 0;
  for (const auto& [id, object] : world.objects) {
    if (!PassesFilter(world.objects, *object, call.args)) continue;
    ++total;
    if (id <= last) continue;
    if (page.items.size() < limit)
      page.Add(ObjectJson(world.objects, *object, false));
    else if (next.kind == Json::Kind::Null)
      next = Json::Text(std::to_string(page.items.back().At("id").IntOr(0)));
  }
  result.Set("total", Json::Int(total));
  if (next.kind == Json::Kind::Text) result.Set("next_cursor", std::move(next));
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
  result.Set("objects", std::move(objects));
  result.Set("missing", std::move(missing));
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

  result.Set("columns", Json::Number(columns));
  result.Set("rows", Json::Number(rows));
  result.Set("origin_x", Json::Number(west));
  result.Set("origin_z", Json::Number(north));
  result.Set("step", Json::Number(step));
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
  Json& sea = result.Set("bodies", Json::Array()).Add(Json::Object());
  sea.Set("id", Json::Int(kSeaId));
  sea.Set("kind", Json::Text("sea"));
  sea.Set("name", Json::Text("Mar"));
  sea.Set("enabled", Json::Bool(true));
  sea.Set("level", Json::Number(kSeaLevel));
  sea.Set("material", Json::Text("mar"));
  Json& swell = sea.Set("swell", Json::Object());
  swell.Set("height", Json::Number(0));
  swell.Set("period", Json::Number(8));
  swell.Set("direction", Json::Number(0));
  result.Set("waterfalls", Json::Array());
  Json& limits = result.Set("limits", Json::Object());
  limits.Set("bodies", Json::Int(1));
  limits.Set("waterfalls", Json::Int(0));
  return true;
}

}  // namespace zorvik::sample_editor
