#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "core/json.h"
#include "mcp/answers.h"
#include "mcp/server.h"

namespace zorvik::mcp {

using core::EditorRecord;
using core::Json;

namespace {

bool ValidArguments(const authoring::ToolSpec& tool, const Json& arguments, std::string& field,
                    std::string& reason) {
  if (arguments.kind == Json::Kind::Object)
    return authoring::Validate(tool.input, arguments, field, reason);
  reason = "arguments deve ser um objeto";
  return false;
}

// Moves out the arguments that the editor gets: which editor was meant is the server's business.
Json TakeForwarded(Json& arguments) {
  Json forwarded = Json::Object();
  forwarded.fields.reserve(arguments.fields.size());
  for (auto& [key, value] : arguments.fields)
    if (key != "editor_id") forwarded.fields.emplace_back(std::move(key), std::move(value));
  return forwarded;
}

}  // namespace

std::string Server::CallTool(const Json& id, const Era& era, Json params) {
  const std::string name = params.At("name").TextOr("");
  const authoring::ToolSpec* tool = authoring::FindTool(name);
  if (tool == nullptr) return Failure(id, kInvalidParams, "Unknown tool: " + name);

  Json arguments = Json::Object();
  if (Json* given = params.Find("arguments"); given != nullptr && given->kind != Json::Kind::Null)
    arguments = std::move(*given);
  std::string field;
  std::string reason;
  if (!ValidArguments(*tool, arguments, field, reason)) {
    const std::string place = field.empty() ? "" : " em " + field;
    return ToolAnswer(id, era,
                      ToolError("invalid_argument", "Argumento invalido" + place + ": " + reason,
                                "Confira o inputSchema de " + tool->name + ".",
                                Json::Object({{"field", field}, {"reason", reason}})));
  }
  if (tool->local) return ToolAnswer(id, era, EditorList());

  std::vector<EditorRecord> records;
  Json refusal;
  const EditorRecord* editor = Target(arguments, records, refusal);
  if (editor == nullptr) return ToolAnswer(id, era, std::move(refusal));

  const std::uint64_t bridge_id = next_id++;
  const Json request =
      Json::Object({{"id", bridge_id},
                    {"token", editor->token},
                    {"op", tool->operation},
                    {"args", TakeForwarded(arguments)},
                    {"client", client_label.empty() ? "cliente MCP" : client_label},
                    {"deadline_ms", deadline_ms}});
  std::string error;
  if (!gateway.Send(*editor, request, error)) {
    return ToolAnswer(id, era,
                      ToolError("editor_disconnected",
                                "Sem conexao com o editor " + editor->editor_id + ": " + error,
                                "O editor pode ter fechado; chame editor_list."));
  }

  Pending call;
  call.id = id;
  call.era = era;
  call.tool = tool->name;
  call.editor = editor->editor_id;
  call.bridge_id = bridge_id;
  call.started = now();
  call.deadline = call.started + std::chrono::milliseconds(deadline_ms);
  by_client_id.emplace(core::WriteJson(id), bridge_id);
  pending.emplace(bridge_id, std::move(call));
  return {};
}

const EditorRecord* Server::Target(const Json& arguments, std::vector<EditorRecord>& records,
                                   Json& error) {
  records = gateway.List();
  const std::string wanted = arguments.At("editor_id").TextOr("");
  for (const EditorRecord& record : records)
    if (wanted.empty() ? records.size() == 1 : record.editor_id == wanted) return &record;

  if (wanted.empty() && records.empty()) {
    error = ToolError("no_editor", "Nenhum editor de mundo da ZORVIK aberto com a ponte de IA.",
                      "Abra o editor (zorvik_studio) no projeto e confira Executar > Permitir IA.");
    return nullptr;
  }
  Json ids = Json::Array();
  for (const EditorRecord& record : records) ids.Add(Json::Text(record.editor_id));
  Json details = Json::Object({{"editors", std::move(ids)}});
  if (wanted.empty()) {
    error =
        ToolError("ambiguous_editor", "Ha " + std::to_string(records.size()) + " editores abertos.",
                  "Passe editor_id (editor_list mostra os ids).", std::move(details));
  } else {
    error = ToolError("editor_disconnected", "O editor " + wanted + " nao esta aberto (ou fechou).",
                      "Chame editor_list e use um dos ids.", std::move(details));
  }
  return nullptr;
}

Json Server::EditorList() {
  Json editors = Json::Array();
  for (EditorRecord& record : gateway.List()) {
    editors.Add(Json::Object({{"editor_id", std::move(record.editor_id)},
                              {"pid", record.pid},
                              {"project", std::move(record.project)},
                              {"project_name", std::move(record.project_name)},
                              {"world", std::move(record.world)},
                              {"world_id", std::move(record.world_id)},
                              {"bridge", std::move(record.bridge)},
                              {"engine_version", std::move(record.engine_version)},
                              {"started", std::move(record.started)}}));
  }
  return Json::Object({{"ok", true}, {"editors", std::move(editors)}});
}

}  // namespace zorvik::mcp
