#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "core/json.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::EditorRecord;
using core::Json;

namespace {

// The tool document for an editor's reply. The members of `result` follow `ok` and `revision`, and
// may replace them.
Json DocumentOf(Json& reply) {
  if (!reply.At("ok").BoolOr(false)) {
    Json* error = reply.Find("error");
    if (error == nullptr || error->kind != Json::Kind::Object)
      return Json::Object(
          {{"ok", false},
           {"error", authoring::ErrorBody("internal", "Resposta do editor sem erro nem resultado.",
                                          "", Json())}});
    return Json::Object({{"ok", false}, {"error", std::move(*error)}});
  }
  Json document = Json::Object({{"ok", true}});
  if (reply.At("revision").kind == Json::Kind::Number)
    document.Set("revision", reply.At("revision"));
  Json result;
  if (Json* found = reply.Find("result")) result = std::move(*found);
  document.fields.reserve(document.fields.size() + result.fields.size());
  for (auto& [key, value] : result.fields) {
    // The keys of `result` differ from each other, so only these two can be there already. Looking
    // every key up would take quadratic time.
    if (key == "ok" || key == "revision")
      document.Set(key, std::move(value));
    else
      document.fields.emplace_back(std::move(key), std::move(value));
  }
  return document;
}

}  // namespace

void Server::Poll() {
  std::vector<EditorGateway::Reply> replies;
  std::vector<std::string> lost;
  gateway.Poll(replies, lost);

  for (EditorGateway::Reply& reply : replies) {
    const std::int64_t id = reply.message.At("id").IntOr(-1);
    if (id < 0) continue;
    const auto found = pending.find(static_cast<std::uint64_t>(id));
    if (found == pending.end()) continue;
    Finish(found->second, std::move(reply.message));
    pending.erase(found);
  }

  for (const std::string& editor : lost) {
    for (auto call = pending.begin(); call != pending.end();) {
      if (call->second.editor != editor) {
        ++call;
        continue;
      }
      FinishError(call->second,
                  ToolError("editor_disconnected",
                            "A conexao com o editor " + editor + " caiu antes da resposta.",
                            "Se era uma alteracao, confira world_info e history antes de repetir; "
                            "repita com o mesmo request_id para nao aplicar duas vezes.",
                            Json()));
      call = pending.erase(call);
    }
  }

  if (pending.empty()) return;
  const Clock::time_point time = now();
  for (auto call = pending.begin(); call != pending.end();) {
    if (call->second.deadline > time) {
      ++call;
      continue;
    }
    FinishError(
        call->second,
        ToolError("timeout", "O editor nao respondeu a " + call->second.tool + " a tempo.",
                  "Repita com o mesmo request_id: uma alteracao que chegar tarde nao e aplicada "
                  "duas vezes.",
                  Json()));
    call = pending.erase(call);
  }
}

void Server::Finish(const Pending& call, Json message) {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(now() - call.started).count();
  const std::string outcome =
      message.At("ok").BoolOr(false) ? "ok" : message.At("error").At("code").TextOr("erro");
  Log(call.tool + " -> " + outcome + " em " + std::to_string(elapsed) + " ms");
  send(core::WriteJson(ToolAnswer(call.id, call.era, DocumentOf(message))));
}

void Server::FinishError(const Pending& call, Json document) {
  Log(call.tool + " -> " + document.At("error").At("code").TextOr(""));
  send(core::WriteJson(ToolAnswer(call.id, call.era, std::move(document))));
}

void Server::Cancel(const Json& params) {
  const std::string target = core::WriteJson(params.At("requestId"));
  for (auto call = pending.begin(); call != pending.end(); ++call) {
    const Pending& cancelled = call->second;
    if (core::WriteJson(cancelled.id) != target) continue;
    Json message =
        Json::Object({{"id", next_id++}, {"op", "cancel"}, {"target", cancelled.bridge_id}});
    for (const EditorRecord& record : gateway.List()) {
      if (record.editor_id != cancelled.editor) continue;
      message.Set("token", Json::Text(record.token));
      std::string ignored;
      gateway.Send(record, message, ignored);
    }
    Log("cancelado pelo cliente: " + cancelled.tool);
    pending.erase(call);
    return;
  }
}

}  // namespace zorvik::mcp
