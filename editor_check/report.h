#pragma once

#include <string>
#include <vector>

#include "core/json.h"
#include "editor_check/run.h"

namespace zorvik::editor_check {

// For a person: each rule, what went wrong with those that failed, and the sum.
std::string TextReport(const Subject& subject, const std::vector<Result>& results);
// The same for a machine.
core::Json JsonReport(const Subject& subject, const std::vector<Result>& results);

// The rules, one a line: the id, blanks, and the sentence.
std::string RuleList();
// The catalog as a Markdown table: operation, tool, kind, and what the result holds.
std::string OperationTable();

}  // namespace zorvik::editor_check
