#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/json.h"
#include "editor_check/subject.h"

namespace zorvik::editor_check {

// Why a rule isn't kept, or couldn't be tried.
struct Finding {
  bool tried = true;
  std::string sent;      // What the check did, or what it looked at.
  std::string came;      // What it saw.
  std::string expected;  // What it should have seen; why not, for a rule that wasn't tried.
};

// Nothing: the rule is kept.
using Verdict = std::optional<Finding>;

inline Verdict NotTried(std::string why) {
  return Finding{false, {}, {}, std::move(why)};
}

struct Rule {
  std::string_view id;
  std::string_view sentence;  // Stands in docs/bridge.md too.
  std::string_view needs;     // The rules without which this one can't be tried, blanks between.
  Verdict (*check)(Subject& subject);
};

// A group changes the world only if it says so.
struct RuleGroup {
  std::string_view name;
  bool changes = false;
  std::span<const Rule> rules;
};

// In the order in which they are tried: a rule comes after the one that it needs.
std::span<const RuleGroup> RuleGroups();

// One for each source of rules.
std::span<const Rule> RecordRules();
std::span<const Rule> ConnectionRules();
std::span<const Rule> AnswerRules();
std::span<const Rule> ChangeRules();

}  // namespace zorvik::editor_check
