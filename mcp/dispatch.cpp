#include <string>
#include <utility>

#include "core/json.h"
#include "mcp/json_rpc.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::Json;
using core::WriteJson;

Server::Server(EditorGateway& editors, Sender sender, Logger logger, Now clock)
    : gateway(editors), send(std::move(sender)), log(std::move(logger)), now(std::move(clock)) {}

void Server::Receive(std::string_view line) {
  Json document;
  std::string error;
  if (!core::ParseJson(line, document, error)) {
    Log("mensagem invalida: " + error);
    send(WriteJson(Failure(core::Nothing, kParseError, "Parse error: " + error, Json())));
    return;
  }
  if (document.kind != Json::Kind::Array) {
    const Json answer = Handle(std::move(document));
    if (answer.kind != Json::Kind::Null) send(WriteJson(answer));
    return;
  }
  if (document.items.empty()) {
    send(WriteJson(Failure(core::Nothing, kInvalidRequest, "Invalid Request: lote vazio", Json())));
    return;
  }
  Json answers = Json::Array();
  for (Json& message : document.items) {
    Json answer = Handle(std::move(message));
    if (answer.kind != Json::Kind::Null) answers.Add(std::move(answer));
  }
  if (!answers.items.empty()) send(WriteJson(answers));
}

Json Server::Handle(Json message) {
  const Json& version = message.At("jsonrpc");
  if (version.kind != Json::Kind::Text || version.text != "2.0") {
    return Failure(core::Nothing, kInvalidRequest,
                   "Invalid Request: esperava um objeto JSON-RPC 2.0", Json());
  }
  // Responses of the client have no method; the server never asks, so there is nothing to match.
  const Json& method = message.At("method");
  if (method.kind != Json::Kind::Text) return Json();
  if (!message.Has("id")) {
    if (method.text == "notifications/cancelled") Cancel(message.At("params"));
    return Json();
  }
  const Json& id = message.At("id");
  if (id.kind != Json::Kind::Text && !id.IsInteger()) {
    return Failure(core::Nothing, kInvalidRequest, "Invalid Request: id deve ser texto ou inteiro",
                   Json());
  }
  Json params = Json::Object();
  if (Json* given = message.Find("params"); given != nullptr && given->kind == Json::Kind::Object)
    params = std::move(*given);
  return HandleRequest(id, method.text, std::move(params));
}

Json Server::HandleRequest(const Json& id, const std::string& method, Json params) {
  if (method == "initialize") return Initialize(id, params);
  Era era;
  Json failure;
  if (!EraOf(id, params, era, failure)) return failure;
  if (method == "ping") return Response(id, Result(era, Json::Object()));
  if (method == "server/discover") return Response(id, Result(era, Discover()));
  if (method == "tools/list") return Response(id, Result(era, ToolList(era)));
  if (method == "tools/call") return CallTool(id, era, std::move(params));
  // The level has no effect: the log has none.
  if (method == "logging/setLevel") return Response(id, Result(era, Json::Object()));
  return Failure(id, kMethodNotFound, "Method not found: " + method, Json());
}

Json Server::Response(const Json& id, Json result) {
  return Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

Json Server::Failure(const Json& id, int code, std::string message, Json data) {
  Json error = Json::Object({{"code", code}, {"message", std::move(message)}});
  if (data.kind != Json::Kind::Null) error.Set("data", std::move(data));
  return Json::Object({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}});
}

void Server::Log(const std::string& text) {
  if (log) log(text);
}

}  // namespace zorvik::mcp
