// The server's own parts on the way of a message.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "bench/documents.h"
#include "core/editor_registry.h"
#include "core/local_pipe/lines.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/process.h"
#include "mcp/server.h"
#include "tests/support/byte_pipe.h"
#include "tests/support/scripted_gateway.h"
#include "tests/support/temporary_home.h"

namespace zorvik::bench {
namespace {

constexpr std::size_t kPiece = 65'536;
constexpr std::size_t kAllLines = 16'777'216;

// 16 MiB of lines of that length, the last byte of each being its line feed.
std::string Lines(std::size_t length) {
  std::string text(kAllLines, 'x');
  for (std::size_t end = length; end <= text.size(); end += length) text[end - 1] = '\n';
  return text;
}

void CheckLines(std::size_t count, std::size_t length, const std::string& text) {
  if (count != text.size() / length) throw std::runtime_error("lines are missing");
}

void TakeLinesInPieces(benchmark::State& state) {
  const auto length = static_cast<std::size_t>(state.range(0));
  const std::string text = Lines(length);
  for (auto _ : state) {
    core::LineBuffer buffer;
    core::Lines lines;
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += kPiece) {
      buffer.Append(std::string_view(text).substr(at, kPiece));
      core::TakeLines(buffer, lines);
      count += lines.size();
      lines.clear();
    }
    CheckLines(count, length, text);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(TakeLinesInPieces)->Arg(128)->Arg(4096)->Arg(1 << 20)->Arg(1 << 24);

// Against a client that writes as fast as it can, in pieces as large as the pipe.
void ChannelInPieces(benchmark::State& state) {
  const auto length = static_cast<std::size_t>(state.range(0));
  const std::string text = Lines(length);
  for (auto _ : state) {
    const tests::BytePipe pipe;
    std::thread client([&] {
      std::string_view left = text;
      std::size_t count = 0;
      while (!left.empty() && pipe.Writer().Write(left.data(), left.size(), count))
        left.remove_prefix(count);
    });
    core::StdioChannel channel(pipe.Reader(), {});
    core::Lines lines;
    std::size_t count = 0;
    bool closed = false;
    while (count < text.size() / length) {
      channel.Poll(lines, closed);
      count += lines.size();
      lines.clear();
    }
    client.join();
    CheckLines(count, length, text);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(ChannelInPieces)->Arg(128)->Arg(4096)->Arg(1 << 20)->Arg(1 << 24);

void ValidateFullObjects(benchmark::State& state) {
  const core::Json& schema = authoring::FindTool("objects_create")->input;
  core::Json arguments;
  std::string field;
  std::string reason;
  core::ParseJson(FullObjects(256), arguments, reason);
  for (auto _ : state)
    if (!authoring::Validate(schema, arguments, field, reason)) throw std::runtime_error(reason);
}
BENCHMARK(ValidateFullObjects);

void ListRecords(benchmark::State& state) {
  const tests::TemporaryHome home;
  for (int i = 0; i < state.range(0); ++i) {
    core::EditorRecord record;
    record.editor_id = "vale" + std::to_string(i);
    record.pipe = "zorvik-1-" + core::RandomHex(8);
    record.token = core::RandomHex(16);
    record.project = "/home/someone/projects/vale";
    record.project_name = "Vale";
    record.world = "maps/vale.scene";
    record.pid = core::CurrentProcessId();
    core::WriteEditorRecord(record);
    // Only this process surely lives on, so its record is put aside under other names.
    const std::string name = std::to_string(record.pid) + ".json";
    std::filesystem::rename(home.Editors() / name, home.Editors() / (std::to_string(i) + name));
  }
  for (auto _ : state)
    if (core::ListEditorRecords().size() != static_cast<std::size_t>(state.range(0)))
      throw std::runtime_error("records are missing");
}
BENCHMARK(ListRecords)->Arg(1)->Arg(10)->Arg(100);

// A server in this process, with one editor that answers at once.
void AskServer(benchmark::State& state, const std::string& request, const std::string& reply) {
  tests::ScriptedGateway gateway;
  gateway.Open("vale");
  std::size_t answered = 0;
  mcp::Server server(gateway, [&](const std::string& line) { answered += line.size() > 10; }, {});
  server.Receive(
      R"({"jsonrpc":"2.0","id":0,"method":"initialize","params":{"protocolVersion":"2025-11-25"}})");
  answered = 0;
  std::size_t asked = 0;
  const std::string line = R"({"jsonrpc":"2.0","id":1,)" + request + "}";
  for (auto _ : state) {
    server.Receive(line);
    ++asked;
    if (reply.empty()) continue;
    gateway.sent.clear();
    gateway.Answer("vale", R"({"id":)" + std::to_string(asked) + "," + reply + "}");
    server.Poll();
  }
  if (answered != asked) throw std::runtime_error("answers are missing");
  state.SetItemsProcessed(static_cast<std::int64_t>(asked));
}
BENCHMARK_CAPTURE(AskServer, ping, R"("method":"ping")", "");
BENCHMARK_CAPTURE(AskServer, tools_list, R"("method":"tools/list")", "");
BENCHMARK_CAPTURE(AskServer, world_info, R"("method":"tools/call","params":{"name":"world_info"})",
                  R"("ok":true,"revision":7,"result":{"world_id":"vale","name":"Vale"})");
BENCHMARK_CAPTURE(AskServer, objects_create_256,
                  R"("method":"tools/call","params":{"name":"objects_create","arguments":)" +
                      FullObjects(256) + "}",
                  R"("ok":true,"revision":8,"result":{"created":[],"objects":[]})");

}  // namespace
}  // namespace zorvik::bench
