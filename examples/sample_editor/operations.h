#pragma once

#include <string>
#include <vector>

#include "core/json.h"
#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {

// One request, as the operations see it.
struct Call {
  std::string operation;
  core::Json args;
  Author author;
};

// Fills the members of `result` and returns true, or changes nothing and fills `error`.
using Operation = bool (*)(World& world, const Call& call, core::Json& result, core::Json& error);

// Finds the operation, checks the arguments against the catalog and runs it.
bool RunOperation(World& world, const Call& call, core::Json& result, core::Json& error);
// Reads the number in `args.cursor`, and leaves `value` alone when there is none.
bool ReadCursor(const core::Json& args, std::int64_t& value, core::Json& error);
// The operations that this editor has.
std::vector<std::string> SupportedOperations();

bool WorldCapabilities(World& world, const Call& call, core::Json& result, core::Json& error);
bool WorldInfo(World& world, const Call& call, core::Json& result, core::Json& error);
bool WorldSummary(World& world, const Call& call, core::Json& result, core::Json& error);
bool ObjectsQuery(World& world, const Call& call, core::Json& result, core::Json& error);
bool ObjectsGet(World& world, const Call& call, core::Json& result, core::Json& error);
bool TerrainSample(World& world, const Call& call, core::Json& result, core::Json& error);
bool WaterList(World& world, const Call& call, core::Json& result, core::Json& error);
bool InspectCapture(World& world, const Call& call, core::Json& result, core::Json& error);
// Any of the objects_* operations, as a transaction of its own.
bool ChangeObjects(World& world, const Call& call, core::Json& result, core::Json& error);
bool BatchApply(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryList(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryUndo(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryRedo(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryRevert(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryCheckpoint(World& world, const Call& call, core::Json& result, core::Json& error);
bool HistoryRestore(World& world, const Call& call, core::Json& result, core::Json& error);
bool JobsList(World& world, const Call& call, core::Json& result, core::Json& error);
// Serves jobs.get and jobs.cancel.
bool JobById(World& world, const Call& call, core::Json& result, core::Json& error);

}  // namespace zorvik::sample_editor
