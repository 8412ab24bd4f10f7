#include "tests/support/mcp_client.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <utility>

#include "core/editor_registry.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

constexpr std::size_t kStampLength = 20;  // "2026-03-05T14:07:09 "

ProgramStart ServerStart(ProgramStart start) {
  static int count = 0;
  start.program = "zorvik_mcp";
  start.error_file = core::McpHome() += "-errors-" + std::to_string(++count);
  return start;
}

}  // namespace

Json Parse(const std::string& text) {
  Json document;
  std::string error;
  if (!core::ParseJson(text, document, error)) throw std::runtime_error(error + ": " + text);
  return document;
}

std::string Outcome(const Json& result) {
  if (!result.At("isError").BoolOr(true)) return "ok";
  return result.At("structuredContent").At("error").At("code").TextOr("no code");
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

std::int64_t McpClient::Begin(const std::string& method, const std::string& params) {
  Json request = Json::Object();
  request.Set("jsonrpc", Json::Text("2.0"));
  request.Set("id", Json::Int(++last_id));
  request.Set("method", Json::Text(method));
  Json& sent = request.Set("params", Parse(params));
  if (version == kStateless) {
    sent.Set("_meta", Parse(R"({"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
                            R"("io.modelcontextprotocol/clientCapabilities":{}})"));
  }
  Line(core::WriteJson(request));
  return last_id;
}

std::int64_t McpClient::BeginCall(const std::string& tool, const std::string& arguments) {
  return Begin("tools/call", R"({"name":")" + tool + R"(","arguments":)" + arguments + "}");
}

std::string McpClient::AnswerLine(std::int64_t id) {
  for (;;) {
    const auto found = answers.find(id);
    if (found != answers.end()) {
      std::string line = std::move(found->second);
      answers.erase(found);
      return line;
    }
    std::optional<std::string> line = process.ReadLine();
    if (!line) throw std::runtime_error("the server ended: " + Errors());
    const Json message = Parse(*line);
    const std::int64_t answered = message.At("id").IntOr(-1);
    if (!answers.emplace(answered, std::move(*line)).second)
      throw std::runtime_error("answered twice: " + std::to_string(answered));
  }
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
  std::istringstream log(ReadText(LogPath()));
  std::string all;
  for (std::string line; std::getline(log, line);) all += line.substr(kStampLength) + "\n";
  return all;
}

}  // namespace zorvik::tests
