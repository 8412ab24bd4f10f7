#include <string>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema RiverNode() {
  return Schema::Object("")
      .Field("x", Schema::Number(""), true)
      .Field("z", Schema::Number(""), true)
      .Field("width", Schema::Number("").Min(0.5).Max(64), true)
      .Field("level", Schema::Number(""), true)
      .Closed();
}

Schema WaterMaterial() {
  return Schema::Object("")
      .Field("style", Schema::Integer("").Min(0).Max(3), false)
      .Field("clarity", Schema::Number("").Min(0.2).Max(6), false)
      .Field("waves", Schema::Number("").Min(0).Max(2), false)
      .Field("speed", Schema::Number("").Min(0).Max(3), false)
      .Field("foam", Schema::Number("").Min(0).Max(1), false)
      .Field("texture_scale", Schema::Number("").Min(0.1).Max(32), false)
      .Closed();
}

Schema Swell() {
  return Schema::Object("")
      .Field("height", Schema::Number("").Min(0).Max(4), false)
      .Field("period", Schema::Number("").Min(3).Max(16), false)
      .Field("direction", Schema::Number("").Min(0).Max(360), false)
      .Closed();
}

Schema WaterBody() {
  return Schema::Object("")
      .Field("id", Id(""), false)
      .Field("kind", Schema::String("").Enum({"lake", "river", "sea", "map"}), false)
      .Field("name", Schema::String("").MinLength(1).MaxLength(48), false)
      .Field("enabled", Schema::Boolean(""), false)
      .Field("level", Schema::Number("Metros absolutos."), false)
      .Field("outline", Schema::Array(Point2(), "").MinItems(3).MaxItems(64), false)
      .Field("nodes", Schema::Array(RiverNode(), "").MinItems(2).MaxItems(64), false)
      .Field("flow", Schema::Number("Rio: m/s.").Min(0).Max(10), false)
      .Field("material", WaterMaterial(), false)
      .Field("swell", Swell(), false)
      .Closed();
}

Schema Waterfall() {
  return Schema::Object("")
      .Field("id", Id(""), false)
      .Field("enabled", Schema::Boolean(""), false)
      .Field("x", Schema::Number(""), false)
      .Field("y", Schema::Number("Altura da saida, metros absolutos."), false)
      .Field("z", Schema::Number(""), false)
      .Field("yaw", Schema::Number("Graus: para onde a agua cai."), false)
      .Field("width", Schema::Number("").Min(0.25).Max(24), false)
      .Field("flow", Schema::Number("").Min(0).Max(4), false)
      .Field("foam", Schema::Number("").Min(0).Max(1), false)
      .Field("mist", Schema::Number("").Min(0).Max(1), false)
      .Field("from", Schema::Integer("").Min(0), false)
      .Field("to", Schema::Integer("").Min(0), false)
      .Closed();
}

Schema HeightRange() {
  return Schema::Object("")
      .Field("min", Schema::Number("").Min(-4000).Max(8000), true)
      .Field("max", Schema::Number("").Min(-4000).Max(8000), true)
      .Closed();
}

Schema Haze() {
  return Schema::Object(
             "O ar (perspectiva aerea, com a cor do ceu): legacy verdadeiro volta a nevoa de "
             "sempre (na luz classica); qualquer outro campo liga o ar. A luz fisica usa o ar "
             "sempre.")
      .Field("legacy", Schema::Boolean(""), false)
      .Field("density", Schema::Number("Multiplica a densidade do ar (0 a 3).").Min(0).Max(3),
             false)
      .Field("aerial", Schema::Number("O azulado da distancia (0 a 1).").Min(0).Max(1), false)
      .Field("sun_scatter", Schema::Number("O brilho do ar em volta do sol (0 a 1).").Min(0).Max(1),
             false)
      .Field("fixed_color",
             Rgb(Schema::Number("").Min(0).Max(1),
                 "Uma cor fixa [r, g, b] linear no lugar da do ceu."),
             false)
      .Field("sky_color", Schema::Boolean("Verdadeiro volta a cor do ar a do ceu daquela direcao."),
             false)
      .Closed();
}

