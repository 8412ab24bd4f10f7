#pragma once

#include <chrono>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "authoring/catalog.h"
#include "fuzz/slow_json.h"
#include "fuzz/slow_validate.h"
#include "mcp/editor_gateway.h"

namespace zorvik::fuzz {

// The slow twin of the server: from the same lines, replies, losses and times it tells which
// answers are due, what editors are sent, and how many calls are in flight then.
class ServerModel {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // An answer is told by its id and the code of its error, or `result`.
  std::vector<std::string> answers;
  // A message to an editor by the editor, its id, its token and its `op`.
  std::vector<std::string> forwarded;
  std::vector<core::EditorRecord> editors;
  bool send_fails = false;
  Time now{};

  std::size_t CallCount() const { return calls.size(); }

  void Receive(const std::string& line) {
    Json document;
    std::string error;
    if (!SlowParse(line, document, error)) {
      answers.emplace_back("null -32700");
    } else if (document.kind != Json::Kind::Array) {
      const std::string answer = Handle(document);
      if (!answer.empty()) answers.push_back(answer);
    } else if (document.items.empty()) {
      answers.emplace_back("null -32600");
    } else {
      std::string batch;
      for (const Json& message : document.items) {
        const std::string answer = Handle(message);
        if (!answer.empty()) batch += "[" + answer + "]";
      }
      if (!batch.empty()) answers.push_back(batch);
    }
  }

  void Poll(const std::vector<mcp::EditorGateway::Reply>& replies,
            const std::vector<std::string>& lost) {
    for (const auto& reply : replies) {
      const Json& id = reply.message.At("id");
      EndIf([&](std::uint64_t bridge_id, const Call&) {
        return id.kind == Json::Kind::Number &&
               std::trunc(id.number) == static_cast<double>(bridge_id);
      });
    }
    for (const std::string& editor : lost)
      EndIf([&](std::uint64_t, const Call& call) { return call.editor == editor; });
    EndIf([&](std::uint64_t, const Call& call) { return call.deadline <= now; });
  }

 private:
  struct Call {
    std::string id;
    std::string editor;
    Time deadline;
  };

  template <typename Condition>
  void EndIf(const Condition& condition) {
    for (auto call = calls.begin(); call != calls.end();) {
      if (condition(call->first, call->second)) {
        answers.push_back(call->second.id + " result");
        call = calls.erase(call);
      } else {
        ++call;
      }
    }
  }

  std::string Handle(const Json& message) {
    if (message.At("jsonrpc").TextOr("") != "2.0") return "null -32600";
    if (message.At("method").kind != Json::Kind::Text) return "";
    const std::string& method = message.At("method").text;
    const Json& params = message.At("params");
    if (!message.Has("id")) {
      if (method == "notifications/cancelled") Cancel(core::WriteJson(params.At("requestId")));
      return "";
    }
    const Json& id = message.At("id");
    const bool whole = id.kind == Json::Kind::Number && std::fmod(id.number, 1) == 0 &&
                       std::fabs(id.number) <= 9'007'199'254'740'992.0;
    if (id.kind != Json::Kind::Text && !whole) return "null -32600";
    const std::string told = core::WriteJson(id);
    if (method == "initialize") {
      initialized = true;
      return told + " result";
    }
    const Json& meta = params.At("_meta");
    const Json& version = meta.At("io.modelcontextprotocol/protocolVersion");
    if (version.kind == Json::Kind::Text) {
      if (version.text != "2026-07-28") return told + " -32022";
      if (meta.At("io.modelcontextprotocol/clientCapabilities").kind != Json::Kind::Object)
        return told + " -32602";
    } else if (!initialized) {
      return told + " -32600";
    }
    if (method == "tools/call") return CallTool(told, params);
    for (const char* known : {"ping", "server/discover", "tools/list", "logging/setLevel"})
      if (method == known) return told + " result";
    return told + " -32601";
  }

  // Empty when the answer comes later.
  std::string CallTool(const std::string& id, const Json& params) {
    const authoring::ToolSpec* tool = nullptr;
    for (const authoring::ToolSpec& row : authoring::Tools())
      if (row.name == params.At("name").TextOr("")) tool = &row;
    if (tool == nullptr) return id + " -32602";
    Json arguments = params.At("arguments");
    if (arguments.kind == Json::Kind::Null) arguments = Json::Object();
    const std::string wanted = arguments.At("editor_id").TextOr("");
    const core::EditorRecord* chosen = nullptr;
    for (const core::EditorRecord& editor : editors)
      if (wanted.empty() ? editors.size() == 1 : editor.editor_id == wanted) chosen = &editor;
    if (arguments.kind != Json::Kind::Object ||
        !SlowValidate(tool->input, arguments).reason.empty() || tool->name == "editor_list" ||
        chosen == nullptr)
      return id + " result";
    const std::uint64_t bridge_id = next_id++;
    if (send_fails) return id + " result";
    Forward(*chosen, bridge_id, tool->operation);
    calls[bridge_id] = {id, chosen->editor_id, now + std::chrono::minutes(2)};
    return "";
  }

  void Cancel(const std::string& id) {
    for (const auto& [bridge_id, call] : calls) {
      if (call.id != id) continue;
      const std::uint64_t own_id = next_id++;
      for (const core::EditorRecord& editor : editors)
        if (editor.editor_id == call.editor && !send_fails)
          Forward(editor, own_id, "cancel " + std::to_string(bridge_id));
      calls.erase(bridge_id);
      return;
    }
  }

  void Forward(const core::EditorRecord& editor, std::uint64_t id, const std::string& what) {
    forwarded.push_back(editor.editor_id + " " + std::to_string(id) + " " + editor.token + " " +
                        what);
  }

  std::map<std::uint64_t, Call> calls;
  std::uint64_t next_id = 1;
  bool initialized = false;
};

}  // namespace zorvik::fuzz
