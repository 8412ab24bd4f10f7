#include "examples/sample_editor/object_operations.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "examples/sample_editor/assets.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/overlaps.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr double kMinRootHeight = -0.5;
constexpr double kMaxRootHeight = 15;
constexpr const char* kRootHeightReason =
    "a altura de uma raiz sobre o chao deveria ficar de -0,5 a 15 m";
constexpr double kMinScale = 0.1;
constexpr double kMaxScale = 4;

void SetLabel(Draft& draft, const std::string& verb, std::size_t count) {
  if (!draft.label.empty()) return;
  draft.label = verb + " " + std::to_string(count) + (count == 1 ? " objeto" : " objetos");
}

// Fields of which an item may hold only one of each pair, since they say the same thing.
std::string DoubledField(const Json& item) {
  static const std::pair<const char*, const char*> kPairs[] = {
      {"parent", "parent_ref"}, {"scale", "scale_xyz"}, {"tint", "tint_hex"}};
  for (const auto& [one, other] : kPairs)
    if (item.Has(one) && item.Has(other)) return other;
  return "";
}

double LinearLight(unsigned long channel) {
  const double value = static_cast<double>(channel) / 255;
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

bool ReadTint(const std::string& hex, Json& tint) {
  if (hex[0] != '#' || hex.find_first_not_of("0123456789abcdefABCDEF", 1) != std::string::npos)
    return false;
  tint = Json::Array();
  for (std::size_t at = 1; at < hex.size(); at += 2)
    tint.Add(Json::Number(LinearLight(std::strtoul(hex.substr(at, 2).c_str(), nullptr, 16))));
  return true;
}

void AddTo(Json& fields, const char* key, double amount) {
  fields.Set(key, Json::Number(fields.At(key).number + amount));
}

bool RootHeightFits(const Object& object) {
  const double height = object.fields.At("y").number;
  return object.Parent() != 0 || (height >= kMinRootHeight && height <= kMaxRootHeight);
}

// Carries the fields of one item over to the object. On a fault `field` and `reason` tell it.
bool ApplyFields(const Draft& draft, const Json& item, Object& object, std::string& field,
                 std::string& reason) {
  field = DoubledField(item);
  reason = "repete o que outro campo do item ja diz";
  if (!field.empty()) return false;

  Json& fields = object.fields;
  for (const auto& [key, value] : item.fields)
    if (fields.Has(key) && key != "scale_xyz") fields.Set(key, value);
  if (item.Has("scale")) {
    const double scale = item.At("scale").number;
    fields.Set("scale_xyz", VectorJson({scale, scale, scale}));
  }
  const Vec3 scale = ReadVector(item.At("scale_xyz"), ReadVector(fields.At("scale_xyz"), {}));
  fields.Set("scale_xyz", VectorJson(scale));
  if (item.Has("parent_ref")) {
    const auto ref = draft.refs.find(item.At("parent_ref").text);
    field = "parent_ref";
    reason = "nenhum objeto do pedido tem este ref";
    if (ref == draft.refs.end()) return false;
    fields.Set("parent", Json::Int(ref->second));
  }
  for (const char* key : {"x", "y", "z"}) AddTo(fields, key, item.At("move_by").At(key).number);
  for (const char* key : {"pitch", "yaw", "roll"})
    AddTo(fields, key, item.At("rotate_by").At(key).number);
  if (item.Has("y_mode") && item.Has("y") && item.At("y_mode").text == "absolute")
    AddTo(fields, "y", -GroundHeight(fields.At("x").number, fields.At("z").number));

  field = "asset";
  reason = "nao esta na biblioteca; ela tem:";
  for (const Asset& asset : Library()) reason += std::string(" ") + asset.id;
  if (item.Has("asset") && FindAsset(item.At("asset").text) == nullptr) return false;
  Json tint;
  field = "tint_hex";
  reason = "deveria ser uma cor #rrggbb";
  if (item.Has("tint_hex") && !ReadTint(item.At("tint_hex").text, tint)) return false;
  if (item.Has("tint_hex")) fields.Set("tint", std::move(tint));
  field = "scale_xyz";
  reason = "cada eixo deveria ficar de 0,1 a 4";
  for (const double axis : {scale.x, scale.y, scale.z})
    if (axis < kMinScale || axis > kMaxScale) return false;
  field = "y_mode";
  reason = "vale so para raizes";
  if (object.Parent() != 0 && item.Has("y_mode")) return false;
  field = "y";
  reason = kRootHeightReason;
  return RootHeightFits(object);
}

// Refuses a draft whose hierarchy broke. `items` tells which item of `list` put which object.
bool CheckHierarchy(const Draft& draft, const std::string& list,
                    const std::map<std::int64_t, std::size_t>& items, Json& error) {
  for (const auto& [id, object] : draft.objects) {
    const std::string fault = HierarchyFault(draft.objects, *object);
    if (fault.empty()) continue;
    // A deep branch can break because of an item that moved an ancestor: name that one.
    std::int64_t blamed = id;
    for (int step = 0; step <= kMaxDepth && !items.contains(blamed); ++step) {
      const ObjectPtr at = Find(draft.objects, blamed);
      if (at == nullptr || at->Parent() == 0) break;
      blamed = at->Parent();
    }
    const auto item = items.find(blamed);
    error = InvalidItem(list, item == items.end() ? 0 : item->second, "parent", fault);
    return false;
  }
  return true;
}

bool CheckRoom(const Draft& draft, const std::string& list, std::size_t index, Json& error) {
  if (draft.objects.size() <= kMaxObjects) return true;
  error = InvalidItem(list, index, "",
                      "o mundo ja tem o limite de " + std::to_string(kMaxObjects) + " objetos");
  return false;
}

// Fails without a base_revision, and when somebody else changed one of these objects after it.
bool CheckUnchanged(const Draft& draft, const std::vector<std::int64_t>& ids, Json& error) {
  if (draft.base_revision < 0) {
    error = authoring::ErrorBody(
        "base_revision_required", "Alterar ou excluir exige base_revision, a revisao que voce leu.",
        "Leia world_info ou objects_query e passe a revision deles.", Json());
    return false;
  }
  std::set<std::int64_t> changed;
  for (const std::int64_t id : ids)
    if (ForeignChange(draft, id) != nullptr) changed.insert(id);
  if (changed.empty()) return true;
  error = Conflict("Outro autor mudou os mesmos objetos depois da revisao " +
                       std::to_string(draft.base_revision) + "; nada foi aplicado.",
                   ChangedList(*draft.world, changed));
  return false;
}

bool CheckExist(const Draft& draft, const std::string& list, const std::vector<std::int64_t>& ids,
                Json& error) {
  for (std::size_t index = 0; index < ids.size(); ++index) {
    if (Find(draft.objects, ids[index]) != nullptr) continue;
    error = ItemError("not_found", list, index, ids[index],
                      "O objeto " + std::to_string(ids[index]) + " nao existe.",
                      "objects_query mostra os objetos do mundo.");
    return false;
  }
  return true;
}

// As the author can have read it. What the call itself did to it before this item doesn't count.
ObjectPtr ObjectAsRead(const Draft& draft, std::int64_t id) {
  const ObjectPtr before = Find(draft.world->objects, id);
  return before != nullptr ? before : Find(draft.objects, id);
}

Json LockedError(const std::string& list, std::size_t index, std::int64_t id) {
  return ItemError("locked", list, index, id, "O objeto " + std::to_string(id) + " esta travado.",
                   "Objetos travados nao mudam; escolha outro ou peca a pessoa.");
}

std::vector<std::int64_t> ReadIds(const Json& list) {
  std::vector<std::int64_t> ids;
  for (const Json& item : list.items) ids.push_back(item.IntOr(0));
  return ids;
}

bool CreateObjects(Draft& draft, const Json& args, Json& result, Json& error) {
  const auto& items = args.At("objects").items;
  std::map<std::int64_t, std::size_t> made;
  std::vector<std::int64_t> ids;
  // All names first, so that an item can hang below one that comes after it.
  for (std::size_t index = 0; index < items.size(); ++index) {
    ids.push_back(draft.next_id++);
    made[ids[index]] = index;
    if (items[index].Has("ref") &&
        !draft.refs.emplace(items[index].At("ref").text, ids[index]).second) {
      error = InvalidItem("objects", index, "ref", "ja e o nome de outro objeto do pedido");
      return false;
    }
  }
  for (std::size_t index = 0; index < items.size(); ++index) {
    Object object{ids[index], DefaultFields(), 0, {}};
    std::string field;
    std::string reason;
    if (!ApplyFields(draft, items[index], object, field, reason)) {
      error = InvalidItem("objects", index, field, reason);
      return false;
    }
    Put(draft, std::move(object));
    if (!CheckRoom(draft, "objects", index, error)) return false;
  }
  if (!CheckHierarchy(draft, "objects", made, error)) return false;

  Json& created = result.Set("created", Json::Array());
  for (std::size_t index = 0; index < items.size(); ++index) {
    Json& entry = created.Add(Json::Object({{"id", ids[index]}}));
    if (items[index].Has("ref")) entry.Set("ref", items[index].At("ref"));
  }
  Json& objects = result.Set("objects", Json::Array());
  for (const std::int64_t id : ids)
    objects.Add(ObjectJson(draft.objects, *Find(draft.objects, id), true));
  SetLabel(draft, "Criar", ids.size());
  return true;
}

bool UpdateObjects(Draft& draft, const Json& args, Json& result, Json& error) {
  const auto& items = args.At("updates").items;
  std::map<std::int64_t, std::size_t> moved;
  std::vector<std::int64_t> ids;
  ids.reserve(items.size());
  for (const Json& item : items) ids.push_back(item.At("id").IntOr(0));
  if (!CheckUnchanged(draft, ids, error) || !CheckExist(draft, "updates", ids, error)) return false;
  std::set<std::int64_t> changed;
  for (std::size_t index = 0; index < items.size(); ++index) {
    const std::int64_t rev = ObjectAsRead(draft, ids[index])->rev;
    if (items[index].At("if_rev").IntOr(rev) != rev) changed.insert(ids[index]);
  }
  if (!changed.empty()) {
    error = Conflict("O rev de if_rev nao e mais o do objeto; nada foi aplicado.",
                     ChangedList(*draft.world, changed));
    return false;
  }
  for (std::size_t index = 0; index < items.size(); ++index) {
    Object object = *Find(draft.objects, ids[index]);
    if (ObjectAsRead(draft, object.id)->Locked()) {
      error = LockedError("updates", index, object.id);
      return false;
    }
    std::string field;
    std::string reason;
    if (!ApplyFields(draft, items[index], object, field, reason)) {
      error = InvalidItem("updates", index, field, reason);
      return false;
    }
    moved[object.id] = index;
    Put(draft, std::move(object));
  }
  if (!CheckHierarchy(draft, "updates", moved, error)) return false;
  Json& objects = result.Set("objects", Json::Array());
  for (const auto& [id, index] : moved)
    objects.Add(ObjectJson(draft.objects, *Find(draft.objects, id), true));
  SetLabel(draft, "Alterar", moved.size());
  return true;
}

bool DeleteObjects(Draft& draft, const Json& args, Json& result, Json& error) {
  const std::vector<std::int64_t> ids = ReadIds(args.At("ids"));
  const std::vector<std::int64_t> all = WithDescendants(draft.objects, ids);
  if (!CheckUnchanged(draft, all, error) || !CheckExist(draft, "ids", ids, error)) return false;
  for (std::size_t index = 0; index < ids.size(); ++index) {
    for (const std::int64_t id : WithDescendants(draft.objects, {ids[index]})) {
      if (!ObjectAsRead(draft, id)->Locked()) continue;
      error = LockedError("ids", index, id);
      return false;
    }
  }
  Json& deleted = result.Set("deleted", Json::Array());
  for (const std::int64_t id : all) {
    draft.objects.erase(id);
    deleted.Add(Json::Int(id));
  }
  SetLabel(draft, "Excluir", all.size());
  return true;
}

bool DuplicateObjects(Draft& draft, const Json& args, Json& result, Json& error) {
  const std::vector<std::int64_t> ids = ReadIds(args.At("ids"));
  // A copy changes nothing that exists, so what others changed since doesn't matter.
  if (!CheckExist(draft, "ids", ids, error)) return false;
  const Vec3 offset = args.Has("offset") ? ReadVector(args.At("offset"), {}) : Vec3{2, 0, 0};
  std::map<std::int64_t, std::int64_t> copies;
  for (const std::int64_t id : WithDescendants(draft.objects, ids)) copies[id] = draft.next_id++;
  const Objects before = draft.objects;
  Json& list = result.Set("copies", Json::Array());
  for (const auto& [from, id] : copies) {
    Object copy = *Find(before, from);
    copy.id = id;
    if (copies.contains(copy.Parent())) {
      copy.fields.Set("parent", Json::Int(copies.at(copy.Parent())));
    } else {
      // A root keeps its height above the ground; a child is displaced in its parent's space.
      const ObjectPtr parent = Find(before, copy.Parent());
      const Vec3 shift =
          parent == nullptr ? offset : DirectionToLocal(WorldFrame(before, *parent), offset);
      AddTo(copy.fields, "x", shift.x);
      AddTo(copy.fields, "y", shift.y);
      AddTo(copy.fields, "z", shift.z);
    }
    if (!RootHeightFits(copy)) {
      error = InvalidArgument("offset", kRootHeightReason);
      return false;
    }
    Put(draft, std::move(copy));
    list.Add(Json::Object({{"from", from}, {"id", id}}));
  }
  SetLabel(draft, "Duplicar", copies.size());
  return CheckRoom(draft, "ids", ids.size() - 1, error);
}

}  // namespace

ObjectChange FindObjectChange(std::string_view operation) {
  if (operation == "objects.create") return CreateObjects;
  if (operation == "objects.update") return UpdateObjects;
  if (operation == "objects.delete") return DeleteObjects;
  if (operation == "objects.duplicate") return DuplicateObjects;
  return nullptr;
}

bool ChangeObjects(World& world, const Call& call, Json& result, Json& error) {
  Draft draft;
  if (!OpenDraft(world, call, draft, error)) return false;
  if (!FindObjectChange(call.operation)(draft, call.args, result, error)) return false;
  WarnOfOverlaps(draft, result);
  const Transaction& transaction = Commit(world, std::move(draft), TransactionKind::Edit);
  result.Set("transaction", TransactionJson(transaction));
  return true;
}

}  // namespace zorvik::sample_editor
