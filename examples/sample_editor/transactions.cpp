#include "examples/sample_editor/transactions.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "examples/sample_editor/errors.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

bool SameState(const ObjectPtr& a, const ObjectPtr& b) {
  if (a == nullptr || b == nullptr) return a == b;
  return a == b || core::WriteJson(a->fields) == core::WriteJson(b->fields);
}

bool Touches(const Transaction& transaction, std::int64_t id) {
  return std::any_of(
      transaction.touches.begin(), transaction.touches.end(),
      [&](const Touch& touch) { return touch.id == id; });
}

// What differs between two states of the world. Objects are never changed in place, so comparing
// pointers tells it.
std::vector<Touch> Differences(const Objects& before, const Objects& after) {
  std::vector<Touch> touches;
  for (const auto& [id, object] : before) {
    const ObjectPtr now = Find(after, id);
    if (now != object) touches.push_back({id, object, now});
  }
  for (const auto& [id, object] : after)
    if (!before.contains(id)) touches.push_back({id, nullptr, object});
  return touches;
}

Json ChangedEntry(const World& world, std::int64_t id) {
  const auto last = std::find_if(world.transactions.rbegin(), world.transactions.rend(),
                                 [&](const Transaction& entry) { return Touches(entry, id); });
  const ObjectPtr object = Find(world.objects, id);
  Author author{"user", ""};
  std::int64_t rev = 1;
  if (object != nullptr) {
    author = object->author;
    rev = object->rev;
  } else if (last != world.transactions.rend()) {
    author = last->author;
    rev = last->revision;
  }
  Json entry = Json::Object({{"id", id}, {"rev", rev}, {"author", author.kind}});
  if (!author.client.empty()) entry.Set("client", Json::Text(author.client));
  if (object == nullptr) entry.Set("deleted", Json::Bool(true));
  return entry;
}

}  // namespace

bool OpenDraft(const World& world, const Call& call, Draft& draft, Json& error) {
  draft.world = &world;
  draft.author = call.author;
  draft.label = call.args.At("label").text;
  draft.group = call.args.At("group").text;
  draft.base_revision = call.args.At("base_revision").IntOr(-1);
  draft.revision = world.revision + 1;
  draft.next_id = world.next_id;
  draft.objects = world.objects;
  if (draft.base_revision > world.revision) {
    error = InvalidArgument("base_revision",
                            "o mundo ainda esta na revisao " + std::to_string(world.revision));
    return false;
  }
  return true;
}

void Put(Draft& draft, Object object) {
  const std::int64_t id = object.id;
  object.rev = draft.revision;
  object.author = draft.author;
  draft.objects[id] = std::make_shared<const Object>(std::move(object));
}

const Transaction& Commit(World& world, Draft draft, TransactionKind kind) {
  Transaction transaction;
  transaction.id = static_cast<std::int64_t>(world.transactions.size()) + 1;
  transaction.kind = kind;
  transaction.author = std::move(draft.author);
  transaction.label = std::move(draft.label);
  transaction.group = std::move(draft.group);
  transaction.revision = draft.revision;
  transaction.touches = Differences(world.objects, draft.objects);
  world.objects = std::move(draft.objects);
  world.next_id = draft.next_id;
  world.revision = draft.revision;
  // Undo and Redo move along the stacks; everything else is a new step.
  if (kind != TransactionKind::Undo && kind != TransactionKind::Redo) {
    world.undo_stack.push_back(transaction.id);
    world.redo_stack.clear();
  }
  world.transactions.push_back(std::move(transaction));
  return world.transactions.back();
}

const Transaction* ForeignChange(const Draft& draft, std::int64_t id) {
  const std::vector<Transaction>& all = draft.world->transactions;
  for (auto entry = all.rbegin(); entry != all.rend(); ++entry) {
    if (entry->revision <= draft.base_revision) break;
    if (!(entry->author == draft.author) && Touches(*entry, id)) return &*entry;
  }
  return nullptr;
}

Json ChangedList(const World& world, const std::set<std::int64_t>& ids) {
  Json list = Json::Array();
  for (const std::int64_t id : ids) list.Add(ChangedEntry(world, id));
  return list;
}

void Invert(Draft& draft, const Transaction& transaction, std::set<std::int64_t>& changed) {
  for (const Touch& touch : transaction.touches)
    if (!SameState(Find(draft.objects, touch.id), touch.after))
      changed.insert(touch.id);
    else if (touch.before == nullptr)
      draft.objects.erase(touch.id);
    else
      Put(draft, *touch.before);
}

Json TransactionJson(const Transaction& transaction) {
  static const char* const kKinds[] = {"edit", "undo", "redo", "revert", "restore"};
  Json json = Json::Object({{"id", transaction.id},
                            {"kind", kKinds[static_cast<std::size_t>(transaction.kind)]},
                            {"author", transaction.author.kind}});
  if (!transaction.author.client.empty()) json.Set("client", Json::Text(transaction.author.client));
  json.Set("label", Json::Text(transaction.label));
  if (!transaction.group.empty()) json.Set("group", Json::Text(transaction.group));
  json.Set("base_revision", Json::Int(transaction.revision - 1));
  json.Set("revision", Json::Int(transaction.revision));
  json.Set("undone", Json::Bool(transaction.undone));
  Json& elements = json.Set("elements", Json::Array());
  for (const Touch& touch : transaction.touches) {
    const char* change = touch.before == nullptr  ? "created"
                         : touch.after == nullptr ? "deleted"
                                                  : "changed";
    elements.Add(Json::Object({{"type", "object"}, {"id", touch.id}, {"change", change}}));
  }
  return json;
}

}  // namespace zorvik::sample_editor
