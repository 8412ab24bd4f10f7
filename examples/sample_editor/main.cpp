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
#include "core/platform/end_request.h"
#include "core/platform/streams.h"
#include "core/platform/wait.h"
#include "core/process.h"
#include "examples/sample_editor/bridge.h"
#include "examples/sample_editor/person.h"
#include "examples/sample_editor/world.h"

namespace core = zorvik::core;
using namespace zorvik::sample_editor;

namespace {

constexpr int kBadUsage = 2;

constexpr const char* kUsage =
    "uso: zorvik_sample_editor [--id ID] [--project NOME] [--limit N]\n"
    "Um pequeno editor de exemplo, em que clientes de IA trabalham por meio do zorvik_mcp.\n"
    "  --id ID         o nome do editor para os clientes (sem ele, um que ninguem tem)\n"
    "  --project NOME  o nome do projeto (Exemplo)\n"
    "  --limit N       quantos servidores cabem ao mesmo tempo (4)\n"
    "Diz \"pronto ID\" assim que pode ser achado, e fica aberto ate Ctrl-C, SIGTERM ou \"sair\".\n"
    "Quem o abre por um pipe na entrada padrao tambem o fecha fechando o pipe. Cada linha da\n"
    "entrada e um ato da pessoa no editor, respondido com \"feito REVISAO\" ou \"erro TEXTO\":\n"
    "  mover ID X Z      move um objeto\n"
    "  criar ASSET X Z   cria um\n"
    "  sair              fecha o editor\n";

struct Options {
  bool help = false;
  std::string editor_id;
  std::string project = "Exemplo";
  std::int32_t limit = 4;
};

bool ReadOptions(const std::vector<std::string>& arguments, Options& options) {
  options.help = arguments == std::vector<std::string>{"--help"};
  if (options.help) return true;
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

// Serves until it is asked to end: by the system, by "sair", or by the end of an input that
// somebody held. That a file or the null device ends at once, or that there is no input, says
// nothing.
void Serve(const core::EditorRecord& record, core::LocalPipeServer& pipe, World& world,
           Bridge& bridge) {
  const auto input = core::platform::InputStream::StandardWithTerminal();
  core::StdioChannel console(input, core::platform::OutputStream::Standard());
  console.Write("pronto " + record.editor_id);
  bool closed = false;
  while (!core::platform::EndRequested() && !(closed && input.CanPeek())) {
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
      if (!closed) console.AddTo(sources);
      core::platform::WaitForInput(sources, 1);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  core::platform::PrepareStandardStreams();
  Options options;
  const bool understood = ReadOptions({argv + 1, argv + argc}, options);
  if (!understood || options.help) {
    std::fputs(kUsage, understood ? stdout : stderr);
    return understood ? 0 : kBadUsage;
  }
  core::platform::CatchEndRequests();

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
  Serve(record, pipe, world, bridge);
  core::RemoveEditorRecord(record.pid);
  return 0;
}
