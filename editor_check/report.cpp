#include "editor_check/report.h"

#include <algorithm>
#include <utility>

#include "authoring/catalog.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

constexpr std::size_t kIdWidth = 24;

std::string Padded(std::string_view text, std::size_t width) {
  std::string padded(text);
  padded.resize(std::max(padded.size() + 1, width), ' ');
  return padded;
}

std::size_t Count(const std::vector<Result>& results, std::string_view word) {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(), [&](const Result& result) { return result.Word() == word; }));
}

const char* KindWord(authoring::ToolKind kind) {
  return kind == authoring::ToolKind::Read          ? "read"
         : kind == authoring::ToolKind::Transaction ? "change"
                                                    : "job";
}

}  // namespace

std::string TextReport(const Subject& subject, const std::vector<Result>& results) {
  std::string text = "Editor " + Shown(subject.Text("editor_id"), "") + ", process " +
                     std::to_string(subject.Pid()) + ", world " + Shown(subject.Text("world"), "") +
                     "\n";
  const RuleGroup* group = nullptr;
  for (const Result& result : results) {
    if (group != result.group) text += "\n" + std::string(result.group->name) + "\n";
    group = result.group;
    text += "  " + Padded(result.Failed() ? "FAILED" : result.Word(), 11) +
            Padded(result.rule->id, kIdWidth) + std::string(result.rule->sentence) + "\n";
    if (result.Passed()) continue;
    const Finding& finding = *result.verdict;
    if (finding.tried)
      text += "      sent:     " + finding.sent + "\n      came:     " + finding.came +
              "\n      expected: " + finding.expected + "\n";
    else
      text += "      why:      " + finding.expected + "\n";
  }
  return text + "\n" + std::to_string(Count(results, "passed")) + " passed, " +
         std::to_string(Count(results, "failed")) + " failed, " +
         std::to_string(Count(results, "not tried")) + " not tried\n";
}

Json JsonReport(const Subject& subject, const std::vector<Result>& results) {
  Json rules = Json::Array();
  for (const Result& result : results) {
    Json& rule = rules.Add(Json::Object({{"id", result.rule->id},
                                         {"group", result.group->name},
                                         {"sentence", result.rule->sentence},
                                         {"status", result.Word()}}));
    if (result.Passed()) continue;
    if (!result.Failed()) {
      rule.Set("why", Json::Text(result.verdict->expected));
      continue;
    }
    rule.Set("sent", Json::Text(result.verdict->sent));
    rule.Set("came", Json::Text(result.verdict->came));
    rule.Set("expected", Json::Text(result.verdict->expected));
  }
  return Json::Object({{"editor_id", subject.Text("editor_id")},
                       {"pid", subject.Pid()},
                       {"passed", Count(results, "passed")},
                       {"failed", Count(results, "failed")},
                       {"not_tried", Count(results, "not tried")},
                       {"rules", std::move(rules)}});
}

std::string RuleList() {
  std::string text;
  for (const RuleGroup& group : RuleGroups())
    for (const Rule& rule : group.rules)
      text += Padded(rule.id, kIdWidth) + std::string(rule.sentence) + "\n";
  return text;
}

std::string OperationTable() {
  std::string text = "| Operation | Tool | Kind | The result holds |\n|---|---|---|---|\n";
  for (const authoring::ToolSpec& tool : authoring::Tools())
    text += "| `" + tool.operation + "` | `" + tool.name + "` | " + KindWord(tool.kind) + " | " +
            tool.output.At("description").text + " |\n";
  return text;
}

}  // namespace zorvik::editor_check
