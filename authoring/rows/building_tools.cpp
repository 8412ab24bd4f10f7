#include <string>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema Door() {
  return Schema::Object("A porta; so os campos presentes mudam.")
      .Field("remove", Schema::Boolean("Tira a porta do objeto."), false)
      .Field("pivot_x", Schema::Number("").Min(-100).Max(100), false)
      .Field("pivot_z", Schema::Number("").Min(-100).Max(100), false)
      .Field("open_angle", Schema::Number("").Min(-170).Max(170), false)
      .Field("speed", Schema::Number("").Min(15).Max(720), false)
      .Field("start_open", Schema::Boolean(""), false)
      .Field("radius", Schema::Number("").Min(0.5).Max(4), false)
      .Field("auto_close", Schema::Number("").Min(0).Max(600), false)
      .Field("locked", Schema::Boolean(""), false)
      .Closed();
}

}  // namespace

void AppendBuildingTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("buildings_kit_install", "Instalar o kit de construcao", ToolKind::Transaction,
           "Compila o kit de pecas de construcao (parede, piso, degrau, folha de porta, telhado e "
           "o marco da raiz) pela pipeline oficial na biblioteca do projeto "
           "(assets/biblioteca/<kit>/) e rele o catalogo. Precisa rodar uma vez por projeto antes "
           "de buildings_create; rodar de novo recompila no lugar.",
           EditorAction(
               ForEditor().Field("kit", Schema::String("Padrao zorvik_kit.").MaxLength(48), false)),
           "kit, assets, new_in_catalog, folder."));

  tools.push_back(
      Tool("buildings_list", "Construcoes", ToolKind::Read,
           "As construcoes do mapa com a especificacao (pegada, andares, vaos, paredes internas, "
           "escada, telhado), a raiz (com a altura y da base e floor_levels, a superficie de cada "
           "piso: o y de inspect_walk dentro da casa) e as pecas geradas.",
           ForEditor().Closed(), "buildings[], max."));

  tools.push_back(Tool(
      "buildings_create", "Criar construcao", ToolKind::Transaction,
      std::string("Cria uma casa em (x, z) com giro `yaw` (graus): a raiz (o marco do kit), a "
                  "especificacao e as pecas geradas (gerador buildings-1) — lajes com o vao da "
                  "escada, paredes cortadas nos vaos, paredes internas, escadas, folhas de porta "
                  "ja funcionando e o telhado —, e o relevo sob a pegada nivelado na altura da "
                  "raiz. Recusa, com o motivo, uma escada que nao cabe ou um vao de porta que nao "
                  "deixa passar quem anda. Precisa do kit (buildings_kit_install). ") +
          kAllOrNothing,
      Mutation(BuildingFields(Schema::Object("")
                                  .Field("x", Schema::Number(""), true)
                                  .Field("z", Schema::Number(""), true)
                                  .Field("yaw", Schema::Number("Graus."), false))),
      "building, pieces, foundation_samples, details; transaction."));

  tools.push_back(Tool("buildings_update", "Alterar construcao", ToolKind::Transaction,
                       "Muda a especificacao (so os campos presentes) e regera: as pecas do gerar "
                       "anterior saem e as novas entram, numa transacao. Um objeto da pessoa preso "
                       "a uma peca impede (conflict). Exige base_revision.",
                       Mutation(BuildingFields(Schema::Object("").Field("id", Id(""), true))),
                       "building, pieces, replaced, details; transaction."));

  tools.push_back(
      Tool("buildings_delete", "Excluir construcoes", ToolKind::Transaction,
           "Exclui construcoes com as pecas e a raiz (remove_pieces, padrao verdadeiro). Um objeto "
           "da pessoa preso a elas impede. O relevo nivelado fica.",
           Mutation(Schema::Object("")
                        .Field("ids", Ids(32, ""), true)
                        .Field("remove_pieces", Schema::Boolean(""), false)),
           "deleted; transaction."));

  tools.push_back(Tool("doors_list", "Portas", ToolKind::Read,
                       "As portas do mapa: o objeto, a dobradica, o angulo de abrir, a velocidade, "
                       "o alcance, fechar sozinha, trancada, e o estado agora (angulo, aberta).",
                       ForEditor().Closed(), "doors[]."));

  tools.push_back(Tool(
      "doors_configure", "Configurar porta", ToolKind::Transaction,
      "Faz de um objeto a folha de uma porta (ou muda a porta dele; remove verdadeiro tira). A "
      "folha gira em torno do eixo vertical em (pivot_x, pivot_z), metros no espaco do objeto, ate "
      "open_angle graus (-170 a 170), a speed graus/s; radius e o alcance da interacao; auto_close "
      "fecha sozinha depois de tantos segundos (0 nao fecha); locked recusa abrir. Exige "
      "base_revision.",
      Mutation(Schema::Object("").Field("object_id", Id(""), true).Field("door", Door(), true)),
      "door; transaction."));
}

}  // namespace zorvik::authoring
