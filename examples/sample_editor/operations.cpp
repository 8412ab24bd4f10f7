#include "examples/sample_editor/operations.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "examples/sample_editor/errors.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

struct Row {
  const char* name;
  Operation operation;
};

constexpr Row kOperations[] = {
    {"world.capabilities", WorldCapabilities},
    {"world.info", WorldInfo},
    {"world.summary", WorldSummary},
    {"objects.query", ObjectsQuery},
    {"objects.get", ObjectsGet},
    {"terrain.sample", TerrainSample},
    {"water.list", WaterList},
    {"objects.create", ChangeObjects},
    {"objects.update", ChangeObjects},
    {"objects.delete", ChangeObjects},
    {"objects.duplicate", ChangeObjects},
    {"inspect.capture", InspectCapture},
    {"history.list", HistoryList},
    {"history.undo", HistoryUndo},
    {"history.redo", HistoryRedo},
    {"history.revert", HistoryRevert},
    {"history.checkpoint", HistoryCheckpoint},
    {"history.restore", HistoryRestore},
    {"jobs.list", JobsList},
    {"jobs.get", JobById},
    {"jobs.cancel", JobById},
    {"batch.apply", BatchApply},
};

}  // namespace

bool RunOperation(World& world, const Call& call, Json& result, Json& error) {
  for (const Row& row : kOperations) {
    if (call.operation != row.name) continue;
    // The server has checked this already, but whoever has the token can write to the pipe, and the
    // operations take the shape of their arguments for granted.
    std::string field;
    std::string reason;
    const authoring::ToolSpec* tool = authoring::FindOperation(call.operation);
    if (!authoring::Validate(tool->input, call.args, field, reason)) {
      error = InvalidArgument(field, reason);
      return false;
    }
    return row.operation(world, call, result, error);
  }
  error =
      authoring::ErrorBody("unsupported", "Este editor nao tem a operacao " + call.operation + ".",
                           "world_capabilities mostra as operacoes deste editor.", Json());
  return false;
}

bool ReadCursor(const Json& args, std::int64_t& value, Json& error) {
  if (!args.Has("cursor")) return true;
  const std::string& cursor = args.At("cursor").text;
  const char* const end = cursor.data() + cursor.size();
  const auto [stop, fault] = std::from_chars(cursor.data(), end, value);
  if (stop == end && fault == std::errc()) return true;
  error = InvalidArgument("cursor", "nao e o next_cursor de uma pagina");
  return false;
}

std::vector<std::string> SupportedOperations() {
  std::vector<std::string> names;
  for (const Row& row : kOperations) names.emplace_back(row.name);
  return names;
}

}  // namespace zorvik::sample_editor
