#include <string>
#include <utility>

#include "authoring/protocols.h"
#include "core/json.h"
#include "mcp/json_rpc.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::Json;

namespace {

constexpr const char* kInstructions =
    "Servidor de autoria de mundos da ZORVIK: controla o editor de mundo aberto nesta maquina, que "
    "a pessoa acompanha e pode editar ao mesmo tempo. Comece por world_capabilities (unidades, "
    "eixos, limites) e world_info (o mundo aberto e a `revision`). Unidades em metros e graus; +Y "
    "para cima, +X leste, -Z norte; o y de um objeto raiz e a altura sobre o chao. Leituras sao "
    "paginadas (cursor/limit) e filtraveis por area: nao peca o mundo inteiro. Com mais de um "
    "editor aberto, passe editor_id (editor_list). Erros vem em structuredContent.error.code com "
    "um "
    "codigo estavel e uma dica.";

Json ServerInfo() {
  Json info = Json::Object();
  info.Set("name", Json::Text(authoring::kServerName));
  info.Set("title", Json::Text("ZORVIK - autoria de mundos"));
  info.Set("version", Json::Text(authoring::kServerVersion));
  return info;
}

Json Capabilities() {
  Json tools = Json::Object();
  tools.Set("listChanged", Json::Bool(false));
  Json capabilities = Json::Object();
  capabilities.Set("tools", std::move(tools));
  capabilities.Set("logging", Json::Object());
  return capabilities;
}

Json SupportedList() {
  Json versions = Json::Array();
  versions.Add(Json::Text(authoring::kNewestProtocol));
  for (const std::string& version : authoring::LegacyProtocols()) versions.Add(Json::Text(version));
  return versions;
}

std::string ClientLabel(const Json& info) {
  return info.At("name").TextOr("cliente") + " " + info.At("version").TextOr("");
}

}  // namespace

Json Server::Initialize(const Json& id, const Json& params) {
  const std::string requested = params.At("protocolVersion").TextOr("");
  std::string chosen = authoring::LegacyProtocols().front();
  for (const std::string& version : authoring::LegacyProtocols())
    if (version == requested) chosen = version;
  legacy_version = chosen;
  client_label = ClientLabel(params.At("clientInfo"));
  Log("initialize (legado): cliente pediu " + requested + ", servindo " + chosen + " para " +
      client_label);

  Json result = Json::Object();
  result.Set("protocolVersion", Json::Text(std::move(chosen)));
  result.Set("capabilities", Capabilities());
  result.Set("serverInfo", ServerInfo());
  result.Set("instructions", Json::Text(kInstructions));
  return Response(id, std::move(result));
}

bool Server::EraOf(const Json& id, const Json& params, Era& era, Json& failure) {
  const Json& meta = params.At("_meta");
  const Json& asked = meta.At("io.modelcontextprotocol/protocolVersion");
  if (asked.kind == Json::Kind::Text) {
    if (asked.text != authoring::kNewestProtocol) {
      Json data = Json::Object();
      data.Set("supported", SupportedList());
      data.Set("requested", asked);
      failure = Failure(id, kUnsupportedVersion, "Unsupported protocol version", std::move(data));
      return false;
    }
    if (meta.At("io.modelcontextprotocol/clientCapabilities").kind != Json::Kind::Object) {
      failure =
          Failure(id, kInvalidParams,
                  "Invalid params: _meta sem io.modelcontextprotocol/clientCapabilities", Json());
      return false;
    }
    era = Era{true, authoring::kNewestProtocol};
    const Json& info = meta.At("io.modelcontextprotocol/clientInfo");
    if (info.kind == Json::Kind::Object) client_label = ClientLabel(info);
    return true;
  }
  if (legacy_version) {
    era = Era{false, *legacy_version};
    return true;
  }
  std::string versions;
  for (const Json& version : SupportedList().items) {
    if (!versions.empty()) versions += ", ";
    versions += version.text;
  }
  failure = Failure(id, kInvalidRequest,
                    "Sem initialize e sem _meta.io.modelcontextprotocol/protocolVersion; versoes "
                    "suportadas: " +
                        versions,
                    Json());
  return false;
}

Json Server::Discover() {
  // The versions that are settled by `initialize` can't be chosen for a single request, so they are
  // not named here.
  Json versions = Json::Array();
  versions.Add(Json::Text(authoring::kNewestProtocol));
  Json result = Json::Object();
  result.Set("supportedVersions", std::move(versions));
  result.Set("capabilities", Capabilities());
  result.Set("instructions", Json::Text(kInstructions));
  return result;
}

Json Server::Result(const Era& era, Json result) {
  if (!era.stateless) return result;
  Json meta = Json::Object();
  meta.Set("io.modelcontextprotocol/serverInfo", ServerInfo());
  result.Set("resultType", Json::Text("complete"));
  result.Set("_meta", std::move(meta));
  return result;
}

}  // namespace zorvik::mcp
