#include <optional>
#include <string>
#include <utility>

#include "core/json.h"
#include "mcp/answers.h"
#include "mcp/eras.h"
#include "mcp/introduction.h"
#include "mcp/server.h"
#include "mcp/tool_list.h"

namespace zorvik::mcp {

using core::Json;

namespace {

std::string ClientLabel(const Json& info) {
  return info.At("name").TextOr("cliente") + " " + info.At("version").TextOr("");
}

}  // namespace

Server::Server(EditorGateway& editors, Sender sender, Logger logger, Now clock)
    : gateway(editors), send(std::move(sender)), log(std::move(logger)), now(std::move(clock)) {}

void Server::Receive(std::string_view line) {
  Json document;
  std::string error;
  if (!core::ParseJson(line, document, error)) {
    Log("mensagem invalida: " + error);
    send(Failure(core::Nothing, kParseError, "Parse error: " + error));
    return;
  }
  if (document.kind != Json::Kind::Array) {
    std::string answer = Handle(std::move(document));
    if (!answer.empty()) send(std::move(answer));
    return;
  }
  if (document.items.empty()) {
    send(Failure(core::Nothing, kInvalidRequest, "Invalid Request: lote vazio"));
    return;
  }
  std::string answers;
  for (Json& message : document.items) {
    const std::string answer = Handle(std::move(message));
    if (answer.empty()) continue;
    answers += answers.empty() ? '[' : ',';
    answers += answer;
  }
  if (answers.empty()) return;
  answers += ']';
  send(std::move(answers));
}

std::string Server::Handle(Json message) {
  const Json& version = message.At("jsonrpc");
  if (version.kind != Json::Kind::Text || version.text != "2.0")
    return Failure(core::Nothing, kInvalidRequest,
                   "Invalid Request: esperava um objeto JSON-RPC 2.0");
  // Without a method it is a response. The server never asks anything, so nothing waits for it.
  const Json& method = message.At("method");
  if (method.kind != Json::Kind::Text) return {};
  if (!message.Has("id")) {
    if (method.text == "notifications/cancelled") Cancel(message.At("params"));
    return {};
  }
  const Json& id = message.At("id");
  if (id.kind != Json::Kind::Text && !id.IsInteger())
    return Failure(core::Nothing, kInvalidRequest, "Invalid Request: id deve ser texto ou inteiro");
  Json params = Json::Object();
  if (Json* given = message.Find("params"); given != nullptr && given->kind == Json::Kind::Object)
    params = std::move(*given);
  return HandleRequest(id, method.text, std::move(params));
}

std::string Server::HandleRequest(const Json& id, const std::string& method, Json params) {
  if (method == "initialize") return Initialize(id, params);
  std::string failure;
  const std::optional<Era> era = EraOf(id, params, legacy_version, failure);
  if (!era) return failure;
  const Json& client = params.At("_meta").At("io.modelcontextprotocol/clientInfo");
  if (era->stateless && client.kind == Json::Kind::Object) client_label = ClientLabel(client);

  if (method == "ping") return Response(id, Result(*era, Json::Object()));
  if (method == "server/discover") return Response(id, LastingResult(*era, Discover()));
  if (method == "tools/list") return Response(id, LastingResult(*era, ToolList(*era)));
  if (method == "tools/call") return CallTool(id, *era, std::move(params));
  // The level has no effect: the log has none.
  if (method == "logging/setLevel") return Response(id, Result(*era, Json::Object()));
  return Failure(id, kMethodNotFound, "Method not found: " + method);
}

std::string Server::Initialize(const Json& id, const Json& params) {
  const std::string requested = params.At("protocolVersion").TextOr("");
  legacy_version = SettledVersion(requested);
  client_label = ClientLabel(params.At("clientInfo"));
  Log("initialize (legado): cliente pediu " + requested + ", servindo " + *legacy_version +
      " para " + client_label);
  return Response(id, Welcome(*legacy_version));
}

void Server::Log(const std::string& text) {
  if (log) log(text);
}

}  // namespace zorvik::mcp
