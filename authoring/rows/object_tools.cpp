#include <string>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

Schema NewObject() {
  return ObjectFields(Schema::Object(""), /*create=*/true)
      .Field("ref", Schema::String("Nome local deste objeto no pedido.").MaxLength(64), false)
      .Field("parent_ref",
             Schema::String("O `ref` de outro objeto deste pedido, como pai.").MaxLength(64), false)
      .Closed();
}

Schema ObjectChange() {
  return ObjectFields(Schema::Object("").Field("id", Id(""), true), /*create=*/false)
      .Field("if_rev", Schema::Integer("O `rev` que voce leu deste objeto.").Min(0), false)
      .Field("move_by", Vec3("Soma a posicao local, metros."), false)
      .Field("rotate_by",
             Schema::Object("Soma aos angulos, graus.")
                 .Field("pitch", Schema::Number(""), false)
                 .Field("yaw", Schema::Number(""), false)
                 .Field("roll", Schema::Number(""), false)
                 .Closed(),
             false)
      .Closed();
}

}  // namespace

void AppendObjectTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("objects_create", "Criar objetos", ToolKind::Transaction,
           std::string(
               "Coloca objetos da biblioteca no mundo (1 a 256). Cada um: asset, x, z e, "
               "opcionalmente, y (altura sobre o chao por padrao), pitch/yaw/roll em graus, "
               "escala, pai, estados e corpo fisico. `ref` da um nome local a um objeto do mesmo "
               "pedido, e `parent_ref` usa esse nome como pai: da para montar uma hierarquia "
               "inteira numa chamada. Regras: numa raiz, y e a altura sobre o chao, de -0,5 a 15 m "
               "(uma peca mais funda entra como filha); num filho, x/y/z sao no espaco do pai, e a "
               "escala e o giro do pai multiplicam essa posicao; uma raiz invisivel esconde os "
               "filhos. Num mundo particionado cada objeto vai para a celula da sua raiz (256 m, "
               "ver cells_list): os filhos precisam cair dentro dela, e cada celula aceita ate 600 "
               "objetos — o que nao couber e recusado na hora, com o objeto e a regra. ") +
               kAllOrNothing,
           Mutation(Schema::Object("").Field(
               "objects", Schema::Array(NewObject(), "").MinItems(1).MaxItems(256), true)),
           "created: [{id, ref}]; objects: os objetos criados, como em objects_get; transaction."));

  tools.push_back(Tool(
      "objects_update", "Alterar objetos", ToolKind::Transaction,
      std::string("Muda objetos existentes (1 a 256): so os campos presentes mudam. `move_by` e "
                  "`rotate_by` somam a posicao e aos angulos atuais. `if_rev` confere a revisao do "
                  "objeto. Objetos travados sao recusados (locked). Exige base_revision. ") +
          kAllOrNothing,
      Mutation(Schema::Object("").Field(
          "updates", Schema::Array(ObjectChange(), "").MinItems(1).MaxItems(256), true)),
      "objects: os objetos depois da mudanca; transaction."));

  tools.push_back(
      Tool("objects_delete", "Excluir objetos", ToolKind::Transaction,
           std::string("Exclui objetos e os descendentes deles (as juntas que ficam sem corpo saem "
                       "junto). Objetos travados sao recusados. Exige base_revision. ") +
               kAllOrNothing,
           Mutation(Schema::Object("").Field("ids", Ids(256, ""), true)),
           "deleted: ids excluidos (inclui descendentes); transaction."));

  tools.push_back(Tool(
      "objects_duplicate", "Duplicar objetos", ToolKind::Transaction,
      "Copia objetos com a hierarquia e as juntas, deslocados por `offset` (metros, no mundo).",
      Mutation(Schema::Object("")
                   .Field("ids", Ids(256, ""), true)
                   .Field("offset", Vec3("Deslocamento das copias (padrao: 2 m em X)."), false)),
      "copies: [{from, id}]; transaction."));
}

}  // namespace zorvik::authoring
