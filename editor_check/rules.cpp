#include "editor_check/rules.h"

#include <array>

namespace zorvik::editor_check {

std::span<const RuleGroup> RuleGroups() {
  static const std::array<RuleGroup, 4> groups = {{
      {"record", false, RecordRules()},
      {"connection", false, ConnectionRules()},
      {"answers", false, AnswerRules()},
      {"changes", true, ChangeRules()},
  }};
  return groups;
}

}  // namespace zorvik::editor_check
