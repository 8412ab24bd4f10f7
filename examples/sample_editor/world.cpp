#include "examples/sample_editor/world.h"

#include <algorithm>
#include <limits>
#include <set>

#include "examples/sample_editor/assets.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

using core::Json;

ObjectPtr Find(const Objects& objects, std::int64_t id) {
  const auto found = objects.find(id);
  return found == objects.end() ? nullptr : found->second;
}

std::vector<std::int64_t> WithDescendants(const Objects& objects,
                                          const std::vector<std::int64_t>& ids) {
  std::set<std::int64_t> family(ids.begin(), ids.end());
  for (std::size_t before = 0; before != family.size();) {
    before = family.size();
    for (const auto& [id, object] : objects)
      if (family.contains(object->Parent())) family.insert(id);
  }
  return {family.begin(), family.end()};
}

Frame WorldFrame(const Objects& objects, const Object& object) {
  Vec3 position = ReadVector(object.fields, {});
  Frame outer;
  if (const ObjectPtr parent = Find(objects, object.Parent()))
    outer = WorldFrame(objects, *parent);
  else
    position.y += GroundHeight(position.x, position.z);
  const Vec3 angles{object.fields.At("pitch").number, object.fields.At("yaw").number,
                    object.fields.At("roll").number};
  return Inside(outer, position, angles, ReadVector(object.fields.At("scale_xyz"), {1, 1, 1}));
}

std::pair<Vec3, Vec3> WorldBox(const Objects& objects, const Object& object) {
  const Frame frame = WorldFrame(objects, object);
  const Asset* asset = FindAsset(object.fields.At("asset").text);
  if (asset == nullptr) return {frame.origin, frame.origin};
  const double far_away = std::numeric_limits<double>::max();
  Vec3 low{far_away, far_away, far_away};
  Vec3 high{-far_away, -far_away, -far_away};
  for (unsigned corner = 0; corner < 8; ++corner) {
    const Vec3 point =
        PointToWorld(frame, {(corner & 1U) != 0 ? asset->box_max.x : asset->box_min.x,
                             (corner & 2U) != 0 ? asset->box_max.y : asset->box_min.y,
                             (corner & 4U) != 0 ? asset->box_max.z : asset->box_min.z});
    low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
    high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
  }
  return {low, high};
}

bool Shown(const Objects& objects, const Object& object) {
  if (!object.fields.At("visible").boolean) return false;
  const ObjectPtr parent = Find(objects, object.Parent());
  return parent == nullptr || Shown(objects, *parent);
}

std::string HierarchyFault(const Objects& objects, const Object& object) {
  std::int64_t parent = object.Parent();
  for (int depth = 1; parent != 0; ++depth) {
    if (parent == object.id) return "o objeto ficaria dentro de si mesmo";
    if (depth == kMaxDepth)
      return "a hierarquia passaria de " + std::to_string(kMaxDepth) + " niveis";
    const ObjectPtr next = Find(objects, parent);
    if (next == nullptr) return "o pai " + std::to_string(parent) + " nao existe";
    parent = next->Parent();
  }
  return "";
}

Json ObjectJson(const Objects& objects, const Object& object, bool family) {
  Json json = Json::Object({{"id", object.id}, {"rev", object.rev}});
  for (const auto& [key, value] : object.fields.fields) json.Set(key, value);
  json.Set("position", VectorJson(WorldFrame(objects, object).origin));
  const auto [low, high] = WorldBox(objects, object);
  json.Set("box", Json::Object({{"min", VectorJson(low)}, {"max", VectorJson(high)}}));
  if (family) {
    Json& children = json.Set("children", Json::Array());
    for (const auto& [id, other] : objects)
      if (other->Parent() == object.id) children.Add(Json::Int(id));
    json.Set("joints", Json::Array());
  }
  return json;
}

Json DefaultFields() {
  return Json::Object({{"asset", ""},
                       {"name", ""},
                       {"parent", 0},
                       {"x", 0},
                       {"y", 0},
                       {"z", 0},
                       {"pitch", 0},
                       {"yaw", 0},
                       {"roll", 0},
                       {"scale_xyz", VectorJson({1, 1, 1})},
                       {"visible", true},
                       {"locked", false},
                       {"solid", true},
                       {"draw_distance", 0},
                       {"cast_shadow", true},
                       {"tint", Json::Array({1, 1, 1})},
                       {"color_variation", -1},
                       {"body", "none"},
                       {"mass", 1},
                       {"friction", 0.5},
                       {"restitution", 0}});
}

World MakeSampleWorld() {
  struct Seed {
    const char* asset;
    const char* name;
    std::int64_t parent;
    Vec3 position;
    double yaw;
    bool locked;
    bool visible;
  };
  // The bridge's asset is missing from the library on purpose: it shows in world_summary.
  static const Seed kSeeds[] = {
      {"zorvik_casa", "Casa do moinho", 0, {20, 0, -30}, 30, false, true},
      {"zorvik_telhado", "Telhado", 1, {0, 3, 0}, 0, false, true},
      {"zorvik_porta", "Porta da frente", 1, {0, 0, 3}, 0, false, true},
      {"zorvik_pinheiro", "Pinheiro alto", 0, {60, 0, 40}, 0, false, true},
      {"zorvik_pinheiro", "Pinheiro torto", 0, {72, 0, 48}, 15, false, true},
      {"zorvik_pinheiro", "Pinheiro do morro", 0, {-120, 0, -90}, 40, false, true},
      {"zorvik_carvalho", "Carvalho velho", 0, {-40, 0, 10}, 0, false, true},
      {"zorvik_rocha", "Marco de pedra", 0, {-150, 0, 160}, 0, true, true},
      {"zorvik_rocha", "Rocha", 0, {130, -0.2, -140}, 70, false, true},
      {"zorvik_cerca", "Cerca", 0, {30, 0, -20}, 90, false, true},
      {"zorvik_poco", "Poco escondido", 0, {35, 0, -42}, 0, false, false},
      {"zorvik_ponte_antiga", "Ponte antiga", 0, {-5, 0.5, 120}, 0, false, true},
  };
  World world;
  for (const Seed& seed : kSeeds) {
    const std::int64_t id = world.next_id++;
    Object object{id, DefaultFields(), world.revision, {"user", ""}};
    object.fields.Set("asset", Json::Text(seed.asset));
    object.fields.Set("name", Json::Text(seed.name));
    object.fields.Set("parent", Json::Int(seed.parent));
    object.fields.Set("x", Json::Number(seed.position.x));
    object.fields.Set("y", Json::Number(seed.position.y));
    object.fields.Set("z", Json::Number(seed.position.z));
    object.fields.Set("yaw", Json::Number(seed.yaw));
    object.fields.Set("locked", Json::Bool(seed.locked));
    object.fields.Set("visible", Json::Bool(seed.visible));
    world.objects[id] = std::make_shared<const Object>(std::move(object));
  }
  return world;
}

}  // namespace zorvik::sample_editor
