#include "mcp/introduction.h"

#include <utility>

#include "authoring/protocols.h"

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

Json Capabilities() {
  return Json::Object(
      {{"tools", Json::Object({{"listChanged", false}})}, {"logging", Json::Object()}});
}

}  // namespace

Json ServerInfo() {
  return Json::Object({{"name", authoring::kServerName},
                       {"title", "ZORVIK - autoria de mundos"},
                       {"version", authoring::kServerVersion}});
}

Json Welcome(std::string version) {
  return Json::Object({{"protocolVersion", std::move(version)},
                       {"capabilities", Capabilities()},
                       {"serverInfo", ServerInfo()},
                       {"instructions", kInstructions}});
}

Json Discover() {
  // The versions that are settled by `initialize` can't be chosen for a single request, so they are
  // not named here.
  return Json::Object({{"supportedVersions", Json::Array({authoring::kNewestProtocol})},
                       {"capabilities", Capabilities()},
                       {"instructions", kInstructions}});
}

}  // namespace zorvik::mcp
