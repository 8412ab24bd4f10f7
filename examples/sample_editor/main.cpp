#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "authoring/protocols.h"
#include "core/editor_registry.h"
#include "core/local_pipe/server.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/platform/wait.h"
#include "core/process.h"
#include "examples/sample_editor/bridge.h"
#include "examples/sample_editor/person.h"
#include "examples/sample_editor/world.h"

namespace core = zorvik::core;
using namespace zorvik::sample_editor;

namespace {

constexpr int kBadUsage = 2;

struct Options {
  std::string editor_id;
  std::string project = "Exemplo";
  std::int32_t limit = 4;
};

bool ReadOptions(const std::vector<std::string>& arguments, Options& options) {
  for (std::size_t index = 0; index + 1 < arguments.size(); index += 2) {
    const std::string& name = arguments[index];
    const std::string& value = arguments[index + 1];
    if (name == "--id") {
      options.editor_id = value;
    } else if (name == "--project") {
      options.project = value;
    } else if (name == "--limit") {
      const char* const end = value.data() + value.size();
      if (value.empty() || std::from_chars(value.data(), end, options.limit).ptr != end)
        return false;
    } else {
      return false;
    }
  }
  return arguments.size() % 2 == 0;
}

core::EditorRecord MakeRecord(const Options& options) {
  core::EditorRecord record;
  record.pid = core::CurrentProcessId();
  record.editor_id = options.editor_id.empty() ? "sample-" + core::RandomHex(4) : options.editor_id;
  record.pipe = "zorvik-" + std::to_string(record.pid) + "-" + core::RandomHex(8);
  record.token = core::RandomHex(16);
  record.bridge = zorvik::authoring::kBridgeProtocol;
  record.engine_version = "exemplo-" + std::string(zorvik::authoring::kServerVersion);
  record.project = options.project;
  record.project_name = options.project;
  record.world = "maps/vale.scene";
  record.world_id = "sample-vale";
  record.started = core::LocalTimestamp();
  return record;
}

// Serves until the person leaves: "sair", or the end of the standard input.
void Serve(core::StdioChannel& console, core::LocalPipeServer& pipe, World& world, Bridge& bridge) {
  bool closed = false;
  while (!closed) {
    std::vector<core::LocalPipeServer::Message> messages;
    std::vector<std::int32_t> ended;
    pipe.Poll(messages, ended);
    for (const auto& message : messages) {
      const Bridge::Reply reply = bridge.Handle(message);
      if (reply.message.kind != core::Json::Kind::Null)
        pipe.Send(message.connection, core::WriteJson(reply.message));
      if (reply.hang_up) pipe.Drop(message.connection);
    }
    for (const std::int32_t connection : ended) bridge.Forget(connection);
    core::Lines lines;
    console.Poll(lines, closed);
    for (const std::string& line : lines) {
      if (line == "sair") return;
      console.Write(DoAsPerson(world, line));
    }
    // What was just queued is written by the next Poll.
    if (messages.empty()) {
      core::platform::WaitSources sources;
      pipe.AddTo(sources);
      console.AddTo(sources);
      core::platform::WaitForInput(sources, 1);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ReadOptions({argv + 1, argv + argc}, options)) {
    std::fputs("uso: zorvik_sample_editor [--id ID] [--project NOME] [--limit N]\n", stderr);
    return kBadUsage;
  }

  // The order matters: whoever reads the record connects at once, so the pipe is open before it.
  const core::EditorRecord record = MakeRecord(options);
  core::LocalPipeServer pipe;
  std::string error;
  if (!pipe.Open(record.pipe, error, options.limit)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  World world = MakeSampleWorld();
  Bridge bridge(world, record.token);
  const core::WriteResult written = core::WriteEditorRecord(record);
  if (written.status != core::WriteStatus::Ok) {
    std::fprintf(stderr, "%s\n", written.message.c_str());
    return 1;
  }
  core::StdioChannel console;
  console.Write("pronto " + record.editor_id);
  Serve(console, pipe, world, bridge);
  core::RemoveEditorRecord(record.pid);
  return 0;
}
