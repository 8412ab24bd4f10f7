#include <string_view>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

// A point of a walk. Its optional `y` tells the floors of a house apart.
Schema WalkPoint(std::string_view description, std::string_view y_description) {
  return Schema::Object(description)
      .Field("x", Schema::Number(""), true)
      .Field("y", Schema::Number(y_description), false)
      .Field("z", Schema::Number(""), true)
      .Closed();
}

Schema Camera() {
  return Schema::Object("Camera explicita, em metros.")
      .Field("position", Vec3("De onde olha."), true)
      .Field("target", Vec3("Para onde olha."), true)
      .Field("fov",
             Schema::Number("Campo de visao vertical em graus (10 a 120; padrao 55).")
                 .Min(10)
                 .Max(120),
             false)
      .Closed();
}

Schema Frame() {
  return Schema::Object(
             "Enquadramento automatico; omitido junto com camera: o mapa inteiro em iso.")
      .Field("ids",
             Ids(200,
                 "Objetos a enquadrar, com os descendentes (a raiz de uma construcao enquadra a "
                 "casa)."),
             false)
      .Field("bounds", Bounds("Retangulo do chao a enquadrar."), false)
      .Field("view",
             Schema::String("Direcao: iso (padrao, de sudeste), top, north, south, east, west (de "
                            "onde a camera olha).")
                 .Enum({"iso", "top", "north", "south", "east", "west"}),
             false)
      .Field("elevation",
             Schema::Number(
                 "Graus acima do horizonte (5 a 89; padrao 35 em iso, 89 em top, 25 nas outras).")
                 .Min(5)
                 .Max(89),
             false)
      .Field("fov", Schema::Number("Graus (10 a 120; padrao 55).").Min(10).Max(120), false)
      .Closed();
}

Schema Ray() {
  return Schema::Object("")
      .Field("origin", Vec3("Metros."), true)
      .Field("direction", Vec3("Nao precisa ser unitaria."), true)
      .Field("max_distance", Schema::Number("Metros (padrao 1000).").Min(0.01).Max(20000), false)
      .Closed();
}

Schema GroundPoint() {
  return Schema::Object("")
      .Field("x", Schema::Number(""), true)
      .Field("z", Schema::Number(""), true)
      .Field("from_y",
             Schema::Number("So superficies ate esta altura (para achar o piso sob um teto)."),
             false)
      .Closed();
}

Schema Measure() {
  return Schema::Object("")
      .Field("from", Vec3("Metros."), true)
      .Field("to", Vec3("Metros."), true)
      .Closed();
}

}  // namespace

