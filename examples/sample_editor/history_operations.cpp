#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "authoring/catalog.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/transactions.h"

namespace zorvik::sample_editor {

using authoring::ErrorBody;
using core::Json;

namespace {

constexpr std::size_t kMaxCheckpoints = 256;

const Transaction& ById(const World& world, std::int64_t id) {
  return world.transactions[static_cast<std::size_t>(id - 1)];
}

Json Head(const World& world, const std::vector<std::int64_t>& stack) {
  return stack.empty() ? Json() : TransactionJson(ById(world, stack.back()));
}

std::set<std::int64_t> Touched(const Transaction& transaction) {
  std::set<std::int64_t> ids;
  for (const Touch& touch : transaction.touches) ids.insert(touch.id);
  return ids;
}

// Moves one step along the shared history, if that step is the caller's kind of author's.
bool Step(World& world, const Call& call, TransactionKind kind, Json& result, Json& error) {
  const bool undo = kind == TransactionKind::Undo;
  std::vector<std::int64_t>& from = undo ? world.undo_stack : world.redo_stack;
  std::vector<std::int64_t>& to = undo ? world.redo_stack : world.undo_stack;
  if (from.empty()) {
    error = ErrorBody(undo ? "nothing_to_undo" : "nothing_to_redo",
                      undo ? "Nao ha transacao a desfazer." : "Nao ha passo a refazer.",
                      "history_list mostra o que Desfazer e Refazer fariam.", Json());
    return false;
  }
  const Transaction step = ById(world, from.back());
  if (step.author.kind != call.author.kind) {
    error = Conflict("A transacao mais recente (" + step.label + ") e de outro autor.",
                     ChangedList(world, Touched(step)));
    error.Set("hint",
              Json::Text("Use history_revert para desfazer uma transacao sua mais antiga."));
    return false;
  }
  Draft draft;
  if (!OpenDraft(world, call, draft, error)) return false;
  for (const Touch& touch : step.touches) {
    const ObjectPtr& state = undo ? touch.before : touch.after;
    if (state == nullptr)
      draft.objects.erase(touch.id);
    else
      Put(draft, *state);
  }
  if (draft.label.empty()) draft.label = (undo ? "Desfazer: " : "Refazer: ") + step.label;
  to.push_back(step.id);
  from.pop_back();
  world.transactions[static_cast<std::size_t>(step.id - 1)].undone = undo;
  const Transaction& made = Commit(world, std::move(draft), kind);
  result = Json::Object({{undo ? "undone" : "redone", TransactionJson(ById(world, step.id))},
                         {"transaction", TransactionJson(made)}});
  return true;
}

// Ends a selective undoing: refuses it when something stands in its way.
bool FinishInversion(World& world, Draft draft, TransactionKind kind,
                     std::set<std::int64_t> changed, Json& result, Json& error) {
  // An object can be as it was left and yet not go back, because what hung above or below it has
  // changed.
  for (const auto& [id, object] : draft.objects)
    if (!HierarchyFault(draft.objects, *object).empty()) changed.insert(id);
  if (!changed.empty()) {
    error = Conflict("Elementos foram mudados depois; nada foi revertido.",
                     ChangedList(world, changed));
    return false;
  }
  result.Set("transaction", TransactionJson(Commit(world, std::move(draft), kind)));
  return true;
}

}  // namespace

bool HistoryList(World& world, const Call& call, Json& result, Json& error) {
  std::int64_t before = static_cast<std::int64_t>(world.transactions.size()) + 1;
  if (!ReadCursor(call.args, before, error)) return false;
  const auto limit = static_cast<std::size_t>(call.args.At("limit").IntOr(50));
  Json page = Json::Array();
  bool more = false;
  for (auto entry = world.transactions.rbegin(); entry != world.transactions.rend(); ++entry) {
    if (entry->id >= before) continue;
    if (entry->author.kind != call.args.At("author").TextOr(entry->author.kind)) continue;
    if (entry->group != call.args.At("group").TextOr(entry->group)) continue;
    more = page.items.size() == limit;
    if (more) break;
    page.Add(TransactionJson(*entry));
  }
  std::string next;
  if (more) next = std::to_string(page.items.back().At("id").IntOr(0));
  Json checkpoints = Json::Array();
  for (const auto& [name, revision] : world.checkpoints)
    checkpoints.Add(Json::Object({{"name", name}, {"revision", revision}}));
  result = Json::Object({{"transactions", std::move(page)},
                         {"undo", Head(world, world.undo_stack)},
                         {"redo", Head(world, world.redo_stack)},
                         {"checkpoints", std::move(checkpoints)},
                         {"oldest_revision", 1}});
  if (more) result.Set("next_cursor", Json::Text(next));
  return true;
}

bool HistoryUndo(World& world, const Call& call, Json& result, Json& error) {
  return Step(world, call, TransactionKind::Undo, result, error);
}

bool HistoryRedo(World& world, const Call& call, Json& result, Json& error) {
  return Step(world, call, TransactionKind::Redo, result, error);
}

bool HistoryRevert(World& world, const Call& call, Json& result, Json& error) {
  const std::int64_t id = call.args.At("transaction").IntOr(0);
  if (id > static_cast<std::int64_t>(world.transactions.size())) {
    error = ErrorBody("not_found", "A transacao " + std::to_string(id) + " nao existe.",
                      "history_list mostra as transacoes.", Json());
    return false;
  }
  const Transaction old = ById(world, id);
  if (old.author.kind != call.author.kind) {
    error = Conflict("A transacao " + std::to_string(id) + " e de outro autor.",
                     ChangedList(world, Touched(old)));
    return false;
  }
  Draft draft;
  if (!OpenDraft(world, call, draft, error)) return false;
  if (draft.label.empty()) draft.label = "Reverter: " + old.label;
  std::set<std::int64_t> changed;
  Invert(draft, old, changed);
  result.Set("reverted", TransactionJson(old));
  return FinishInversion(world, std::move(draft), TransactionKind::Revert, std::move(changed),
                         result, error);
}

bool HistoryCheckpoint(World& world, const Call& call, Json& result, Json& error) {
  const std::string& name = call.args.At("name").text;
  std::erase_if(world.checkpoints, [&](const auto& mark) { return mark.first == name; });
  if (world.checkpoints.size() == kMaxCheckpoints) {
    error = ErrorBody("limit_exceeded", "Ja ha 256 pontos marcados.",
                      "Marque de novo um dos nomes de history_list.", Json());
    return false;
  }
  world.checkpoints.emplace_back(name, world.revision);
  result.Set("checkpoint", Json::Object({{"name", name}, {"revision", world.revision}}));
  return true;
}

bool HistoryRestore(World& world, const Call& call, Json& result, Json& error) {
  const std::string& name = call.args.At("name").text;
  const auto mark = std::find_if(world.checkpoints.begin(), world.checkpoints.end(),
                                 [&](const auto& entry) { return entry.first == name; });
  if (mark == world.checkpoints.end()) {
    error = ErrorBody("not_found", "Nao ha um ponto marcado com o nome " + name + ".",
                      "history_list mostra os pontos em checkpoints.", Json());
    return false;
  }
  Draft draft;
  if (!OpenDraft(world, call, draft, error)) return false;
  if (draft.label.empty()) draft.label = "Voltar a " + name;
  // Undo steps and reverts are in the list like all else: taken back in their turn, they cancel out
  // with what they had undone.
  std::set<std::int64_t> changed;
  Json reverted = Json::Array();
  for (auto entry = world.transactions.rbegin(); entry != world.transactions.rend(); ++entry) {
    if (entry->revision <= mark->second) break;
    if (entry->author.kind != "agent") continue;
    Invert(draft, *entry, changed);
    reverted.Add(Json::Int(entry->id));
  }
  result.Set("reverted", std::move(reverted));
  return FinishInversion(world, std::move(draft), TransactionKind::Restore, std::move(changed),
                         result, error);
}

// This editor does all work at once, so that no job ever comes about.
bool JobsList(World& /*world*/, const Call& /*call*/, Json& result, Json& /*error*/) {
  result = Json::Object({{"jobs", Json::Array()}, {"active", 0}});
  return true;
}

bool JobById(World& /*world*/, const Call& call, Json& /*result*/, Json& error) {
  const std::int64_t id = call.args.At("job_id").IntOr(0);
  error = ErrorBody("not_found", "O job " + std::to_string(id) + " nao existe.",
                    "Este editor faz tudo na hora e nao tem jobs; veja history_list.", Json());
  return false;
}

}  // namespace zorvik::sample_editor
