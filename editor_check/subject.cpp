#include "editor_check/subject.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "core/editor_registry.h"
#include "core/platform/files.h"
#include "core/process.h"

namespace zorvik::editor_check {

std::vector<Subject> ListSubjects() {
  std::vector<Subject> subjects;
  std::error_code failure;
  std::filesystem::directory_iterator entry(core::McpHome() / "editors", failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    if (entry->path().extension() != ".json") continue;
    Subject subject{.file = entry->path(), .text = {}};
    std::string ignored;
    if (!core::platform::ReadWholeFile(subject.file, subject.text)) continue;
    if (!core::ParseJson(subject.text, subject.record, ignored)) subject.record = core::Json();
    subjects.push_back(std::move(subject));
  }
  std::sort(subjects.begin(), subjects.end(),
            [](const Subject& a, const Subject& b) { return a.file < b.file; });
  return subjects;
}

bool ChooseSubject(std::vector<Subject>& subjects, const std::string& wanted, std::string& error) {
  if (!wanted.empty()) {
    std::erase_if(
        subjects,
        [&](const Subject& subject) {
          return subject.Text("editor_id") != wanted && subject.file.stem() != wanted;
        });
  } else if (subjects.size() > 1) {
    std::erase_if(
        subjects,
        [](const Subject& subject) {
          return subject.Pid() == 0 || !core::ProcessAlive(subject.Pid());
        });
  }
  if (subjects.size() == 1) return true;
  const std::string folder = core::platform::PathText(core::McpHome() / "editors");
  if (subjects.empty()) {
    error =
        (wanted.empty() ? "no open editor" : "no editor " + wanted) + " has a record in " + folder;
    return false;
  }
  error = std::to_string(subjects.size()) + " editors have a record in " + folder +
          "; name one with --editor:";
  for (const Subject& subject : subjects)
    error += " " + subject.Text("editor_id") + " (" +
             core::platform::PathText(subject.file.filename()) + ")";
  return false;
}

}  // namespace zorvik::editor_check
