#include "authoring/fragments.h"

#include <utility>

namespace zorvik::authoring {
namespace {

// The side of a wall, and the way that a stair climbs.
Schema Side(std::string_view description) {
  return Schema::String(description).Enum({"north", "east", "south", "west"});
}

// The strength of a painting brush.
Schema Coverage() {
  return Schema::Number("0 a 1 (padrao 1).").Min(0).Max(1);
}

Schema Opening() {
  return Schema::Object("Um vao numa parede externa.")
      .Field("floor", Schema::Integer("Andar, 0 o terreo.").Min(0).Max(2), true)
      .Field("wall", Side("north (-Z), east (+X), south (+Z) ou west (-X)."), true)
      .Field("offset",
             Schema::Number("Do centro da parede, metros, ao longo dela (+x nas paredes norte e "
                            "sul, +z nas outras)."),
             false)
      .Field("kind", Schema::String("door (padrao) ou window.").Enum({"door", "window"}), false)
      .Field("width",
             Schema::Number("Metros (porta: pelo menos 0,8; padrao 1,0; janela: 1,2).")
                 .Min(0.4)
                 .Max(10),
             false)
      .Field("height",
             Schema::Number("Metros (porta: pelo menos 2,0; padrao 2,1; janela: 1,0).")
                 .Min(0.4)
                 .Max(4),
             false)
      .Field("sill",
             Schema::Number("Peitoril, metros (porta: 0; janela: padrao 1,0).").Min(0).Max(4),
             false)
      .Closed();
}

Schema Partition() {
  return Schema::Object("Uma parede interna.")
      .Field("floor", Schema::Integer("").Min(0).Max(2), true)
      .Field("axis",
             Schema::String("x: parede em x=at, ao longo de z; z: em z=at, ao longo de x.")
                 .Enum({"x", "z"}),
             true)
      .Field("at", Schema::Number(""), true)
      .Field("from", Schema::Number(""), true)
      .Field("to", Schema::Number(""), true)
      .Field("door_at", Schema::Number("Centro do vao de porta."), false)
      .Field("door_width", Schema::Number("0: sem vao.").Min(0).Max(5), false)
      .Closed();
}

Schema Stairs() {
  return Schema::Object(
             "Escada reta de andar em andar (lances lado a lado); enabled false tira. Espelho de "
             "ate 0,20 m e piso de 0,28 m.")
      .Field("enabled", Schema::Boolean("Padrao verdadeiro."), false)
      .Field("x", Schema::Number("O pe da escada, metros no espaco da casa."), false)
      .Field("z", Schema::Number(""), false)
      .Field("direction", Side("Para onde sobe."), false)
      .Field("width", Schema::Number("Metros (0,9 a 3; padrao 1).").Min(0.9).Max(3), false)
      .Closed();
}

Schema AssetReduction() {
  return Schema::Object("Reducao pela pipeline; sem estes campos o modelo fica como veio.")
      .Field("target_triangles",
             Schema::Integer("Orcamento de triangulos (0: nao simplifica).").Min(0).Max(10000000),
             false)
      .Field("max_texture_side",
             Schema::Integer("Lado maximo das texturas (0: como vieram).").Min(0).Max(16384), false)
      .Field("keep_colors", Schema::Boolean(""), false)
      .Field("compute_missing_normals", Schema::Boolean(""), false)
      .Field("hull_vertices",
             Schema::Integer("Vertices do casco convexo (0: sem casco).").Min(0).Max(256), false)
      .Closed();
}

}  // namespace

ToolSpec Tool(const char* name, const char* title, ToolKind kind, std::string description,
              const Schema& input, std::string_view output_description, bool local) {
  std::string operation = name;
  operation.replace(operation.find('_'), 1, ".");
  return {name,
          std::move(operation),
          title,
          std::move(description),
          kind,
          local,
          input.Document(),
          Envelope(output_description).Document()};
}

Schema Envelope(std::string_view description) {
  return Schema::Object(description)
      .Field("ok", Schema::Boolean("Verdadeiro no sucesso."), true)
      .Field("revision", Schema::Integer("Revisao do mundo em que a resposta foi calculada."),
             false)
      .Field("warnings", Schema::Array(Schema::String(""), ""), false)
      .Field("error",
             Schema::Object("Com ok falso: code (estavel), message, hint e details.").Open(), false)
      .Open();
}

Schema ForEditor() {
  return Schema::Object("").Field("editor_id", EditorId(), false);
}

Schema Mutation(Schema base) {
  base.Field("editor_id", EditorId(), false)
      .Field("base_revision",
             Schema::Integer("A revisao que voce leu (world_info, objects_query...). Obrigatoria "
                             "para alterar ou excluir o que ja existe: se outro autor mudou o "
                             "mesmo elemento depois dela, nada e aplicado e o erro conflict lista "
                             "o que mudou.")
                 .Min(0),
             false)
      .Field("request_id",
             Schema::String("Id seu para este pedido (1 a 64 caracteres A-Z a-z 0-9 _ . : -). "
                            "Repetir o mesmo request_id devolve o resultado guardado, sem aplicar "
                            "de novo.")
                 .MinLength(1)
                 .MaxLength(64),
             false)
      .Field("label",
             Schema::String("O rotulo no historico (Desfazer/Reverter). Padrao: uma descricao do "
                            "que mudou.")
                 .MaxLength(80),
             false)
      .Field(
          "group",
          Schema::String("Junta varias transacoes de um mesmo plano no historico.").MaxLength(64),
          false)
      .Field("wait_ms",
             Schema::Integer("Quanto esperar se a pessoa estiver no meio de um gesto (0 a 30000; "
                             "padrao 5000).")
                 .Min(0)
                 .Max(30000),
             false)
      .Closed();
  return base;
}

Schema EditorAction(Schema base) {
  base.Field("request_id", Schema::String("").MinLength(1).MaxLength(64), false)
      .Field("wait_ms", Schema::Integer("").Min(0).Max(30000), false)
      .Closed();
  return base;
}

Schema EditorId() {
  return Schema::String(
             "Qual editor aberto recebe o pedido (editor_list mostra os ids). Omitido: o unico "
             "editor aberto; com mais de um, a ferramenta recusa com ambiguous_editor.")
      .MaxLength(64);
}

Schema Cursor() {
  return Schema::String("O `next_cursor` da pagina anterior; omitido, a primeira pagina.")
      .MaxLength(64);
}

Schema Limit() {
  return Schema::Integer("Itens por pagina (1 a 200; padrao 50).").Min(1).Max(200);
}

Schema Id(std::string_view description) {
  return Schema::Integer(description).Min(1);
}

Schema Ids(int max_items, std::string_view description) {
  return Schema::Array(Id(""), description).MinItems(1).MaxItems(max_items);
}

Schema Seed(std::string_view description) {
  return Schema::Integer(description).Min(0).Max(4294967295.0);
}

Schema Rgb(Schema component, std::string_view description) {
  return Schema::Array(std::move(component), description).MinItems(3).MaxItems(3);
}

Schema Bounds(std::string_view description) {
  return Schema::Object(description)
      .Field("min_x", Schema::Number("Oeste, em metros."), true)
      .Field("min_z", Schema::Number("Norte (−Z), em metros."), true)
      .Field("max_x", Schema::Number("Leste, em metros."), true)
      .Field("max_z", Schema::Number("Sul (+Z), em metros."), true)
      .Closed();
}

Schema Near() {
  return Schema::Object(
             "Circulo em planta: so o que tem a posicao a ate `radius` metros de (x, z).")
      .Field("x", Schema::Number(""), true)
      .Field("z", Schema::Number(""), true)
      .Field("radius", Schema::Number("Metros.").Min(0).Max(20000), true)
      .Closed();
}

Schema Point2() {
  return Schema::Object("")
      .Field("x", Schema::Number(""), true)
      .Field("z", Schema::Number(""), true)
      .Closed();
}

Schema Vec3(std::string_view description) {
  return Schema::Object(description)
      .Field("x", Schema::Number(""), false)
      .Field("y", Schema::Number(""), false)
      .Field("z", Schema::Number(""), false)
      .Closed();
}

Schema Body(std::string_view description) {
  return Schema::Object(description)
      .Field("radius", Schema::Number("").Min(0.05).Max(5), false)
      .Field("height", Schema::Number("").Min(0.2).Max(10), false)
      .Field("step", Schema::Number("").Min(0).Max(2), false)
      .Closed();
}

Schema Strokes(bool sculpt) {
  Schema stroke = Schema::Object("");
  stroke.Field("x", Schema::Number("Centro, metros."), true)
      .Field("z", Schema::Number("Centro, metros."), true)
      .Field("radius", Schema::Number("Metros (dentro do minimo e do maximo do mapa).").Min(0.25),
             true)
      .Field("path",
             Schema::Array(Point2(),
                           "Pontos seguintes do traco: o pincel e carimbado ao longo do caminho, a "
                           "cada quarto de raio.")
                 .MaxItems(256),
             false)
      .Field("falloff",
             Schema::String("Queda do pincel: smooth (padrao), linear, firm, constant.")
                 .Enum({"smooth", "linear", "firm", "constant"}),
             false)
      .Field("shape",
             Schema::String("Forma do pincel: circle (padrao), square, diamond, ring.")
                 .Enum({"circle", "square", "diamond", "ring"}),
             false);
  if (sculpt) {
    stroke
        .Field("mode",
               Schema::String("raise (sobe strength metros no centro), lower, flatten (puxa para "
                              "target), set (fixa target), smooth, noise (amplitude strength "
                              "metros).")
                   .Enum({"raise", "lower", "flatten", "set", "smooth", "noise"}),
               true)
        .Field("strength",
               Schema::Number("raise/lower/noise: metros no centro; flatten/smooth: 0 a 1.")
                   .Min(0)
                   .Max(500),
               false)
        .Field("target", Schema::Number("flatten/set: altura alvo, metros absolutos."), false);
  } else {
    stroke.Field("strength", Coverage(), false)
        .Field("erase", Schema::Boolean("Apaga em vez de pintar."), false);
  }
  return Schema::Array(std::move(stroke.Closed()), "Tracos, aplicados em ordem (1 a 256).")
      .MinItems(1)
      .MaxItems(256);
}

Schema Polygon() {
  return Schema::Object(
             "Preenche um poligono (3 a 256 pontos) com transicao de `feather` metros na borda.")
      .Field("points", Schema::Array(Point2(), "").MinItems(3).MaxItems(256), true)
      .Field("strength", Coverage(), false)
      .Field("feather", Schema::Number("Metros (padrao 0).").Min(0).Max(512), false)
      .Field("erase", Schema::Boolean(""), false)
      .Closed();
}

Schema ObjectFields(Schema base, bool create) {
  constexpr const char* kPosition = "Metros. Raiz: posicao no mundo; filho: no espaco do pai.";
  base.Field("asset",
             Schema::String("Id do asset da biblioteca (assets_list).").MinLength(1).MaxLength(96),
             create)
      .Field("name", Schema::String("Nome da instancia.").MaxLength(64), false)
      .Field("x", Schema::Number(kPosition), create)
      .Field("z", Schema::Number(kPosition), create)
      .Field("y",
             Schema::Number("Metros. Raiz: altura sobre o chao (y_mode ground_offset) ou absoluta "
                            "(absolute); filho: no espaco do pai."),
             false)
      .Field("y_mode",
             Schema::String("ground_offset (padrao) ou absolute, so para raizes.")
                 .Enum({"ground_offset", "absolute"}),
             false)
      .Field("pitch", Schema::Number("Graus, em X."), false)
      .Field("yaw", Schema::Number("Graus, em Y (positivo gira +Z para +X)."), false)
      .Field("roll", Schema::Number("Graus, em Z."), false)
      .Field("scale", Schema::Number("Escala uniforme (0,1 a 4).").Min(0.1).Max(4), false)
      .Field("scale_xyz", Vec3("Escala por eixo (0,1 a 4)."), false)
      .Field("parent", Schema::Integer("Id do pai; 0 torna raiz.").Min(0), false)
      .Field("visible", Schema::Boolean(""), false)
      .Field("locked", Schema::Boolean("Travado: o editor (e a IA) nao o mudam mais."), false)
      .Field("solid", Schema::Boolean("Colide com quem anda."), false)
      .Field("draw_distance",
             Schema::Number("Distancia maxima de desenho em metros, da camera a caixa do objeto; 0 "
                            "(padrao) e sem limite.")
                 .Min(0)
                 .Max(5000),
             false)
      .Field("cast_shadow",
             Schema::Boolean("Projeta sombra (padrao: verdadeiro). A chuva continua batendo nele."),
             false)
      .Field("tint",
             Rgb(Schema::Number("").Min(0).Max(2),
                 "Tinta da copia: multiplicador linear [r, g, b] de 0 a 2 sobre a cor do asset; "
                 "[1, 1, 1] (padrao) e a cor dele. Nao quebra a instanciacao."),
             false)
      .Field("tint_hex",
             Schema::String("A tinta como cor sRGB \"#rrggbb\" (#ffffff = 1): a mesma tinta de "
                            "tint, escolhida como cor.")
                 .MinLength(7)
                 .MaxLength(7),
             false)
      .Field("color_variation",
             Schema::Number("Quanto o valor da cor varia entre copias, sorteado pelo id (0 a 0,5; "
                            "o matiz varia junto); -1 (padrao) usa a variacao do asset "
                            "(variacao_cor e variacao_matiz no asset.zorvik).")
                 .Min(-1)
                 .Max(0.5),
             false)
      .Field("body",
             Schema::String("Corpo fisico: none, dynamic ou kinematic.")
                 .Enum({"none", "dynamic", "kinematic"}),
             false)
      .Field("mass", Schema::Number("kg.").Min(0.001).Max(100000), false)
      .Field("friction", Schema::Number("").Min(0).Max(10), false)
      .Field("restitution", Schema::Number("").Min(0).Max(1), false);
  return base;
}

Schema AssetCompileFields(Schema base) {
  base.Field("class",
             Schema::String("objeto (padrao), detalhe, personagem ou textura: o orcamento de "
                            "partida.")
                 .Enum({"objeto", "detalhe", "personagem", "textura"}),
             false)
      .Field("metres", Schema::Number("O maior lado em metros (0: como veio).").Min(0).Max(500),
             false)
      .Field("collision",
             Schema::String("caixa (padrao), circulo, tronco, malha, convexo ou passagem.")
                 .Enum({"caixa", "circulo", "tronco", "malha", "convexo", "passagem"}),
             false)
      .Field("pivot",
             Schema::String("base (padrao): o centro da base da caixa do modelo vai para a origem "
                            "ao carregar. original: fica a origem do arquivo, para pecas modulares "
                            "de um kit encaixarem umas nas outras pelas posicoes do autor.")
                 .Enum({"base", "original"}),
             false)
      .Field("options", AssetReduction(), false);
  return base;
}

Schema BuildingFields(Schema base) {
  base.Field("name", Schema::String("").MaxLength(64), false)
      .Field("width", Schema::Number("Ao longo de x, metros (3 a 40).").Min(3).Max(40), false)
      .Field("depth", Schema::Number("Ao longo de z, metros (3 a 40).").Min(3).Max(40), false)
      .Field("floors", Schema::Integer("1 a 3.").Min(1).Max(3), false)
      .Field("floor_height",
             Schema::Number("Metros por andar (2,4 a 4; padrao 2,8).").Min(2.4).Max(4), false)
      .Field("wall", Schema::Number("Espessura, metros (0,1 a 0,5; padrao 0,2).").Min(0.1).Max(0.5),
             false)
      .Field("openings", Schema::Array(Opening(), "").MaxItems(64), false)
      .Field("partitions", Schema::Array(Partition(), "").MaxItems(32), false)
      .Field("stairs", Stairs(), false)
      .Field("roof", Schema::String("gable (duas aguas, padrao) ou flat.").Enum({"gable", "flat"}),
             false)
      .Field("roof_height", Schema::Number("Metros (0 a 6; padrao 1,5).").Min(0).Max(6), false)
      .Field("kit", Schema::String("Prefixo das pecas (padrao zorvik_kit).").MaxLength(48), false);
  return base;
}

}  // namespace zorvik::authoring
