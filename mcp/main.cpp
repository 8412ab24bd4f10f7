#include <chrono>
#include <string>
#include <utility>

#include "authoring/protocols.h"
#include "core/editor_registry.h"
#include "core/json/memory.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/platform/files.h"
#include "core/platform/streams.h"
#include "core/platform/wait.h"
#include "core/process.h"
#include "mcp/command_line.h"
#include "mcp/log_file.h"
#include "mcp/pipe_gateway.h"
#include "mcp/server.h"

namespace {

// The longest pauses: with no call in flight, and with any.
constexpr int kIdlePauseMs = 4;
constexpr int kBusyPauseMs = 1;
constexpr std::chrono::seconds kSpareMemoryKept(1);

// Moves lines between the client and the server until input ends or output breaks.
void Run(zorvik::mcp::LogFile& log) {
  zorvik::core::StdioChannel channel;
  zorvik::mcp::PipeGateway gateway;
  bool output_alive = true;
  zorvik::mcp::Server server(
      gateway,
      [&](std::string line) {
        if (!channel.Write(std::move(line))) output_alive = false;
      },
      [&](const std::string& text) { log.Line(text); });

  using Clock = std::chrono::steady_clock;
  bool worked = false;
  Clock::time_point release_memory = Clock::now() + kSpareMemoryKept;
  bool closed = false;
  while (!closed && output_alive) {
    zorvik::core::Lines lines;
    channel.Poll(lines, closed);
    for (const std::string& line : lines) server.Receive(line);
    server.Poll();
    // The memory that a burst of messages took goes back to the system soon after it.
    worked = worked || !lines.empty() || server.PendingCount() != 0;
    if (worked && Clock::now() >= release_memory) {
      zorvik::core::ReleaseSpareMemory();
      release_memory = Clock::now() + kSpareMemoryKept;
      worked = false;
    }
    if (lines.empty() && !closed && output_alive) {
      zorvik::core::platform::WaitSources sources;
      channel.AddTo(sources);
      gateway.AddTo(sources);
      zorvik::core::platform::WaitForInput(
          sources, server.PendingCount() != 0 ? kBusyPauseMs : kIdlePauseMs);
    }
  }
  log.Line("encerrado");
}

}  // namespace

int main(int argc, char** argv) {
  zorvik::core::platform::PrepareStandardStreams();
  if (zorvik::mcp::ServeInformationOption(argc, argv)) return 0;
  const std::filesystem::path home = zorvik::core::McpHome();
  zorvik::mcp::LogFile log(
      home / "logs" / ("zorvik_mcp-" + std::to_string(zorvik::core::CurrentProcessId()) + ".log"));
  log.Line(std::string("iniciado: ") + zorvik::authoring::kServerName + " " +
           zorvik::authoring::kServerVersion + ", registro em " +
           zorvik::core::platform::PathText(home));
  Run(log);
  return 0;
}
