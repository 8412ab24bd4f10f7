#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/json.h"
#include "examples/sample_editor/geometry.h"

// What the sample editor keeps in memory, and how a client sees it.
namespace zorvik::sample_editor {

inline constexpr std::size_t kMaxObjects = 2000;
inline constexpr int kMaxDepth = 8;

struct Author {
  std::string kind;    // "user" or "agent".
  std::string client;  // Which agent; empty for the user.

  bool operator==(const Author&) const = default;
};

// A placed object. It is never changed: a change puts another one in its place, so that the history
// can hold the states before and after without copying the world.
struct Object {
  std::int64_t id = 0;
  core::Json fields;     // Everything that a client can set, under the names that it uses for it.
  std::int64_t rev = 0;  // The world revision of the last change.
  Author author;         // Who made it.

  std::int64_t Parent() const { return fields.At("parent").IntOr(0); }
  bool Locked() const { return fields.At("locked").boolean; }
};

using ObjectPtr = std::shared_ptr<const Object>;
using Objects = std::map<std::int64_t, ObjectPtr>;

// The object of that id, or null.
ObjectPtr Find(const Objects& objects, std::int64_t id);
// The objects of these ids and all that hang below them, ascending and each once.
std::vector<std::int64_t> WithDescendants(const Objects& objects,
                                          const std::vector<std::int64_t>& ids);
Frame WorldFrame(const Objects& objects, const Object& object);
// The corners of the box around the object in the world.
std::pair<Vec3, Vec3> WorldBox(const Objects& objects, const Object& object);
// Visible, and so are all above it.
bool Shown(const Objects& objects, const Object& object);
// What is wrong with the object's place in the hierarchy; empty when nothing is.
std::string HierarchyFault(const Objects& objects, const Object& object);

// The object as objects_query shows it; `family` adds children and joints, as in objects_get.
core::Json ObjectJson(const Objects& objects, const Object& object, bool family);
// The fields of an object of which nothing was said.
core::Json DefaultFields();

// One object that a transaction touched. A null pointer stands for no object.
struct Touch {
  std::int64_t id = 0;
  ObjectPtr before;
  ObjectPtr after;
};

enum class TransactionKind : std::uint8_t { Edit, Undo, Redo, Revert, Restore };

struct Transaction {
  std::int64_t id = 0;  // Its place in the history, from 1.
  TransactionKind kind = TransactionKind::Edit;
  Author author;
  std::string label;
  std::string group;
  std::int64_t revision = 0;  // The world's, once it was applied.
  std::vector<Touch> touches;
  bool undone = false;  // Taken back by an undo step, and not brought again since.
};

struct World {
  std::int64_t revision = 1;
  std::int64_t next_id = 1;  // Ids of objects are never used again.
  Objects objects;
  std::vector<Transaction> transactions;
  std::vector<std::int64_t> undo_stack;  // Ids of transactions, newest last.
  std::vector<std::int64_t> redo_stack;
  std::vector<std::pair<std::string, std::int64_t>> checkpoints;  // Name and revision.
};

// The little world that every sample editor opens with.
World MakeSampleWorld();

}  // namespace zorvik::sample_editor
