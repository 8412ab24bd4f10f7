#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema Files() {
  return Schema::Array(Schema::String("").MinLength(1).MaxLength(1024),
                       "Arquivos ou pastas (GLB, glTF com o .bin e as texturas na mesma pasta, OBJ "
                       "com MTL, FBX, imagens, ZIP), absolutos ou relativos a raiz do projeto. "
                       "Precisam estar dentro do projeto, na pasta temporaria do sistema ou numa "
                       "pasta de mcp_permitidos do projeto.zorvik.")
      .MinItems(1)
      .MaxItems(32);
}

Schema Selection() {
  return Schema::Object("")
      .Field("source", Schema::String("O name de assets_inspect.").MinLength(1).MaxLength(512),
             true)
      .Field("id", Schema::String("Id do pacote ([a-z0-9_]); omitido, sai do nome.").MaxLength(64),
             false)
      .Field("name", Schema::String("").MaxLength(64), false)
      .Closed();
}

}  // namespace

void AppendAssetTools(std::vector<ToolSpec>& tools) {
  tools.push_back(Tool(
      "assets_list", "Biblioteca de assets", ToolKind::Read,
      "Os assets que o mundo pode usar, paginados: id, nome, categoria, se carregou, tamanho em "
      "metros, colisao, triangulos, o pivo (base: o centro da base da caixa na origem; original: a "
      "origem do arquivo) e a caixa em volta da origem (bounds_min, bounds_max). Pecas de kit com "
      "o pivo em base perderam a origem do autor: assets_reprocess com pivot original a devolve. "
      "So assets da biblioteca compilada entram em objetos; um arquivo externo precisa passar pela "
      "importacao primeiro.",
      ForEditor()
          .Field("query", Schema::String("Trecho do id, nome ou categoria.").MaxLength(64), false)
          .Field("category",
                 Schema::String("Categoria exata (pasta da biblioteca).").MaxLength(128), false)
          .Field("cursor", Cursor(), false)
          .Field("limit", Limit(), false)
          .Closed(),
      "assets, total, next_cursor."));

  tools.push_back(Tool(
      "assets_inspect", "Inspecionar arquivos externos", ToolKind::Read,
      "Le arquivos externos sem importar e relata cada modelo: formato, malhas, triangulos, "
      "vertices, materiais, texturas, tamanho nas unidades do arquivo (Y para cima), esqueleto e "
      "animacoes (skinning e recusado), avisos de unidade, e o que impede importar (dependencia "
      "fora da pasta da fonte, arquivo que nao abre). Uma pasta lista os modelos dela; um ZIP, os "
      "de dentro. O `name` de cada modelo e o que assets_import usa em select.",
      ForEditor().Field("files", Files(), true).Closed(),
      "models[] {name, kind, meshes, triangles, vertices, materials, textures, skinned, "
      "animations, size, notes, problems, importable}, ignored, axes, hint."));

  tools.push_back(Tool(
      "assets_import", "Importar assets", ToolKind::Job,
      "Compila modelos externos pela pipeline oficial (ImportModel, ProcessModel, CompileAsset) "
      "num estagio fora da biblioteca e, no ponto seguro, publica cada um em "
      "assets/biblioteca/<folder>/<id>/ com as fontes em fonte/ e registra no catalogo: dai em "
      "diante objects_create usa o id. Com varios modelos nas entradas, `select` escolhe quais (um "
      "pacote por modelo). `replace` substitui um pacote existente com o mesmo id: o atual fica "
      "guardado em <id>/versoes/<n>/ e as colocacoes passam a mostrar o novo. Cancelar antes da "
      "publicacao nao muda nada. Roda como job (wait_ms; jobs_get). Varios jobs convivem.",
      Mutation(AssetCompileFields(
          Schema::Object("")
              .Field("files", Files(), true)
              .Field("select", Schema::Array(Selection(), "").MaxItems(32), false)
              .Field("folder",
                     Schema::String("Pasta da biblioteca ([a-z0-9_], padrao importados).")
                         .MinLength(1)
                         .MaxLength(48),
                     false)
              .Field(
                  "replace",
                  Schema::Boolean("Substitui o pacote do id escolhido, guardando a versao atual."),
                  false))),
      "planned[]; ao terminar: packages[] {id, name, source, folder, replaced, version_saved, "
      "report {source_triangles, triangles, ...}, note, registered}, hint."));

  tools.push_back(
      Tool("assets_reprocess", "Recompilar asset", ToolKind::Job,
           "Recompila um pacote da biblioteca a partir das fontes que ele guardou (fonte/), com "
           "outros parametros (classe, tamanho, colisao, reducao); o pacote atual fica em "
           "versoes/<n>/. Sem os campos, valem os do pacote. Roda como job.",
           Mutation(AssetCompileFields(Schema::Object("").Field(
               "id", Schema::String("O pacote.").MinLength(1).MaxLength(64), true))),
           "como assets_import."));

  tools.push_back(Tool(
      "assets_restore_version", "Voltar versao de asset", ToolKind::Job,
      "Volta um pacote para uma versao guardada em versoes/<n>/; o atual vira uma versao nova "
      "antes, entao voltar e reversivel. As colocacoes (o mesmo id) passam a mostrar a versao "
      "restaurada. Recusado enquanto um job ainda vai publicar o mesmo id. Roda como job (wait_ms; "
      "jobs_get): copiar e ler a versao nao para o editor.",
      Mutation(Schema::Object("")
                   .Field("id", Schema::String("").MinLength(1).MaxLength(64), true)
                   .Field("version", Schema::Integer("").Min(1), true)),
      "id, restored, version_saved, registered, hint."));

  tools.push_back(Tool(
      "assets_compose", "Juntar objetos num asset composto", ToolKind::Job,
      "Assa uma raiz e os descendentes dela num pacote novo da biblioteca, como o Merge Actors do "
      "Unreal: uma malha por material (texturas e materiais iguais entram uma vez), a colisao que "
      "as pecas tinham (composta: paredes, vaos de porta, janelas e escadas como eram) e o pivo na "
      "raiz. Com swap (padrao) o grupo vira um objeto so na cena, numa transacao: a raiz passa a "
      "mostrar o composto (mesmo id, escala 1) e as pecas assadas saem — conta 1 no orcamento de "
      "objetos da celula e desenha em poucas chamadas. Ficam objetos, presos ao composto e no "
      "mesmo lugar do mundo: portas, corpos fisicos, personagens, assets vivos ou com "
      "comportamento, instancias de distribuicao, pecas de estrada, arvores montadas e pacotes "
      "legados (.glb); `kept` diz quais e por que. Pecas ocultas nao entram na malha; pecas nao "
      "solidas nao entram na colisao. Uma construcao (buildings_*) cuja raiz vira composto deixa "
      "de ser regeravel (building_detached). history_undo volta as pecas; o pacote fica na "
      "biblioteca. Exige base_revision com swap. Roda como job.",
      Mutation(
          Schema::Object("")
              .Field("root", Id("O objeto raiz do grupo (ele e os descendentes)."), true)
              .Field("id",
                     Schema::String("Id do pacote (a-z, 0-9, _); sem ele, sai do nome da raiz.")
                         .MinLength(1)
                         .MaxLength(48),
                     false)
              .Field("name",
                     Schema::String("Nome do pacote; sem ele, o nome da raiz.")
                         .MinLength(1)
                         .MaxLength(64),
                     false)
              .Field("folder",
                     Schema::String("Pasta da biblioteca (padrao compostos).")
                         .MinLength(1)
                         .MaxLength(48),
                     false)
              .Field("collision",
                     Schema::String("composta (padrao): a uniao das colisoes das pecas; malha: a "
                                    "malha junta simplificada; convexo; caixa; passagem.")
                         .Enum({"composta", "malha", "convexo", "caixa", "passagem"}),
                     false)
              .Field(
                  "swap",
                  Schema::Boolean(
                      "Troca o grupo pelo composto na cena (padrao true); false so cria o pacote."),
                  false)
              .Field("replace",
                     Schema::Boolean("Refaz um composto que ja existe com este id, guardando a "
                                     "versao atual em versoes/<n>/."),
                     false)),
      "planned {id, parts, kept, replaces, building_detached}; ao terminar: package {id, name, "
      "folder, replaced, version_saved, report {parts, meshes, materials, textures, triangles, "
      "vertices, collision_triangles, hull_vertices, notes}, registered}, kept[] {id, reason}, "
      "swapped, object, removed[], transaction, swap_error (quando nao trocou), hint."));
}

}  // namespace zorvik::authoring
