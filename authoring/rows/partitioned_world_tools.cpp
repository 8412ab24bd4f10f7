#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema CellIndex() {
  return Schema::Integer("").Min(-32).Max(31);
}

Schema Extent() {
  return Schema::Object("Indices de celula, inclusivos.")
      .Field("min_x", CellIndex(), true)
      .Field("min_z", CellIndex(), true)
      .Field("max_x", CellIndex(), true)
      .Field("max_z", CellIndex(), true)
      .Closed();
}

}  // namespace

void AppendPartitionedWorldTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("world_open", "Abrir outro mapa", ToolKind::Transaction,
           "Troca o mapa aberto no editor por outro .scene do projeto (path relativo a maps/). "
           "Nunca descarta alteracoes: com o mapa aberto sujo, recusa com unsaved_changes, a menos "
           "que save_first seja verdadeiro (salva antes, com copia de seguranca). Um path que nao "
           "existe volta com a lista dos mapas em details.maps. Cancela os jobs do mapa de antes; "
           "revisoes e historico recomecam no novo.",
           EditorAction(
               ForEditor()
                   .Field("path",
                          Schema::String("Arquivo .scene relativo a maps/ do projeto.")
                              .MinLength(1)
                              .MaxLength(260),
                          true)
                   .Field("save_first",
                          Schema::Boolean("Salva o mapa aberto antes de trocar (padrao: falso)."),
                          false)),
           "opened, file, saved_before, world_id."));

  tools.push_back(Tool(
      "world_create", "Criar mundo particionado", ToolKind::Transaction,
      "Cria um mundo particionado vazio em maps/<nome>.zrkworld: celulas de 256 m (257 amostras, 1 "
      "m), extensao em indices de celula (-32 a 31 em cada eixo; padrao 5 x 5 em volta da origem), "
      "altura base e faixa. Celulas nascem quando alguem edita. open (padrao verdadeiro) abre o "
      "mundo no editor pelo mesmo caminho do world_open (save_first para o aberto sujo).",
      EditorAction(ForEditor()
                       .Field("name", Schema::String("").MinLength(1).MaxLength(64), false)
                       .Field("extent", Extent(), false)
                       .Field("base_height", Schema::Number("Metros (padrao 0)."), false)
                       .Field("min_height", Schema::Number("").Min(-4000).Max(7996), false)
                       .Field("max_height", Schema::Number("").Min(-3996).Max(8000), false)
                       .Field("open", Schema::Boolean(""), false)
                       .Field("save_first", Schema::Boolean(""), false)),
      "created, path, extent, world_id, opened."));

  tools.push_back(Tool(
      "world_convert_legacy", "Converter mapa em mundo particionado", ToolKind::Transaction,
      "Converte o mapa .scene aberto (como esta no editor) num mundo particionado novo em "
      "maps/<mapa>.zrkworld: as celulas que cobrem a extensao, o relevo reamostrado na grade de 1 "
      "m, material, cobertura, objetos pela celula da raiz e o resto como features do mundo. O "
      "mapa original fica intacto. O relatorio diz celulas, objetos e a perda da reamostragem.",
      EditorAction(ForEditor()
                       .Field("name", Schema::String("").MinLength(1).MaxLength(64), false)
                       .Field("open", Schema::Boolean(""), false)
                       .Field("save_first", Schema::Boolean(""), false)),
      "path, cells, objects, source_step, max_height_error, lossless, notes, original, opened."));

  tools.push_back(
      Tool("cells_list", "Celulas do mundo", ToolKind::Read,
           "As celulas do mundo particionado aberto, em ordem (iz, ix): no disco (revisao, bytes), "
           "na janela, suja, estado do streaming (absent, loading, ready, dirty, failed) e o erro "
           "de uma celula que falhou. window_only lista so a janela.",
           ForEditor()
               .Field("window_only", Schema::Boolean(""), false)
               // The cursor is a number here, unlike that of the other paged tools.
               .Field("limit", Schema::Integer("").Min(1).Max(200), false)
               .Field("cursor", Schema::Integer("").Min(0), false)
               .Closed(),
           "extent, window, cells[], next_cursor."));

  tools.push_back(
      Tool("cells_diagnostics", "Diagnostico do streaming", ToolKind::Read,
           "Budgets do streaming (janela, anel, residentes, MiB, leituras) e o que esta "
           "acontecendo: residentes, carregando, falhas, sujas, leituras e composicoes feitas, o "
           "tempo da ultima leitura e da ultima composicao, bordas que nao batiam.",
           ForEditor().Closed(), "budgets, now, totals, window."));

  tools.push_back(Tool(
      "world_focus", "Levar a janela ate um ponto", ToolKind::Transaction,
      "Num mundo particionado, leva a vista do editor e a janela de celulas ate (x, z), agora: o "
      "que estiver la passa a estar no documento (objetos, relevo) para as outras ferramentas. Sem "
      "passo de historico; revisoes seguem, a geracao nao muda.",
      EditorAction(
          ForEditor().Field("x", Schema::Number(""), true).Field("z", Schema::Number(""), true)),
      "window, moved, ready, revision."));

  tools.push_back(Tool(
      "quality_get", "Perfil de qualidade", ToolKind::Read,
      "O perfil de qualidade do editor (desempenho, equilibrado, qualidade ou personalizado), cada "
      "ajuste com o efeito e o custo, e o que custa agora: tempo de quadro e, num mundo "
      "particionado, celulas residentes e a ultima composicao. O perfil muda o desenho e o "
      "streaming; documento, celulas, colisao, portas, escadas e objetos sao os mesmos nos tres.",
      ForEditor().Closed(),
      "profile, matches, settings[] {id, value, effect, cost}, measured, file, invariant."));

  tools.push_back(Tool(
      "quality_set", "Trocar o perfil de qualidade", ToolKind::Transaction,
      "Troca o perfil do editor (desempenho, equilibrado ou qualidade) e grava em "
      "maps/editor.graphics.settings (save, padrao verdadeiro). A imagem (exposicao, curva, bloom) "
      "e o vsync ficam como a pessoa deixou. Nada no mundo e editado: num mapa a revisao fica; num "
      "mundo particionado a janela pode mudar de tamanho (3 x 3 ou 5 x 5) no quadro seguinte, uma "
      "troca de janela como a de world_focus (nova revisao, nenhuma celula suja, o historico o "
      "mesmo).",
      EditorAction(ForEditor()
                       .Field("profile",
                              Schema::String("").Enum({"desempenho", "equilibrado", "qualidade"}),
                              true)
                       .Field("save", Schema::Boolean(""), false)),
      "profile, matches, settings[], applied, file, document_changed; num mundo, window_cells e "
      "window_recomposes."));
}

}  // namespace zorvik::authoring
