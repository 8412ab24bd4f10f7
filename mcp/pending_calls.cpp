#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "core/json.h"
#include "mcp/answers.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::EditorRecord;
using core::Json;

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
                            "repita com o mesmo request_id para nao aplicar duas vezes."));
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
                  "duas vezes."));
    call = pending.erase(call);
  }
}

void Server::Finish(const Pending& call, Json message) {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(now() - call.started).count();
  const std::string outcome =
      message.At("ok").BoolOr(false) ? "ok" : message.At("error").At("code").TextOr("erro");
  Log(call.tool + " -> " + outcome + " em " + std::to_string(elapsed) + " ms");
  const Json answer = ToolAnswer(call.id, call.era, ToolDocument(std::move(message)));
  send(core::WriteJson(answer));
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
