#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/json.h"

namespace zorvik::authoring {

enum class ToolKind : std::uint8_t {
  Read = 0,         // Only reads.
  Transaction = 1,  // Changes something in the editor.
  Job = 2,          // Runs as a job in the editor, followed with jobs_get.
};

// One row of the catalog. Rows are made once and stay where they are until the process ends.
struct ToolSpec {
  std::string name;
  std::string operation;  // Its name on the bridge.
  std::string title;
  std::string description;
  ToolKind kind = ToolKind::Read;
  bool local = false;  // Answered by the server itself, with no editor.
  core::Json input;
  core::Json output;
};

// The catalog, in its fixed order. Built at the first call.
const std::vector<ToolSpec>& Tools();

// The row with exactly that name, or null.
const ToolSpec* FindTool(std::string_view name);
// The row with exactly that operation, or null.
const ToolSpec* FindOperation(std::string_view operation);

// The `error` object of a failed tool call: code and message, then the hint unless it is empty,
// then the details unless they are null.
core::Json ErrorBody(std::string code, std::string message, std::string hint, core::Json details);

}  // namespace zorvik::authoring
