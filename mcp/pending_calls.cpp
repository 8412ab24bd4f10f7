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
  std::vector<std::string> lost;
  gateway.Poll(
      [this](EditorGateway::Reply reply) {
        const std::int64_t id = reply.message.At("id").IntOr(-1);
        if (id < 0) return;
        const auto found = pending.find(static_cast<std::uint64_t>(id));
        if (found == pending.end()) return;
        Finish(found->second, std::move(reply.message));
        Remove(found);
      },
      lost);

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
      call = Remove(call);
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
    call = Remove(call);
  }
}

void Server::Finish(const Pending& call, Json message) {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(now() - call.started).count();
  const std::string outcome =
      message.At("ok").BoolOr(false) ? "ok" : message.At("error").At("code").TextOr("erro");
  Log(call.tool + " -> " + outcome + " em " + std::to_string(elapsed) + " ms");
  send(ToolAnswer(call.id, call.era, ToolDocument(std::move(message))));
}

void Server::FinishError(const Pending& call, Json document) {
  Log(call.tool + " -> " + document.At("error").At("code").TextOr(""));
  send(ToolAnswer(call.id, call.era, std::move(document)));
}

void Server::Cancel(const Json& params) {
  const std::string target = core::WriteJson(params.At("requestId"));
  // Of several calls with that id, the one that was forwarded first.
  const auto first = by_client_id.lower_bound({target, 0});
  if (first == by_client_id.end() || first->first != target) return;
  const auto call = pending.find(first->second);
  const Pending& cancelled = call->second;
  Json message =
      Json::Object({{"id", next_id++}, {"op", "cancel"}, {"target", cancelled.bridge_id}});
  for (const EditorRecord& record : gateway.List()) {
    if (record.editor_id != cancelled.editor) continue;
    message.Set("token", Json::Text(record.token));
    std::string ignored;
    gateway.Send(record, message, ignored);
  }
  Log("cancelado pelo cliente: " + cancelled.tool);
  Remove(call);
}

Server::PendingCalls::iterator Server::Remove(PendingCalls::iterator call) {
  by_client_id.erase({core::WriteJson(call->second.id), call->first});
  return pending.erase(call);
}

}  // namespace zorvik::mcp
