#include <string>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/fragments.h"
#include "authoring/rows/rows.h"
#include "authoring/schema.h"

namespace zorvik::authoring {
namespace {

// A change inside a batch. Its arguments are the named tool's own, so they stay open here.
Schema BatchItem() {
  return Schema::Object("")
      .Field("tool", Schema::String("").MinLength(1).MaxLength(64), true)
      .Field("args", Schema::Object("").Open(), true)
      .Closed();
}

}  // namespace

void AppendHistoryTools(std::vector<ToolSpec>& tools) {
  tools.push_back(
      Tool("history_list", "Historico de autoria", ToolKind::Read,
           "As transacoes da sessao, da mais nova para a mais antiga: id, autor (user ou agent, "
           "com o cliente), rotulo, grupo, revisoes e os elementos tocados; e o que Desfazer e "
           "Refazer fariam agora. Filtros por autor e grupo; paginado.",
           ForEditor()
               .Field("author", Schema::String("").Enum({"user", "agent"}), false)
               .Field("group", Schema::String("").MaxLength(64), false)
               .Field("cursor", Cursor(), false)
               .Field("limit", Limit(), false)
               .Closed(),
           "transactions, undo, redo, checkpoints, oldest_revision, next_cursor."));

  tools.push_back(Tool("history_undo", "Desfazer (IA)", ToolKind::Transaction,
                       "Desfaz a transacao mais recente do documento, se ela for sua (do agente). "
                       "Se a mais recente for da pessoa, recusa com conflict: use history_revert "
                       "para desfazer seletivamente uma transacao sua mais antiga.",
                       Mutation(Schema::Object("")), "undone: a transacao desfeita; transaction."));

  tools.push_back(Tool("history_redo", "Refazer (IA)", ToolKind::Transaction,
                       "Refaz o passo que o ultimo desfazer tirou, se ele for seu (do agente).",
                       Mutation(Schema::Object("")), "redone; transaction."));

  tools.push_back(
      Tool("history_revert", "Reverter uma transacao", ToolKind::Transaction,
           "Desfaz seletivamente uma transacao antiga como uma transacao nova. So se aplica se "
           "cada elemento que ela tocou ainda estiver como ela deixou; senao conflict lista os "
           "elementos mudados depois (por exemplo, por uma edicao manual), e nada muda. Edicoes "
           "posteriores nunca sao desfeitas.",
           Mutation(Schema::Object("").Field("transaction", Id("O id de history_list."), true)),
           "reverted; transaction."));

  tools.push_back(Tool(
      "history_checkpoint", "Marcar um ponto", ToolKind::Transaction,
      "Da um nome a revisao atual, para history_restore voltar a ela depois. Nao copia o mundo.",
      ForEditor().Field("name", Schema::String("").MinLength(1).MaxLength(64), true).Closed(),
      "checkpoint {name, revision}."));

  tools.push_back(Tool("history_restore", "Voltar a um ponto", ToolKind::Transaction,
                       "Reverte, numa transacao, todas as transacoes do agente feitas depois do "
                       "ponto marcado, da mais nova para a mais antiga. Se alguma tocar elemento "
                       "mudado depois por outro autor, nada muda e conflict lista o que impediu.",
                       Mutation(Schema::Object("").Field(
                           "name", Schema::String("").MinLength(1).MaxLength(64), true)),
                       "reverted: ids das transacoes revertidas; transaction."));

  tools.push_back(Tool("jobs_list", "Jobs", ToolKind::Read,
                       "Os jobs desta sessao do editor, do mais novo para o mais antigo: id, "
                       "operacao, estado (queued, running, applying, done, failed, cancelled), "
                       "progresso, fase, segundos e o resultado ou o erro.",
                       ForEditor().Closed(), "jobs, active."));

  tools.push_back(Tool("jobs_get", "Estado de um job", ToolKind::Read,
                       "Um job por id: estado, progresso e, quando terminou, o resultado (com a "
                       "transacao aplicada) ou o erro.",
                       ForEditor().Field("job_id", Id(""), true).Closed(), "job."));

  tools.push_back(
      Tool("jobs_cancel", "Cancelar um job", ToolKind::Transaction,
           "Cancela um job que ainda nao foi aplicado: nada muda no mundo. Um job ja aplicado nao "
           "e desfeito por aqui (use history_revert). Vale mesmo com a IA parada.",
           ForEditor().Field("job_id", Id(""), true).Closed(), "cancelled, job."));

  tools.push_back(Tool(
      "batch_apply", "Aplicar um lote", ToolKind::Transaction,
      std::string("Varias alteracoes numa transacao so (ate 256): cada item e {tool, args} com uma "
                  "ferramenta de alteracao (objects_*, terrain_sculpt, terrain_generate, "
                  "surface_*, vegetation_*, water_*, world_configure) e os argumentos dela, sem "
                  "editor_id, base_revision, request_id, label, group nem wait_ms (esses sao do "
                  "lote). Aplicadas em ordem sobre o mesmo rascunho; um `ref` de objects_create "
                  "vale nos itens seguintes como `parent_ref`. Tudo ou nada. ") +
          kAllOrNothing,
      Mutation(Schema::Object("").Field(
          "ops", Schema::Array(BatchItem(), "").MinItems(1).MaxItems(256), true)),
      "results: um por item; transaction."));
}

}  // namespace zorvik::authoring
