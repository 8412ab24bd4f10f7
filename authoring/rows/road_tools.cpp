#include <string>
#include <string_view>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema GroundPolygon() {
  return Schema::Array(Point2(), "Poligono em planta, 3 a 64 pontos dentro do relevo.")
      .MinItems(3)
      .MaxItems(64);
}

Schema RoadNode() {
  return Schema::Object("")
      .Field("x", Schema::Number(""), true)
      .Field("z", Schema::Number(""), true)
      .Field("width", Schema::Number("Metros (padrao 6).").Min(1).Max(40), false)
      .Field("height", Schema::Number("Altura fixa do leito, metros absolutos."), false)
      .Closed();
}

Schema Junction() {
  return Schema::Object("")
      .Field("node", Schema::Integer("").Min(0), true)
      .Field("road", Id(""), true)
      .Field("other_node", Schema::Integer("").Min(0), true)
      .Closed();
}

Schema Bridge() {
  return Schema::Object("")
      .Field("from", Schema::Integer("").Min(0), true)
      .Field("to", Schema::Integer("").Min(1), true)
      .Field("asset", Schema::String("Asset da peca (vazio: so nao mexe no relevo).").MaxLength(96),
             false)
      .Field("deck", Schema::Number("Altura do tabuleiro; 0 liga as pontas."), false)
      .Closed();
}

Schema Road() {
  return Schema::Object("")
      .Field("id", Id("Omitido: estrada nova."), false)
      .Field("name", Schema::String("").MaxLength(64), false)
      .Field("nodes", Schema::Array(RoadNode(), "").MinItems(2).MaxItems(256), false)
      .Field("profile", Schema::String("flat (padrao) ou crowned.").Enum({"flat", "crowned"}),
             false)
      .Field("fit", Schema::String("follow (padrao) ou ramp.").Enum({"follow", "ramp"}), false)
      .Field("shoulder",
             Schema::Number("Acostamento de cada lado, metros (0 a 10; padrao 1).").Min(0).Max(10),
             false)
      .Field("embankment",
             Schema::Number("Talude, a transicao ate o relevo, metros (0 a 50; padrao 4).")
                 .Min(0)
                 .Max(50),
             false)
      .Field(
          "max_grade",
          Schema::Number("Inclinacao maxima em % com fit ramp (1 a 40; padrao 12).").Min(1).Max(40),
          false)
      .Field("layer",
             Schema::String("Camada de material do leito (nome ou indice); vazio: nenhuma.")
                 .MaxLength(64),
             false)
      .Field("clear_plants",
             Schema::Boolean("Tira as plantas do leito e do acostamento (padrao: verdadeiro)."),
             false)
      .Field(
          "junctions",
          Schema::Array(Junction(),
                        "O no `node` desta estrada encosta no no `other_node` da estrada `road`.")
              .MaxItems(16),
          false)
      .Field("bridges", Schema::Array(Bridge(), "").MaxItems(8), false)
      .Field("seed", Seed(""), false)
      .Closed();
}

Schema RegionMaterial() {
  return Schema::Object("")
      .Field("layer", Schema::String("Nome ou indice.").MaxLength(64), true)
      .Field("weight", Schema::Number("").Min(0).Max(1), false)
      .Closed();
}

Schema RegionPlant() {
  return Schema::Object("")
      .Field("species", Schema::String("Nome ou indice.").MaxLength(64), true)
      .Field("cover", Schema::Number("").Min(0).Max(1), false)
      .Closed();
}

Schema RegionRelief() {
  return Schema::Object(
             "Ruido somado ao relevo: amplitude (m), escala (m), semente, deslocamento (m).")
      .Field("amplitude", Schema::Number("").Min(0).Max(200), false)
      .Field("scale", Schema::Number("").Min(4).Max(2048), false)
      .Field("seed", Seed(""), false)
      .Field("offset", Schema::Number("").Min(-200).Max(200), false)
      .Closed();
}

Schema Region() {
  return Schema::Object("")
      .Field("id", Id("Omitido: regiao nova."), false)
      .Field("name", Schema::String("").MaxLength(64), false)
      .Field("polygon", GroundPolygon(), false)
      .Field("priority", Schema::Integer("-1000 a 1000 (padrao 0).").Min(-1000).Max(1000), false)
      .Field("transition",
             Schema::Number(
                 "Metros para dentro da borda em que o peso sobe de 0 a 1 (0 a 200; padrao 8).")
                 .Min(0)
                 .Max(200),
             false)
      .Field("materials", Schema::Array(RegionMaterial(), "").MaxItems(4), false)
      .Field("plants", Schema::Array(RegionPlant(), "").MaxItems(32), false)
      .Field("relief", RegionRelief(), false)
      .Closed();
}

