#include <string>
#include <utility>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/object_operations.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/overlaps.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

bool ApplyItem(Draft& draft, const Json& item, Json& result, Json& error) {
  const std::string& name = item.At("tool").text;
  const Json& args = item.At("args");
  const authoring::ToolSpec* tool = authoring::FindTool(name);
  const ObjectChange change = tool == nullptr ? nullptr : FindObjectChange(tool->operation);
  if (change == nullptr) {
    error =
        authoring::ErrorBody("unsupported", name + " nao entra num lote deste editor.",
                             "Aqui um lote aceita as ferramentas objects_* de alteracao.", Json());
    return false;
  }
  for (const char* key :
       {"editor_id", "base_revision", "request_id", "label", "group", "wait_ms"}) {
    if (!args.Has(key)) continue;
    error = InvalidArgument(key, "e do lote, nao do item");
    return false;
  }
  std::string field;
  std::string reason;
  if (!authoring::Validate(tool->input, args, field, reason)) {
    error = InvalidArgument(field, reason);
    return false;
  }
  return change(draft, args, result, error);
}

}  // namespace

bool BatchApply(World& world, const Call& call, Json& result, Json& error) {
  Draft draft;
  if (!OpenDraft(world, call, draft, error)) return false;
  const std::string label = draft.label;
  const auto& ops = call.args.At("ops").items;
  Json results = Json::Array();
  for (std::size_t index = 0; index < ops.size(); ++index) {
    Json item_result = Json::Object();
    if (!ApplyItem(draft, ops[index], item_result, error)) {
      Json details = error.At("details");
      details.Set("op", Json::Int(static_cast<long long>(index)));
      details.Set("tool", ops[index].At("tool"));
      error.Set("message",
                Json::Text("ops[" + std::to_string(index) + "] (" + ops[index].At("tool").text +
                           "): " + error.At("message").text));
      error.Set("details", std::move(details));
      return false;
    }
    results.Add(std::move(item_result));
  }
  draft.label = label.empty() ? "Lote de " + std::to_string(ops.size()) + " alteracoes" : label;
  WarnOfOverlaps(draft, result);
  const Transaction& transaction = Commit(world, std::move(draft), TransactionKind::Edit);
  result.Set("results", std::move(results));
  result.Set("transaction", TransactionJson(transaction));
  return true;
}

}  // namespace zorvik::sample_editor
