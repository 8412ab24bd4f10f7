#include <string>
#include <string_view>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

// The height that black or white stands for in an image.
Schema PixelHeight(std::string_view description) {
  return Schema::Number(description).Min(-8000).Max(8000);
}

Schema LayerMaps() {
  return Schema::Object("")
      .Field("color", Schema::String(""), false)
      .Field("normal", Schema::String(""), false)
      .Field("roughness", Schema::String(""), false)
      .Field("occlusion", Schema::String(""), false)
      .Closed();
}

// The fields of a material layer. `create` makes the name required.
Schema LayerFields(Schema base, bool create) {
  base.Field("name", Schema::String("").MinLength(1).MaxLength(24), create)
      .Field("role", Schema::String("").Enum({"painted", "base", "slope", "shore"}), false)
      .Field("color", Rgb(Schema::Integer("").Min(0).Max(255), create ? "[r, g, b]" : ""), false)
      .Field("scale", Schema::Number("").Min(0.25).Max(8), false)
      .Field("maps", LayerMaps(), false);
  return base;
}

Schema NewLayer() {
  return LayerFields(Schema::Object(""), /*create=*/true).Closed();
}

Schema LayerChange() {
  return LayerFields(Schema::Object("").Field("index", Schema::Integer("").Min(0).Max(3), true),
                     /*create=*/false)
      .Closed();
}

// The fields of a plant species. `create` makes the name required.
Schema SpeciesFields(Schema base, bool create) {
  base.Field("name", Schema::String("").MinLength(1).MaxLength(24), create)
      .Field("sheet", Schema::String("").MaxLength(96), false)
      .Field("model", Schema::String("").MaxLength(96), false)
      .Field("choice", Schema::Integer("").Min(0).Max(64), false)
      .Field("size", Schema::Number("").Min(0.1).Max(8), false)
      .Field("margin", Schema::Boolean(create ? "Nasce na beira d'agua." : ""), false)
      .Field("density", Schema::Number("").Min(0).Max(2), false)
      .Field("spin", Schema::Number("").Min(0).Max(360), false)
      .Field("size_variation", Schema::Number("").Min(0).Max(0.95), false)
      .Field("brightness_variation", Schema::Number("").Min(0).Max(0.5), false)
      .Field("hue_variation", Schema::Number("").Min(0).Max(1), false);
  return base;
}

Schema NewSpecies() {
  return SpeciesFields(Schema::Object(""), /*create=*/true).Closed();
}

Schema SpeciesChange() {
  return SpeciesFields(Schema::Object("").Field("index", Schema::Integer("").Min(0).Max(31), true),
                       /*create=*/false)
      .Closed();
}

// The fields of a painting tool that say where to paint.
Schema PaintFields(Schema base) {
  base.Field("strokes", Strokes(/*sculpt=*/false), false).Field("polygon", Polygon(), false);
  return base;
}

constexpr const char* kPaintOutput = "changed, label; transaction (o pincel nao conta amostras).";

}  // namespace

void AppendTerrainTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("terrain_sculpt", "Esculpir o relevo", ToolKind::Transaction,
           std::string("Aplica tracos de pincel ao relevo, como os pinceis do editor: raise/lower "
                       "(metros no centro), flatten (puxa para target com strength 0-1), set (fixa "
                       "target), smooth, noise. `path` carimba o pincel ao longo de um caminho. As "
                       "alturas ficam dentro da faixa do mapa (world_info). Alterar relevo exige "
                       "base_revision (conflito por area de amostras). ") +
               kAllOrNothing,
           Mutation(Schema::Object("").Field("strokes", Strokes(/*sculpt=*/true), true)),
           "samples: a janela de amostras alterada; transaction."));

  tools.push_back(Tool(
      "terrain_generate", "Gerar relevo", ToolKind::Job,
      "Relevo procedural (ruido fBm, gerador fbm-1) numa area ou no mapa inteiro: altura = base + "
      "amplitude * ruido(x/scale, z/scale). mode add soma ao relevo atual; replace substitui. "
      "`falloff` e uma transicao PARA FORA da area: o relevo gerado vai diminuindo ate `falloff` "
      "metros alem de bounds (deixe bounds + falloff dentro da janela num mundo particionado). "
      "Mesma semente, parametros e versao dao o mesmo relevo. Roda como job: espera ate wait_ms "
      "(padrao 5000) e devolve o resultado, ou devolve job_id para jobs_get; ao aplicar, confere o "
      "que a pessoa mudou na mesma area enquanto calculava (conflict).",
      Mutation(
          Schema::Object("")
              .Field("bounds", Bounds("Area; omitida, o mapa inteiro."), false)
              .Field("seed", Seed("Semente (padrao 1)."), false)
              .Field("scale",
                     Schema::Number("Comprimento de onda do maior detalhe, metros (padrao 96).")
                         .Min(1)
                         .Max(20000),
                     false)
              .Field("amplitude", Schema::Number("Metros (padrao 8).").Min(0).Max(4000), false)
              .Field("base", Schema::Number("Metros (padrao 0).").Min(-4000).Max(8000), false)
              .Field("octaves", Schema::Integer("1 a 8 (padrao 4).").Min(1).Max(8), false)
              .Field("mode",
                     Schema::String("add ou replace (padrao add).").Enum({"add", "replace"}), false)
              .Field("falloff",
                     Schema::Number("Transicao para fora de bounds, metros (padrao 0).")
                         .Min(0)
                         .Max(4000),
                     false)),
      "generator, samples; transaction."));

  tools.push_back(Tool(
      "terrain_heightmap_import", "Importar heightmap", ToolKind::Transaction,
      std::string(
          "Escreve no relevo as alturas de uma imagem (PNG de 16 bits; JPG, BMP ou TGA de 8 bits). "
          "A imagem cobre image_bounds no mundo (padrao: o mapa inteiro, ou o mundo inteiro num "
          "mundo particionado): a coluna 0 e min_x e a linha 0 e min_z; preto e min_height, branco "
          "max_height (metros; padrao, a faixa do mapa). bounds limita a area escrita dentro da "
          "imagem. mode replace (padrao) troca a altura; add soma, e entao min_height e max_height "
          "sao os deslocamentos do preto e do branco. falloff (m) mistura com o relevo de antes "
          "perto da borda da area, PARA DENTRO dela. Num mundo particionado so a parte dentro da "
          "janela e escrita e remaining_cells lista as celulas da area que faltam: world_focus no "
          "centro de cada uma e chame de novo com o mesmo image_bounds — cada amostra le a imagem "
          "pela posicao no mundo, entao as janelas se encontram sem degrau. Exige "
          "base_revision. ") +
          kAllOrNothing,
      Mutation(
          Schema::Object("")
              .Field(
                  "file",
                  Schema::String("A imagem: caminho absoluto ou relativo a raiz do projeto, dentro "
                                 "do projeto, da pasta temporaria do sistema ou de mcp_permitidos.")
                      .MinLength(1)
                      .MaxLength(1024),
                  true)
              .Field("image_bounds", Bounds("O retangulo do mundo que a imagem cobre."), false)
              .Field("bounds",
                     Bounds("A area escrita (dentro de image_bounds); omitida, a imagem inteira."),
                     false)
              .Field("min_height", PixelHeight("Metros do preto (padrao: o minimo do mapa)."),
                     false)
              .Field("max_height", PixelHeight("Metros do branco (padrao: o maximo do mapa)."),
                     false)
              .Field("mode", Schema::String("replace (padrao) ou add.").Enum({"replace", "add"}),
                     false)
              .Field("falloff",
                     Schema::Number("Transicao para dentro da area, metros (padrao 0).")
                         .Min(0)
                         .Max(4000),
                     false)),
      "samples, image {width, height}, image_bounds, region, written, heights {min, max, mode}; "
      "num mundo particionado remaining_cells[] {cell, center_x, center_z}; transaction."));

  tools.push_back(Tool(
      "terrain_heightmap_export", "Exportar heightmap", ToolKind::Transaction,
      "Grava as alturas de uma area do relevo aberto num PNG de 16 bits: um pixel a cada `step` "
      "metros (padrao, a grade do relevo), coluna 0 em min_x e linha 0 em min_z; preto e "
      "min_height e branco max_height (padrao: os extremos da area). Nao muda o mundo. Num mundo "
      "particionado so a janela tem relevo carregado: a parte fora dela fica de fora e "
      "remaining_cells diz onde. O que volta (file, image_bounds, min_height, max_height) e o que "
      "terrain_heightmap_import precisa para devolver as mesmas alturas.",
      ForEditor()
          .Field("file",
                 Schema::String("Onde gravar (.png), dentro do projeto, da pasta temporaria ou de "
                                "mcp_permitidos; omitido, .zorvik/exportacoes do projeto.")
                     .MinLength(1)
                     .MaxLength(1024),
                 false)
          .Field("bounds", Bounds("A area; omitida, o que esta aberto (o mapa, ou a janela)."),
                 false)
          .Field("step",
                 Schema::Number("Metros por pixel (padrao: a grade do relevo); a imagem vai ate "
                                "4096 pixels de lado.")
                     .Min(0.01)
                     .Max(1000),
                 false)
          .Field("min_height", PixelHeight("Metros do preto."), false)
          .Field("max_height", PixelHeight("Metros do branco."), false)
          // An empty request_id passes here, so this row does not end in EditorAction.
          .Field("request_id", Schema::String("").MaxLength(64), false)
          .Field("wait_ms", Schema::Integer("").Min(0).Max(30000), false)
          .Closed(),
      "file, width, height, step, image_bounds, min_height, max_height, remaining_cells (mundo "
      "particionado), hint."));

  tools.push_back(
      Tool("surface_layers", "Camadas de material", ToolKind::Transaction,
           std::string("Cria ou altera camadas de material do relevo (ate 4). Uma camada tem nome, "
                       "papel (painted: so onde pintada; base: cobre o chao; slope: encostas; "
                       "shore: beira d'agua), cor RGB usada sem textura, escala de repeticao (0,25 "
                       "a 8 m) e mapas em assets/terrain. ") +
               kAllOrNothing,
           Mutation(Schema::Object("")
                        .Field("create", Schema::Array(NewLayer(), "").MaxItems(4), false)
                        .Field("update", Schema::Array(LayerChange(), "").MaxItems(4), false)),
           "layers: as camadas depois; transaction."));

  tools.push_back(
      Tool("surface_paint", "Pintar material", ToolKind::Transaction,
           std::string("Pinta uma camada de material por tracos de pincel ou preenchendo um "
                       "poligono. `layer` e o indice ou o nome da camada (surface_layers). ") +
               kAllOrNothing,
           Mutation(PaintFields(Schema::Object("").Field(
               "layer",
               Schema::String("Nome da camada, ou o indice escrito como numero (\"0\" a \"3\").")
                   .MinLength(1)
                   .MaxLength(24),
               true))),
           kPaintOutput));

  tools.push_back(Tool(
      "vegetation_species", "Especies de vegetacao", ToolKind::Transaction,
      std::string("Cria ou altera especies de planta do relevo (ate 32): folha de recortes "
                  "(`sheet`) ou malha (`model`, um .glb ou .gltf), tamanho, variacoes e densidade. "
                  "`sheet` e `model` sao nomes de arquivo em assets/terrain do projeto, nao ids de "
                  "asset da biblioteca: um arquivo que nao esta la e recusado com a lista dos que "
                  "estao. Uma especie nasce sem cobertura: pinte com vegetation_paint. ") +
          kAllOrNothing,
      Mutation(Schema::Object("")
                   .Field("create", Schema::Array(NewSpecies(), "").MaxItems(32), false)
                   .Field("update", Schema::Array(SpeciesChange(), "").MaxItems(32), false)),
      "species; transaction."));

  tools.push_back(Tool("vegetation_paint", "Pintar vegetacao", ToolKind::Transaction,
                       std::string("Pinta a cobertura de uma especie por tracos ou poligono. "
                                   "`species` e o nome ou o indice escrito como numero. ") +
                           kAllOrNothing,
                       Mutation(PaintFields(Schema::Object("").Field(
                           "species", Schema::String("").MinLength(1).MaxLength(24), true))),
                       kPaintOutput));
}

}  // namespace zorvik::authoring
