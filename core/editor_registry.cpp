#include "core/editor_registry.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "core/json.h"
#include "core/platform/files.h"
#include "core/platform/pipes.h"
#include "core/platform/process.h"
#include "core/process.h"

namespace zorvik::core {
namespace {

std::filesystem::path Folder() {
  return McpHome() / "editors";
}

std::string RecordName(std::uint32_t pid) {
  return std::to_string(pid) + ".json";
}

// The names of the record files that stand in the folder now, in path order.
std::vector<std::filesystem::path> RecordFiles(const platform::TrustedFolder& folder) {
  std::vector<std::filesystem::path> files = folder.Names();
  std::erase_if(files, [](const auto& name) { return name.extension() != ".json"; });
  std::sort(files.begin(), files.end());
  return files;
}

// What the file says, or nothing if it is no record with which an editor could be reached.
std::optional<EditorRecord> ReadRecord(const platform::TrustedFolder& folder,
                                       const std::filesystem::path& file) {
  std::string text;
  Json json;
  std::string error;
  if (!folder.Read(file, text) || !ParseJson(text, json, error)) return std::nullopt;
  EditorRecord record;
  record.editor_id = json.At("editor_id").TextOr("");
  record.pipe = json.At("pipe").TextOr("");
  record.token = json.At("token").TextOr("");
  record.bridge = json.At("bridge").TextOr("");
  record.engine_version = json.At("engine_version").TextOr("");
  record.project = json.At("project").TextOr("");
  record.project_name = json.At("project_name").TextOr("");
  record.world = json.At("world").TextOr("");
  record.world_id = json.At("world_id").TextOr("");
  record.started = json.At("started").TextOr("");
  record.pid = static_cast<std::uint32_t>(json.At("pid").IntOr(0));
  if (record.pid == 0 || record.pipe.empty()) return std::nullopt;
  return record;
}

}  // namespace

std::filesystem::path McpHome() {
  const auto variable = [](const char* name) {
    return platform::TextPath(platform::EnvironmentText(name).value_or(""));
  };
  std::filesystem::path home = variable("ZORVIK_MCP_HOME");
  if (!home.empty()) return home;
  std::filesystem::path base = variable("LOCALAPPDATA");
  if (base.empty()) base = platform::TemporaryFolder();
  return base / "ZORVIK" / "mcp";
}

std::vector<EditorRecord> ListEditorRecords() {
  std::vector<EditorRecord> records;
  platform::TrustedFolder folder;
  if (!folder.Open(Folder())) return records;
  for (const std::filesystem::path& file : RecordFiles(folder)) {
    std::optional<EditorRecord> record = ReadRecord(folder, file);
    if (!record) continue;
    // The home may be shared with containers whose processes have numbers of their own: an editor
    // of such a one can't be seen from here, but its pipe is served.
    if (ProcessAlive(record->pid) || platform::PipeIsServed(record->pipe))
      records.push_back(std::move(*record));
    else
      folder.Remove(file);
  }
  std::stable_sort(records.begin(), records.end(),
                   [](const EditorRecord& a, const EditorRecord& b) { return a.pid < b.pid; });
  return records;
}

WriteResult WriteEditorRecord(const EditorRecord& record) {
  const Json json = Json::Object({{"editor_id", record.editor_id},
                                  {"pid", record.pid},
                                  {"pipe", record.pipe},
                                  {"token", record.token},
                                  {"bridge", record.bridge},
                                  {"engine_version", record.engine_version},
                                  {"project", record.project},
                                  {"project_name", record.project_name},
                                  {"world", record.world},
                                  {"world_id", record.world_id},
                                  {"started", record.started}});
  return WriteHomeFile(Folder() / RecordName(record.pid), WriteJson(json) + "\n");
}

void RemoveEditorRecord(std::uint32_t pid) {
  platform::TrustedFolder folder;
  if (folder.Open(Folder())) folder.Remove(RecordName(pid));
}

}  // namespace zorvik::core
