#include "editor_check/run.h"

#include <set>
#include <string>
#include <utility>

#include "core/process.h"
#include "editor_check/connection.h"

namespace zorvik::editor_check {

std::string_view Result::Word() const {
  return Passed() ? "passed" : Failed() ? "failed" : "not tried";
}

std::vector<Result> Run(Subject& subject, bool with_changes,
                        const std::function<void(const Result&)>& progress) {
  std::vector<Result> results;
  std::set<std::string_view> passed;
  std::string_view lost;  // The rule that the editor didn't survive.
  for (const RuleGroup& group : RuleGroups()) {
    for (const Rule& rule : group.rules) {
      Verdict verdict;
      if (group.changes && !with_changes)
        verdict = NotTried("it changes the world, which needs --changes");
      else if (!rule.needs.empty() && !passed.contains(rule.needs))
        verdict = NotTried("needs " + std::string(rule.needs));
      else if (!lost.empty())
        verdict = NotTried("the editor lets nobody in since " + std::string(lost));
      else
        verdict = rule.check(subject);
      results.push_back({&group, &rule, std::move(verdict)});
      if (results.back().Passed()) passed.insert(rule.id);
      if (results.back().Failed() && passed.contains("hello.accepted") &&
          Connection(subject).Open())
        lost = rule.id;
      progress(results.back());
    }
  }
  return results;
}

}  // namespace zorvik::editor_check