Schema WeightedAsset() {
  return Schema::Object("")
      .Field("asset", Schema::String("").MinLength(1).MaxLength(96), true)
      .Field("weight", Schema::Number("Padrao 1.").Min(0.001).Max(1000), false)
      .Closed();
}

// A value drawn between two ends.
Schema Range(double least, double most, std::string_view description) {
  return Schema::Object(description)
      .Field("min", Schema::Number("").Min(least).Max(most), false)
      .Field("max", Schema::Number("").Min(least).Max(most), false)
      .Closed();
}

Schema ScatterRule() {
  return Schema::Object("")
      .Field("id", Id("Omitido: regra nova."), false)
      .Field("name", Schema::String("").MaxLength(64), false)
      .Field("region", Schema::Integer("Id da regiao que da a area.").Min(0), false)
      .Field("polygon", GroundPolygon(), false)
      .Field("assets", Schema::Array(WeightedAsset(), "").MinItems(1).MaxItems(16), false)
      .Field("density", Schema::Number("Por 100 m2 (0,001 a 50; padrao 1).").Min(0.001).Max(50),
             false)
      .Field("seed", Seed(""), false)
      .Field("min_distance",
             Schema::Number("Metros entre instancias (0 a 100; padrao 2).").Min(0).Max(100), false)
      .Field("max_slope", Schema::Number("Graus (0 a 90; padrao 30).").Min(0).Max(90), false)
      .Field("min_height", Schema::Number(""), false)
      .Field("max_height", Schema::Number(""), false)
      .Field("water_distance", Schema::Number("Metros da agua (0 a 500).").Min(0).Max(500), false)
      .Field("road_distance",
             Schema::Number("Metros da borda das estradas (0 a 500).").Min(0).Max(500), false)
      .Field("exclusions",
             Schema::Array(GroundPolygon(), "Zonas sem instancias (ate 8).").MaxItems(8), false)
      .Field("align_normal", Schema::Number("0 em pe, 1 deitado na normal do chao.").Min(0).Max(1),
             false)
      .Field("yaw", Range(-720, 720, "Faixa de giro em graus."), false)
      .Field("scale", Range(0.1, 4, "Faixa de escala (0,1 a 4)."), false)
      .Field("solid", Schema::Boolean("As instancias colidem (padrao: verdadeiro)."), false)
      .Closed();
}

}  // namespace