void AppendInspectionTools(std::vector<ToolSpec>& tools) {
  tools.push_back(Tool(
      "inspect_walk", "Andar pelo mundo", ToolKind::Read,
      "Simula quem anda (o controlador do jogo, com a colisao do mapa e as portas) de `from` pelos "
      "`waypoints` em linha reta, a 60 passos por segundo. doors: interact (padrao: abre as portas "
      "fechadas no caminho, como um jogador), as_is, open ou closed. Diz se chegou, onde parou e "
      "por que (porta_fechada, porta_trancada, degrau_alto, queda, bloqueio, tempo), o caminho e o "
      "que aconteceu com as portas. Nada muda no mapa.",
      ForEditor()
          .Field(
              "from",
              WalkPoint("O ponto de partida; y (opcional) escolhe o piso dentro de uma casa.", ""),
              true)
          .Field("waypoints",
                 Schema::Array(WalkPoint("", "O piso esperado (1 m de folga)."), "")
                     .MinItems(1)
                     .MaxItems(32),
                 true)
          .Field("doors", Schema::String("").Enum({"interact", "as_is", "open", "closed"}), false)
          .Field("speed", Schema::Number("m/s (padrao 3).").Min(0.5).Max(12), false)
          .Field("max_seconds", Schema::Number("Padrao 60.").Min(1).Max(300), false)
          .Field("body", Body("O corpo (padrao: raio 0,3, altura 1,8, degrau 0,35)."), false)
          .Closed(),
      "reached, waypoints_reached, stopped_at, reason, seconds, distance, largest_step_up, "
      "door_events, path."));

  tools.push_back(Tool(
      "inspect_capture", "Capturar imagem", ToolKind::Read,
      "Desenha o mundo por uma camera propria, fora da tela (a vista e a selecao da pessoa nao "
      "mudam), e devolve a imagem PNG e o caminho do arquivo gravado. A camera e explicita "
      "(camera: position, target, fov) ou enquadra objetos, um retangulo ou o mapa inteiro (frame: "
      "ids ou bounds, view iso/top/north/south/east/west, elevation em graus). A resposta traz a "
      "revisao desenhada e `complete`: verdadeiro so quando o desenho e do conteudo atual, sem "
      "relevo sendo refeito e sem pagina de geometria pendente; senao `pending` diz o que faltou. "
      "wait_ms 0 desenha o que ja esta publicado, sem esperar.",
      ForEditor()
          .Field("camera", Camera(), false)
          .Field("frame", Frame(), false)
          .Field("width", Schema::Integer("Pixels (64 a 1920; padrao 960).").Min(64).Max(1920),
                 false)
          .Field("height", Schema::Integer("Pixels (64 a 1080; padrao 540).").Min(64).Max(1080),
                 false)
          .Field(
              "wait_ms",
              Schema::Integer("Quanto esperar o desenho ficar completo (0 a 10000; padrao 3000).")
                  .Min(0)
                  .Max(10000),
              false)
          .Field(
              "include_image",
              Schema::Boolean(
                  "Devolve a imagem na resposta (padrao: verdadeiro); falso devolve so o arquivo."),
              false)
          .Field(
              "shading",
              Schema::String(
                  "A vista (padrao lit): unlit so a cor; wireframe; normals; light_only toda "
                  "superficie em cinza 0,5, para ver so a luz; ambient so a luz rebatida (ceu, "
                  "reflexo do ambiente, oclusao), sem sol nem nevoa; shore um canal da beira do "
                  "mar (shore_channel), sem luz e sem a agua.")
                  .Enum({"lit", "unlit", "wireframe", "normals", "light_only", "ambient", "shore"}),
              false)
          .Field(
              "shore_channel",
              Schema::String("Com shading shore (padrao wet): wet a areia molhada; film o filme "
                             "d'agua; lace a renda da beira; reach o alcance cheio das ondas (2 m "
                             "= branco); phase a fase da ondulacao no campo; slope a inclinacao da "
                             "praia (10 % = branco); exposure a exposicao (vermelho: lagoa "
                             "fechada); grid os texels do campo do litoral; mesh_depth a agua: a "
                             "profundidade da malha contra a da cena (vermelho, malha mais funda).")
                  .Enum({"wet", "film", "lace", "reach", "phase", "slope", "exposure", "grid",
                         "mesh_depth"}),
              false)
          .Field("time",
                 Schema::Number(
                     "O relogio da agua e das ondas parado neste instante (segundos): duas "
                     "capturas com o mesmo time veem a mesma onda. Omitido, o relogio do editor.")
                     .Min(0),
                 false)
          .Closed(),
      "file, width, height, revision, rendered_revision, complete, pending, camera {position, "
      "target, fov}, profile, shading, stats {luminance, cb, cr, gpu_ms {passe: ms}}; a imagem vai "
      "num bloco image."));

  tools.push_back(Tool(
      "inspect_probe", "Sondar o mundo", ToolKind::Read,
      "Perguntas geometricas ao mundo, ate 256 de cada tipo por chamada. rays: o primeiro acerto "
      "de um raio no relevo ou no colisor de um objeto (distancia, ponto, normal, id). points: o "
      "chao sob (x, z) — altura do relevo, inclinacao, material, a superficie mais alta onde se "
      "pisa (relevo ou objeto solido, abaixo de from_y), agua e profundidade, se da para ficar em "
      "pe e se o corpo de quem anda encosta em algo ali. measure: distancia, desnivel, inclinacao "
      "e linha de visada entre dois pontos.",
      ForEditor()
          .Field("rays", Schema::Array(Ray(), "").MaxItems(256), false)
          .Field("points", Schema::Array(GroundPoint(), "").MaxItems(256), false)
          .Field("measure", Schema::Array(Measure(), "").MaxItems(256), false)
          .Field("solid_only", Schema::Boolean("Raios so acertam objetos solidos (padrao: todos)."),
                 false)
          .Field("body", Body("O corpo de quem anda (padrao: raio 0,3, altura 1,8, degrau 0,35)."),
                 false)
          .Closed(),
      "rays[] {hit, distance, point, normal, kind, object_id, by}, points[] {terrain_height, "
      "slope_degrees, surface_height, on_object, blocked, water, standable}, measure[] {distance, "
      "horizontal, vertical, grade_percent, line_of_sight, blocked_by}, body."));

  tools.push_back(Tool(
      "inspect_validate", "Validar o mundo", ToolKind::Read,
      "Relatorio do que impede ou atrapalha jogar o mapa: documento invalido, limite de objetos, "
      "assets ausentes, objetos fora do relevo, enterrados ou flutuando, solidos que se "
      "atravessam; e, andando com o controlador de quem anda (inspect_walk), portas que nao deixam "
      "passar quem as abre, sem colisao ou trancadas, e lances de escada que nao levam de um andar "
      "ao outro (ate 64 de cada). Num mundo particionado, a janela composta e as celulas dela: "
      "celula que nao carregou, bordas que nao batiam na composicao, celula perto dos 600 objetos; "
      "o resto do mundo fica em `not_checked` (world_focus e valide de novo). Erros primeiro. "
      "`checked` lista o que foi conferido e `not_checked` o que nao foi, com o motivo.",
      ForEditor()
          .Field("bounds", Bounds("So objetos dentro deste retangulo."), false)
          .Field("max_issues", Schema::Integer("1 a 500 (padrao 200).").Min(1).Max(500), false)
          .Closed(),
      "playable, counts {errors, warnings, info, objects_examined, doors_walked, "
      "stair_flights_walked}, issues[] {severity, code, message, object_id, x, z}, truncated, "
      "checked, not_checked."));
}

}  // namespace zorvik::authoring
