// Plays the server against one open editor and reports which rules of docs/bridge.md it keeps.

#include <charconv>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#include "core/platform/streams.h"
#include "editor_check/report.h"
#include "editor_check/run.h"
#include "editor_check/subject.h"

namespace {

using namespace zorvik::editor_check;

constexpr int kRulesBroken = 1;
constexpr int kBadUsage = 2;
constexpr std::uint32_t kLongestPatience = 600;

constexpr const char* kUsage =
    "zorvik_editor_check: tells what an open editor does right and wrong on the bridge.\n"
    "  --editor ID   the editor with that id, or that process id; without it the only one open\n"
    "  --changes     also changes the open world, which may be spoilt by it\n"
    "  --json        the report as JSON\n"
    "  --patience S  wait S seconds for each answer, 1 to 600 (10)\n"
    "  --list        the rules, and nothing else\n"
    "  --operations  the operations as a Markdown table, and nothing else\n"
    "Exit status: 0 when no rule is broken, 1 when one is, 2 when there is nothing to try.\n";

struct Options {
  std::string editor;
  std::uint32_t patience_s = 10;
  bool changes = false;
  bool json = false;
  bool list = false;
  bool operations = false;
  bool help = false;
};

bool ReadOptions(const std::vector<std::string>& arguments, Options& options) {
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& name = arguments[at];
    const std::string value = at + 1 < arguments.size() ? arguments[at + 1] : "";
    if (name == "--changes") {
      options.changes = true;
    } else if (name == "--json") {
      options.json = true;
    } else if (name == "--list") {
      options.list = true;
    } else if (name == "--operations") {
      options.operations = true;
    } else if (name == "--help") {
      options.help = true;
    } else if (name == "--editor" && !value.empty()) {
      options.editor = value;
      ++at;
    } else if (name == "--patience") {
      const char* const end = value.data() + value.size();
      const auto [rest, failure] = std::from_chars(value.data(), end, options.patience_s);
      if (failure != std::errc() || rest != end || options.patience_s < 1 ||
          options.patience_s > kLongestPatience)
        return false;
      ++at;
    } else {
      return false;
    }
  }
  return true;
}

void Print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

int Check(const Options& options) {
  std::vector<Subject> subjects = ListSubjects();
  std::string error;
  if (!ChooseSubject(subjects, options.editor, error)) {
    std::fprintf(stderr, "zorvik_editor_check: %s\n", error.c_str());
    return kBadUsage;
  }
  Subject& subject = subjects.front();
  subject.patience_ms = options.patience_s * 1'000;
  if (options.changes)
    std::fprintf(stderr, "The world that is open in %s gets changed and may be spoilt.\n",
                 Shown(subject.Text("editor_id"), "").c_str());
  bool broken = false;
  const std::vector<Result> results = Run(subject, options.changes, [&](const Result& result) {
    broken = broken || result.Failed();
    const std::string line =
        std::string(result.rule->id) + ": " + std::string(result.Word()) + "\n";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
  });
  Print(options.json ? zorvik::core::WriteJson(JsonReport(subject, results)) + "\n"
                     : TextReport(subject, results));
  return broken ? kRulesBroken : 0;
}

}  // namespace

int main(int argc, char** argv) {
  zorvik::core::platform::PrepareStandardStreams();
  Options options;
  if (!ReadOptions({argv + 1, argv + argc}, options)) {
    std::fputs(kUsage, stderr);
    return kBadUsage;
  }
  if (options.help || options.list || options.operations) {
    Print(options.help ? kUsage : options.list ? RuleList() : OperationTable());
    return 0;
  }
  return Check(options);
}
