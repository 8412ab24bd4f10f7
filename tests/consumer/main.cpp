// An editor that knows one operation, and beside it a client that finds the editor by its record.
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "zorvik/authoring/catalog.h"
#include "zorvik/authoring/protocols.h"
#include "zorvik/authoring/validate.h"
#include "zorvik/core/editor_registry.h"
#include "zorvik/core/local_pipe/client.h"
#include "zorvik/core/local_pipe/server.h"
#include "zorvik/core/process.h"

using namespace zorvik;
using core::Json;

namespace {

Json Answer(const std::string& line, const std::string& token) {
  Json request;
  std::string field;
  std::string reason;
  if (!core::ParseJson(line, request, reason) || request.At("token").text != token) return {};
  Json answer = Json::Object({{"id", request.At("id")}, {"ok", true}});
  if (request.At("op").text == "hello") return answer;
  const authoring::ToolSpec* const tool = authoring::FindOperation(request.At("op").text);
  if (tool == nullptr || !authoring::Validate(tool->input, request.At("args"), field, reason))
    return {};
  answer.Set("revision", Json::Int(7));
  return answer;
}

}  // namespace

int main() {
  core::EditorRecord record;
  record.pid = core::CurrentProcessId();
  record.editor_id = "consumer";
  record.pipe = "zorvik-" + core::RandomHex(8);
  record.token = core::RandomHex(16);
  record.bridge = authoring::kBridgeProtocol;
  core::LocalPipeServer pipe;
  std::string error;
  if (!pipe.Open(record.pipe, error)) return std::puts(error.c_str()), 1;
  const core::WriteResult written = core::WriteEditorRecord(record);
  if (written.status != core::WriteStatus::Ok) return std::puts(written.message.c_str()), 1;

  const std::vector<core::EditorRecord> found = core::ListEditorRecords();
  if (found.size() != 1) return std::puts("no record"), 1;
  core::LocalPipeClient client;
  Json hello = Json::Object({{"id", 0}, {"op", "hello"}, {"token", found[0].token}});
  Json request = Json::Object(
      {{"id", 1}, {"op", "world.info"}, {"token", found[0].token}, {"args", Json::Object()}});
  if (!client.Connect(found[0].pipe, 0, error) || !client.Send(core::WriteJson(hello), error) ||
      !client.Send(core::WriteJson(request), error))
    return std::puts(error.c_str()), 1;

  core::Lines answers;
  for (int turn = 0; turn < 30'000 && answers.size() < 2; ++turn) {
    std::vector<core::LocalPipeServer::Message> messages;
    std::vector<std::int32_t> closed;
    pipe.Poll(messages, closed);
    for (const auto& message : messages)
      pipe.Send(message.connection, core::WriteJson(Answer(message.line, record.token)));
    if (!client.Receive(answers, error)) return std::puts(error.c_str()), 1;
    core::SleepMilliseconds(1);
  }
  core::RemoveEditorRecord(record.pid);
  const core::Lines expected = {R"({"id":0,"ok":true})", R"({"id":1,"ok":true,"revision":7})"};
  if (answers != expected || !core::ListEditorRecords().empty()) return std::puts("wrong"), 1;
  return 0;
}
