#include "mcp/pipe_gateway.h"

#include <utility>

#include "authoring/protocols.h"
#include "core/json.h"

namespace zorvik::mcp {

using core::EditorRecord;
using core::Json;

namespace {

constexpr std::int32_t kConnectTimeoutMs = 3000;

Json Hello(const std::string& token) {
  return Json::Object(
      {{"id", 0}, {"op", "hello"}, {"token", token}, {"bridge", authoring::kBridgeProtocol}});
}

}  // namespace

std::vector<EditorRecord> PipeGateway::List() {
  return core::ListEditorRecords();
}

bool PipeGateway::Send(const EditorRecord& editor, const Json& request, std::string& error) {
  std::unique_ptr<Link>& link = links[editor.editor_id];
  if (!link) link = std::make_unique<Link>();
  if (!link->client.Connected() || link->record.pipe != editor.pipe) {
    link->record = editor;
    if (!link->client.Connect(editor.pipe, kConnectTimeoutMs, error)) return false;
    // The answer is not waited for: a refusal shows in a later Poll.
    if (!link->client.Send(core::WriteJson(Hello(editor.token)), error)) return false;
  }
  return link->client.Send(core::WriteJson(request), error);
}

void PipeGateway::Poll(const std::function<void(Reply)>& receive, std::vector<std::string>& lost) {
  for (auto& [editor, link] : links) {
    if (!link->client.Connected()) continue;
    core::Lines lines;
    std::string error;
    const bool alive = link->client.Receive(lines, error);
    for (std::string& line : lines) {
      Json message;
      const bool valid = core::ParseJson(line, message, error);
      // An answer with an image is large, and once it is read its line is of no use any more.
      std::string().swap(line);
      if (!valid) continue;
      if (message.At("id").IntOr(-1) != 0) {
        receive(Reply{editor, std::move(message)});
      } else if (!message.At("ok").BoolOr(false)) {
        link->client.Close();
        lost.push_back(editor);
      }
    }
    if (!alive) lost.push_back(editor);
  }
}

void PipeGateway::AddTo(core::platform::WaitSources& sources) const {
  for (const auto& [editor, link] : links) link->client.AddTo(sources);
}

}  // namespace zorvik::mcp