Schema Environment() {
  return Schema::Object("")
      .Field("hour", Schema::Number("").Min(0).Max(24), false)
      .Field("sun_intensity", Schema::Number("").Min(0).Max(2), false)
      .Field("sun_direction", Schema::Number("").Min(-180).Max(180), false)
      .Field("atmosphere", Schema::Number("").Min(0).Max(1), false)
      .Field("fog", Schema::Number("").Min(0).Max(3), false)
      .Field("fog_height", Schema::Number("").Min(10).Max(400), false)
      .Field("rain", Schema::Number("").Min(0).Max(1), false)
      .Field("moon_phase", Schema::Number("").Min(0).Max(1), false)
      .Field("thunder", Schema::Boolean(""), false)
      .Field("wind_strength", Schema::Number("").Min(0).Max(3), false)
      .Field("wind_direction", Schema::Number("").Min(-180).Max(180), false)
      .Field("sun_temperature", Schema::Number("").Min(1500).Max(15000), false)
      .Field("ambient_light", Schema::Number("").Min(0).Max(2), false)
      .Field("skybox", Schema::String("").MaxLength(96), false)
      .Field("skybox_rotation", Schema::Number("").Min(-180).Max(180), false)
      .Field("skybox_exposure", Schema::Number("").Min(0.25).Max(4), false)
      .Field(
          "lighting_model",
          Schema::String("A luz do mapa: classico (a de sempre) ou fisico (tudo em luz linear pelo "
                         "mesmo BRDF, o sol em kelvin linear, a sombra sem sol, o ceu iluminando "
                         "pelo panorama, a curva e a exposicao do mapa). Grava a cena 37.")
              .Enum({"classico", "fisico"}),
          false)
      .Field("exposure_ev",
             Schema::Number("Exposicao do mapa na luz fisica, em EV; a da pessoa soma.")
                 .Min(-4)
                 .Max(4),
             false)
      .Field("tone",
             Schema::String("A curva do mapa na luz fisica (padrao agx, a do Blender).")
                 .Enum({"neutro", "aces", "agx"}),
             false)
      .Field("ground_bounce",
             Rgb(Schema::Number("").Min(-1).Max(1),
                 "O albedo linear [r, g, b] do chao que rebate a luz do ceu e do sol na luz "
                 "fisica; [-1, -1, -1] volta ao automatico (a media das camadas)."),
             false)
      .Field("ao_strength",
             Schema::Number("Forca da oclusao em tela (0 a 2), quando ela existir.").Min(0).Max(2),
             false)
      .Field("ao_radius",
             Schema::Number("Raio da oclusao em tela em metros (0,25 a 4).").Min(0.25).Max(4),
             false)
      .Field("haze", Haze(), false)
      .Closed();
}

Schema Physics() {
  return Schema::Object("")
      .Field("gravity", Schema::Number("").Min(0).Max(100), false)
      .Field("velocity_iterations", Schema::Integer("").Min(1).Max(64), false)
      .Field("position_iterations", Schema::Integer("").Min(0).Max(16), false)
      .Field("sleep_speed", Schema::Number("").Min(0).Max(10), false)
      .Closed();
}

}  // namespace

void AppendWaterTools(std::vector<ToolSpec>& tools) {
  tools.push_back(Tool(
      "water_upsert", "Criar ou alterar agua", ToolKind::Transaction,
      std::string(
          "Cria (sem id) ou altera (com id) um corpo d'agua ou uma cachoeira. Corpo: kind lake "
          "(contorno de 3 a 64 pontos), river (2 a 64 nos com largura e nivel), sea (um por mapa, "
          "com ondas) ou map (lago sem contorno, cobre o mapa). Cachoeira: posicao da saida, "
          "direcao, largura, vazao, e os corpos de origem e destino (from/to, 0 = automatico). ") +
          kAllOrNothing,
      Mutation(Schema::Object("")
                   .Field("body", WaterBody(), false)
                   .Field("waterfall", Waterfall(), false)),
      "body ou waterfall: como em water_list; transaction."));

  tools.push_back(
      Tool("water_delete", "Excluir agua", ToolKind::Transaction,
           std::string("Exclui corpos d'agua ou cachoeiras por id; as cachoeiras ligadas a um "
                       "corpo excluido ficam automaticas. Exige base_revision. ") +
               kAllOrNothing,
           Mutation(Schema::Object("").Field("ids", Ids(64, ""), true)), "deleted; transaction."));

  tools.push_back(
      Tool("world_configure", "Configurar o mundo", ToolKind::Transaction,
           std::string(
               "Muda o nome do mapa, a faixa de altura do relevo (aparando alturas fora dela), o "
               "ambiente (hora, sol, atmosfera, nevoa, chuva, vento, temperatura, luz ambiente, "
               "ceu) e a fisica do mundo. So os campos presentes mudam. Exige base_revision. ") +
               kAllOrNothing,
           Mutation(Schema::Object("")
                        .Field("name", Schema::String("").MinLength(1).MaxLength(64), false)
                        .Field("height_range", HeightRange(), false)
                        .Field("environment", Environment(), false)
                        .Field("physics", Physics(), false)),
           "o que mudou; transaction."));

  tools.push_back(Tool("world_save", "Salvar o mundo", ToolKind::Transaction,
                       "Salva o mapa aberto no arquivo dele, com a copia de seguranca do editor "
                       "(Projeto > Copias de seguranca). Nao cria transacao no historico.",
                       EditorAction(ForEditor()), "saved, file, backup, revision."));
}

}  // namespace zorvik::authoring