void AppendRoadTools(std::vector<ToolSpec>& tools) {
  tools.push_back(Tool("roads_list", "Estradas", ToolKind::Read,
                       "As estradas do mapa com o traçado (nos com largura e altura fixa), perfil, "
                       "acostamento, talude, camada, encaixe, inclinacao maxima, juncoes, pontes, "
                       "as pecas que o ultimo bake criou e o comprimento.",
                       ForEditor().Closed(), "roads[], max."));

  tools.push_back(
      Tool("roads_upsert", "Criar ou alterar estrada", ToolKind::Transaction,
           "Cria uma estrada (sem `id`) ou altera uma existente (com `id`; so os campos presentes "
           "mudam, e base_revision e obrigatoria). Muda so os parametros: o relevo muda com "
           "roads_bake. Nos: 2 a 256, largura 1 a 40 m; `height` fixa a altura do leito naquele "
           "no. Perfil flat ou crowned (abaulado); encaixe follow (suaviza o relevo ao longo do "
           "eixo) ou ramp (limita a inclinacao a max_grade %). Pontes: intervalo de nos [from, to] "
           "com um asset posto ao longo do trecho; deck 0 liga as alturas das pontas.",
           Mutation(Schema::Object("").Field("road", Road(), true)),
           "road (como em roads_list), created; transaction."));

  tools.push_back(
      Tool("roads_delete", "Excluir estradas", ToolKind::Transaction,
           "Exclui estradas (as juncoes para elas saem junto). remove_pieces (padrao verdadeiro) "
           "apaga tambem as pecas de ponte que o bake criou; um objeto preso a uma peca impede "
           "(conflict). O relevo ja assado fica: history_revert do bake desfaz.",
           Mutation(Schema::Object("")
                        .Field("ids", Ids(64, "Ids (1 a 64)."), true)
                        .Field("remove_pieces", Schema::Boolean(""), false)),
           "deleted, pieces_removed; transaction."));

  tools.push_back(Tool(
      "roads_bake", "Assar estrada", ToolKind::Job,
      std::string("Aplica a estrada ao mapa (gerador roads-1): leito no eixo (seguindo o relevo "
                  "suavizado ou em rampa), acostamento, talude ate o relevo, material do leito, "
                  "plantas tiradas e as pecas das pontes (as do bake anterior sao substituidas). A "
                  "mesma estrada sobre o mesmo relevo da o mesmo resultado. Nao desfaz o bake "
                  "anterior: mover o traçado e assar de novo aplaina o corredor novo. ") +
          kRunsAsJob,
      Mutation(Schema::Object("").Field("id", Id("A estrada."), true)),
      "generator, samples, created, removed, details; transaction."));

  tools.push_back(Tool("regions_list", "Regioes", ToolKind::Read,
                       "As regioes/biomas do mapa: poligono, prioridade, transicao, regras de "
                       "material (camada e peso), de plantas (especie e cobertura) e de relevo.",
                       ForEditor().Closed(), "regions[], max."));

  tools.push_back(Tool("regions_upsert", "Criar ou alterar regiao", ToolKind::Transaction,
                       "Cria uma regiao (sem `id`) ou altera uma (com `id`; so os campos presentes "
                       "mudam, base_revision obrigatoria). Muda so os parametros: o mapa muda com "
                       "regions_apply. Onde regioes se sobrepoem, a de maior prioridade (e menor "
                       "id no empate) leva o peso da sua transicao e o resto vai as proximas.",
                       Mutation(Schema::Object("").Field("region", Region(), true)),
                       "region, created; transaction."));

  tools.push_back(Tool("regions_delete", "Excluir regioes", ToolKind::Transaction,
                       "Exclui regioes. Recusa se uma regra de distribuicao usa a regiao como "
                       "area. O que a regiao ja aplicou continua no mapa.",
                       Mutation(Schema::Object("").Field("ids", Ids(64, "Ids (1 a 64)."), true)),
                       "deleted; transaction."));

  tools.push_back(Tool(
      "regions_apply", "Aplicar regioes", ToolKind::Job,
      std::string("Aplica as regioes pedidas (todas, sem `ids`) ao material, as plantas e ao "
                  "relevo (gerador regions-1). Cada amostra combina todas as regioes que a contem, "
                  "pela prioridade: o resultado nao depende da ordem de criacao. Material e "
                  "plantas sao alvos (aplicar de novo so muda a faixa de transicao); o relevo e "
                  "somado, entao desligue `relief` para reaplicar so material ou plantas. ") +
          kRunsAsJob,
      Mutation(Schema::Object("")
                   .Field("ids", Schema::Array(Id(""), "").MaxItems(64), false)
                   .Field("material", Schema::Boolean("Padrao verdadeiro."), false)
                   .Field("plants", Schema::Boolean("Padrao verdadeiro."), false)
                   .Field("relief", Schema::Boolean("Padrao verdadeiro."), false)),
      "generator, samples, details; transaction."));

  tools.push_back(
      Tool("scatter_list", "Regras de distribuicao", ToolKind::Read,
           "As regras de distribuicao procedural: area (regiao ou poligono), assets com peso, "
           "densidade, semente, filtros e quantas instancias estao livres, ajustadas (a pessoa "
           "mexeu: o gerador nao toca) ou removidas (a pessoa apagou: nao volta).",
           ForEditor().Closed(), "rules[], max."));

  tools.push_back(Tool("scatter_upsert", "Criar ou alterar regra de distribuicao",
                       ToolKind::Transaction,
                       "Cria uma regra (sem `id`) ou altera uma (com `id`; so os campos presentes "
                       "mudam, base_revision obrigatoria). Muda so os parametros: as instancias "
                       "mudam com scatter_run. Area: `region` (id) ou `polygon`; passar um tira o "
                       "outro. Densidade em instancias por 100 m2.",
                       Mutation(Schema::Object("").Field("rule", ScatterRule(), true)),
                       "rule, created; transaction."));

  tools.push_back(Tool("scatter_delete", "Excluir regras de distribuicao", ToolKind::Transaction,
                       "Exclui regras. remove_instances (padrao verdadeiro) apaga as instancias "
                       "livres; as ajustadas pela pessoa ficam como objetos comuns.",
                       Mutation(Schema::Object("")
                                    .Field("ids", Ids(64, "Ids (1 a 64)."), true)
                                    .Field("remove_instances", Schema::Boolean(""), false)),
                       "deleted, instances_removed; transaction."));

  tools.push_back(Tool(
      "scatter_run", "Rodar distribuicao", ToolKind::Job,
      std::string("Gera ou atualiza as instancias da regra (gerador scatter-1): candidatos numa "
                  "grade com tremor pela semente, filtros de area, exclusao, declividade, "
                  "altitude, agua e estradas, e o espacamento minimo. Instancias livres acompanham "
                  "a regra; ajustadas e removidas pela pessoa nunca sao tocadas nem recriadas. A "
                  "mesma regra sobre o mesmo mapa da o mesmo resultado. ") +
          kRunsAsJob,
      Mutation(Schema::Object("").Field("id", Id("A regra."), true)),
      "generator, created, updated, removed, kept, details; transaction."));
}

}  // namespace zorvik::authoring
