#include "editor_check/subject.h"

#include <algorithm>
#include <cctype>
#include <system_error>
#include <utility>

#include "core/editor_registry.h"
#include "core/platform/files.h"
#include "core/process.h"

namespace zorvik::editor_check {

namespace {

constexpr std::size_t kShownBytes = 400;
constexpr std::string_view kTokenShown = "<token>";

// At most so many bytes from the start, and no character in part.
std::string_view Start(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) --bytes;
  return text.substr(0, bytes);
}

}  // namespace

std::string Shown(std::string_view text, const std::string& token) {
  // With room for a token across the cut, since a part of it wouldn't be found.
  const std::string_view window = Start(text, kShownBytes + token.size());
  std::string shown(window);
  for (std::size_t at = 0; !token.empty() && (at = shown.find(token, at)) != std::string::npos;
       at += kTokenShown.size())
    shown.replace(at, token.size(), kTokenShown);
  const bool cut = window.size() < text.size() || shown.size() > kShownBytes;
  shown.resize(Start(shown, kShownBytes).size());
  // An editor's text must not steer the terminal, nor pass for a line of the report.
  std::replace_if(
      shown.begin(), shown.end(),
      [](char letter) { return std::iscntrl(static_cast<unsigned char>(letter)) != 0; }, ' ');
  if (cut) shown += "... (" + std::to_string(text.size()) + " bytes)";
  return shown;
}

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
    error += " " + Shown(subject.Text("editor_id"), "") + " (" +
             core::platform::PathText(subject.file.filename()) + ")";
  return false;
}

}  // namespace zorvik::editor_check
