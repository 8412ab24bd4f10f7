#include "tests/support/mcp_client.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "core/editor_registry.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

ProgramStart ServerStart(ProgramStart start) {
  static int count = 0;
  start.program = "zorvik_mcp";
  start.error_file = core::McpHome() += "-errors-" + std::to_string(++count);
  return start;
}

}  // namespace

std::string Outcome(const Json& result) {
  if (!result.At("isError").BoolOr(true)) return "ok";
  return result.At("structuredContent").At("error").At("code").TextOr("no code");
}

std::string At(const std::string& editor) {
  return R"({"editor_id":")" + editor + R"("})";
}

McpClient::McpClient(std::string era, const ProgramStart& wanted)
    : version(std::move(era)), home(core::McpHome()), start(ServerStart(wanted)), process(start) {
  if (version.empty() || version == kStateless) return;
  Ask("initialize",
      R"({"protocolVersion":")" + version + R"(","clientInfo":{"name":"prova","version":"1"}})");
}

McpClient::~McpClient() {
  EXPECT_NO_THROW(EXPECT_EQ(Finish(), 0) << Errors());
  std::error_code ignored;
  std::filesystem::remove(start.error_file, ignored);
}

std::int64_t McpClient::Begin(const std::string& method, std::string params) {
  if (version == kStateless) params.insert(1, kMeta + (params == "{}" ? "" : ","));
  Line(RequestLine(std::to_string(++last_id), method, params));
  return last_id;
}

std::int64_t McpClient::BeginCall(const std::string& tool, const std::string& arguments) {
  return Begin("tools/call", R"({"name":")" + tool + R"(","arguments":)" + arguments + "}");
}

void McpClient::Cancel(std::int64_t id) {
  Line(R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" +
       std::to_string(id) + R"(,"reason":"x"}})");
}

std::string McpClient::AnswerLine(std::int64_t id) {
  while (!answers.contains(id)) {
    std::optional<std::string> line = process.ReadLine();
    if (!line) throw std::runtime_error("the server ended: " + Errors());
    const std::int64_t answered = Parse(*line).At("id").IntOr(-1);
    if (!answers.emplace(answered, std::move(*line)).second)
      throw std::runtime_error("answered twice: " + std::to_string(answered));
  }
  return std::move(answers.extract(id).mapped());
}

Json McpClient::Ask(const std::string& method, const std::string& params) {
  return Answer(Begin(method, params)).At("result");
}

Json McpClient::Call(const std::string& tool, const std::string& arguments) {
  return Answer(BeginCall(tool, arguments)).At("result");
}

int McpClient::Finish() {
  process.CloseInput();
  return process.Wait();
}

std::string McpClient::Errors() const {
  return ReadText(start.error_file);
}

std::filesystem::path McpClient::LogPath() const {
  return home / "logs" / ("zorvik_mcp-" + std::to_string(process.Id()) + ".log");
}

std::string McpClient::Log() const {
  constexpr std::size_t kStampLength = std::string_view("2026-03-05T14:07:09 ").size();
  std::istringstream log(ReadText(LogPath()));
  std::string all;
  for (std::string line; std::getline(log, line);) all += line.substr(kStampLength) + "\n";
  return all;
}

}  // namespace zorvik::tests
