#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/world.h"

// How a change comes about: it is made on a draft, and only a draft that is whole enters the world.
namespace zorvik::sample_editor {

struct Draft {
  const World* world = nullptr;  // As it was before.
  Author author;
  std::string label;
  std::string group;
  std::int64_t base_revision = -1;  // What the author has read; -1 when it didn't tell.
  std::int64_t revision = 0;        // What the world will have afterwards.
  std::int64_t next_id = 0;
  Objects objects;
  std::map<std::string, std::int64_t> refs;  // Names that the call gave to objects it created.
};

// Starts a draft for that call.
bool OpenDraft(const World& world, const Call& call, Draft& draft, core::Json& error);
// Puts the object into the draft, as changed by the draft's author.
void Put(Draft& draft, Object object);
// Puts the draft in the world's place, and the transaction into its history.
const Transaction& Commit(World& world, Draft draft, TransactionKind kind);

// The newest change to that object by somebody else than the draft's author since its
// base_revision, or null.
const Transaction* ForeignChange(const Draft& draft, std::int64_t id);
// The list of a conflict: what has become of these objects, and by whom.
core::Json ChangedList(const World& world, const std::set<std::int64_t>& ids);

// Takes back what the transaction did to the draft's objects. An object that isn't as the
// transaction left it is not touched, and its id goes into `changed`.
void Invert(Draft& draft, const Transaction& transaction, std::set<std::int64_t>& changed);

core::Json TransactionJson(const Transaction& transaction);

}  // namespace zorvik::sample_editor
