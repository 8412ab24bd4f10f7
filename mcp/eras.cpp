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
    "um codigo estavel e uma dica.";

Json ServerInfo() {
  return Json::Object({{"name", authoring::kServerName},
                       {"title", "ZORVIK - autoria de mundos"},
                       {"version", authoring::kServerVersion}});
}

Json Capabilities() {
  return Json::Object(
      {{"tools", Json::Object({{"listChanged", false}})}, {"logging", Json::Object()}});
}

Json SupportedList() {
  Json versions = Json::Array({authoring::kNewestProtocol});
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

  return Response(id, Json::Object({{"protocolVersion", std::move(chosen)},
                                    {"capabilities", Capabilities()},
                                    {"serverInfo", ServerInfo()},
                                    {"instructions", kInstructions}}));
}

bool Server::EraOf(const Json& id, const Json& params, Era& era, Json& failure) {
  const Json& meta = params.At("_meta");
  const Json& asked = meta.At("io.modelcontextprotocol/protocolVersion");
  if (asked.kind == Json::Kind::Text) {
    if (asked.text != authoring::kNewestProtocol) {
      failure = Failure(id, kUnsupportedVersion, "Unsupported protocol version",
                        Json::Object({{"supported", SupportedList()}, {"requested", asked}}));
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
  return Json::Object({{"supportedVersions", Json::Array({authoring::kNewestProtocol})},
                       {"capabilities", Capabilities()},
                       {"instructions", kInstructions}});
}

Json Server::Result(const Era& era, Json result) {
  if (!era.stateless) return result;
  result.Set("resultType", Json::Text("complete"));
  result.Set("_meta", Json::Object({{"io.modelcontextprotocol/serverInfo", ServerInfo()}}));
  return result;
}

}  // namespace zorvik::mcp
