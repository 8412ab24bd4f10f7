#include "editor_check/run.h"

#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "editor_check/connection.h"

namespace zorvik::editor_check {

std::string_view Result::Word() const {
  return Passed() ? "passed" : Failed() ? "failed" : "not tried";
}

namespace {

// The first of the rules in `needs` that isn't in `passed`; empty when all are.
std::string Missing(std::string_view needs, const std::set<std::string, std::less<>>& passed) {
  std::istringstream ids{std::string(needs)};
  for (std::string id; ids >> id;)
    if (!passed.contains(id)) return id;
  return {};
}

}  // namespace

std::vector<Result> Run(Subject& subject, bool with_changes,
                        const std::function<void(const Result&)>& progress) {
  std::vector<Result> results;
  std::set<std::string, std::less<>> passed;
  std::string_view lost;  // The rule that the editor didn't survive.
  for (const RuleGroup& group : RuleGroups()) {
    for (const Rule& rule : group.rules) {
      Verdict verdict;
      const std::string missing = Missing(rule.needs, passed);
      if (group.changes && !with_changes)
        verdict = NotTried("it changes the world, which needs --changes");
      else if (!missing.empty())
        verdict = NotTried("it needs " + missing + ", which didn't pass");
      else if (!lost.empty())
        verdict = NotTried("the editor lets nobody in since " + std::string(lost));
      else
        verdict = rule.check(subject);
      // Whatever the rule did, the editor has to let in the next client.
      const bool tried = !verdict || verdict->tried;
      if (tried && passed.contains("hello.accepted"))
        if (Verdict gone = Connection(subject).Open()) {
          lost = rule.id;
          if (!verdict) verdict = std::move(gone);
        }
      if (!verdict) passed.emplace(rule.id);
      results.push_back({&group, &rule, std::move(verdict)});
      progress(results.back());
    }
  }
  return results;
}

}  // namespace zorvik::editor_check
