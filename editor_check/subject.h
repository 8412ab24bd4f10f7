#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/json.h"

namespace zorvik::editor_check {

// The answer to one reading operation, asked for with the smallest arguments that are valid.
struct Reading {
  std::string operation;
  core::Json args;
  std::string sent;
  std::string came;  // As a report shows it.
  std::string line;  // Whole, since a document takes many times the memory; empty: no answer.
};

// The editor that is looked at, as its record's file tells it.
struct Subject {
  std::filesystem::path file;
  std::string text;     // All of the file.
  core::Json record{};  // Null when the text is no JSON.
  std::uint32_t patience_ms = 10'000;
  std::vector<Reading> readings{};  // Made by the first rule that looks at them.

  std::string Text(std::string_view key) const { return record.At(key).TextOr(""); }
  std::uint32_t Pid() const { return static_cast<std::uint32_t>(record.At("pid").IntOr(0)); }
};

// A text of the editor's as reports show it: on one line, not too long, without the token.
std::string Shown(std::string_view text, const std::string& token);

// All files in the registry's folder, those that no server would list included, in path order.
std::vector<Subject> ListSubjects();

// Leaves the one that `wanted` names, by its editor_id or by the name of its file without
// extension. Empty: the only one whose process is alive, or the only one of all. False, with the
// reason in `error`, when there is no such one, or more.
bool ChooseSubject(std::vector<Subject>& subjects, const std::string& wanted, std::string& error);

}  // namespace zorvik::editor_check
