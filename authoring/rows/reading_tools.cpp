#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {

void AppendReadingTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("editor_list", "Editores abertos", ToolKind::Read,
           "Lista os editores de mundo da ZORVIK abertos nesta maquina com a ponte de IA ligada: "
           "editor_id, processo, projeto, mundo aberto e versao. Use antes de qualquer outra "
           "ferramenta quando houver duvida sobre o destino. Nao precisa de editor aberto.",
           Schema::Object("").Closed(),
           "editors: lista de {editor_id, pid, project, project_name, world, world_id, bridge, "
           "engine_version, started}.",
           /*local=*/true));

  tools.push_back(Tool(
      "world_capabilities", "Capacidades e limites", ToolKind::Read,
      "O contrato do editor escolhido: versoes (protocolo, ponte, formato de cena), unidades e "
      "eixos (metros; +Y cima, +X leste, −Z norte; angulos em graus; ordem de rotacao), limites de "
      "dados (objetos, corpos d'agua, camadas, especies, escala, profundidade de hierarquia, "
      "amostras e pagina), tipos de mundo suportados e as familias de ferramentas disponiveis "
      "nesta versao. Leia uma vez por sessao.",
      ForEditor().Closed(), "versions, units, axes, rotation, limits, world_kinds, families."));

  tools.push_back(
      Tool("world_info", "Mundo aberto", ToolKind::Read,
           "O mundo aberto no editor: world_id, projeto, arquivo, tipo (monolitico), extensao e "
           "resolucao do relevo, faixa de altura, contagens, revisao atual, se ha alteracoes nao "
           "salvas, se ha gesto manual em andamento e se a IA esta permitida. A `revision` "
           "devolvida e a base para as ferramentas que alteram o mundo.",
           ForEditor().Closed(),
           "world_id, project, file, kind, name, terrain {width, depth, resolution, step_x, "
           "step_z, min_height, max_height}, counts, dirty, gesture_open, ai_allowed."));

  tools.push_back(Tool(
      "world_summary", "Resumo do mundo", ToolKind::Read,
      "Resumo compacto para planejar sem ler o mundo inteiro: objetos por asset, limites (bounds) "
      "do conteudo, assets referenciados que nao estao na biblioteca, estatistica do relevo e uma "
      "grade de densidade de objetos em ladrilhos de `tile` metros (ate 256 ladrilhos).",
      ForEditor()
          .Field("tile",
                 Schema::Number(
                     "Lado do ladrilho da grade de densidade, em metros (16 a 2048; padrao 128).")
                     .Min(16)
                     .Max(2048),
                 false)
          .Closed(),
      "objects_by_asset, content_bounds, missing_assets, terrain {min, max, mean}, density {tile, "
      "origin_x, origin_z, columns, rows, counts}."));

  tools.push_back(Tool(
      "objects_query", "Consultar objetos", ToolKind::Read,
      "Objetos colocados no mundo, paginados e filtrados (area, circulo, asset, nome, pai). Cada "
      "objeto traz id, asset, nome, pai, a transformacao local (x, y, z; y de uma raiz e altura "
      "sobre o chao; angulos pitch/yaw/roll em graus; escala por eixo), a posicao no mundo, a "
      "caixa envolvente no mundo e os estados (visivel, travado, solido, corpo). Ordenado por id.",
      ForEditor()
          .Field("bounds", Bounds("So objetos com a posicao no mundo dentro deste retangulo."),
                 false)
          .Field("near", Near(), false)
          .Field("asset",
                 Schema::String("Id exato do asset, ou prefixo terminado em '*'.").MaxLength(96),
                 false)
          .Field("name",
                 Schema::String("Trecho do nome, sem diferenciar maiusculas.").MaxLength(64), false)
          .Field("parent",
                 Schema::Integer("Somente filhos diretos deste objeto; 0 = somente raizes.").Min(0),
                 false)
          .Field("include_hidden", Schema::Boolean("Inclui objetos ocultos (padrao: verdadeiro)."),
                 false)
          .Field("cursor", Cursor(), false)
          .Field("limit", Limit(), false)
          .Closed(),
      "objects: lista; total: quantos passam no filtro; next_cursor quando ha mais."));

  tools.push_back(
      Tool("objects_get", "Ler objetos por id", ToolKind::Read,
           "Os objetos pedidos, com os mesmos campos de objects_query mais filhos e juntas. Ids "
           "que nao existem voltam em `missing`.",
           ForEditor().Field("ids", Ids(200, "Ids de objeto (1 a 200)."), true).Closed(),
           "objects, missing."));

  tools.push_back(Tool(
      "terrain_sample", "Amostrar o relevo", ToolKind::Read,
      "Amostra o chao numa grade regular dentro de `bounds`, de `step` em `step` metros (ate "
      "16.384 pontos). Linhas de norte para sul (z crescente), colunas de oeste para leste. "
      "Campos: height (m), slope (subida por metro), normal, material (peso de cada camada) e "
      "water (nivel e id do corpo, ou nulo). Fora do relevo o ponto vem com status 'outside'.",
      ForEditor()
          .Field("bounds", Bounds("Retangulo a amostrar."), true)
          .Field(
              "step",
              Schema::Number("Espacamento em metros (0,25 a 512; padrao: o que cabe em 64 × 64).")
                  .Min(0.25)
                  .Max(512),
              false)
          .Field("fields",
                 Schema::Array(
                     Schema::String("").Enum({"height", "slope", "normal", "material", "water"}),
                     "Padrao: height.")
                     .MaxItems(5),
                 false)
          .Closed(),
      "columns, rows, origin_x, origin_z, step, height[], slope[], normal[], material[], water[], "
      "layers (nomes das camadas)."));

  tools.push_back(Tool("water_list", "Corpos d'agua", ToolKind::Read,
                       "Os corpos d'agua (agua do mapa, lagos com contorno, rios com nos, mar) e "
                       "as cachoeiras, com id, nome, tipo, nivel, geometria e ligacoes.",
                       ForEditor().Closed(), "bodies, waterfalls, limits."));
}

}  // namespace zorvik::authoring
