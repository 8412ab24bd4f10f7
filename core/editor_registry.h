#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/file_write.h"

namespace zorvik::core {

// One open editor, as its file in the registry tells it.
struct EditorRecord {
  std::string editor_id;
  std::string pipe;   // Bare pipe name, UTF-8.
  std::string token;  // Goes into every message to this editor; never shown to clients.
  std::string bridge;
  std::string engine_version;
  std::string project;
  std::string project_name;
  std::string world;
  std::string world_id;
  std::string started;
  std::uint32_t pid = 0;
};

// The per-user home folder: ZORVIK_MCP_HOME, or else ZORVIK/mcp under LOCALAPPDATA, or else under
// the temporary folder, on POSIX the user's private one. Worked out anew at each call; creates
// nothing.
std::filesystem::path McpHome();

// The records of live editors, ascending by pid, from the folder `editors` under McpHome(). Files
// of editors whose process is gone and whose pipe nobody serves are deleted on the way; whatever
// can't be read, or could be the work of others, is left out and left alone. Never hangs and
// reports no failure.
std::vector<EditorRecord> ListEditorRecords();

// Publishes the record in its file, named by its pid, durably and for this user alone, as
// WriteHomeFile. To be called when the pipe is open: servers connect as soon as they see it.
WriteResult WriteEditorRecord(const EditorRecord& record);

// Deletes the file of that pid's record, if there is one. To be called before the pipe closes.
void RemoveEditorRecord(std::uint32_t pid);

}  // namespace zorvik::core
