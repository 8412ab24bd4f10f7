#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "editor_check/rules.h"

namespace zorvik::editor_check {

struct Result {
  const RuleGroup* group = nullptr;
  const Rule* rule = nullptr;
  Verdict verdict;  // As Verdict.

  bool Passed() const { return !verdict.has_value(); }
  bool Failed() const { return verdict && verdict->tried; }
  // "passed", "failed" or "not tried".
  std::string_view Word() const;
};

// Tries all rules in their order, the changing ones only `with_changes`. `progress` hears of each
// result as it comes.
std::vector<Result> Run(Subject& subject, bool with_changes,
                        const std::function<void(const Result&)>& progress);

}  // namespace zorvik::editor_check
