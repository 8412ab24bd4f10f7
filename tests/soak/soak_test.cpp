// Leaves a server in the middle of a busy day: several calls in flight to editors that come and go,
// by themselves and otherwise. Runs for as many seconds as ZORVIK_SOAK_SECONDS says.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/environment.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using Clock = std::chrono::steady_clock;

constexpr long kToleratedGrowthKb = 512;

// A kind of editor, and what becomes of a call of world_summary to it.
struct Kind {
  std::string fault;
  std::string outcome;  // Empty: no answer comes until the editor ends.
};
const std::vector<Kind> kKinds = {{"", "ok"},
                                  {"late=world.summary", "ok"},
                                  {"garbage=world.summary", "ok"},
                                  {"never=world.summary", ""},
                                  {"huge=world.summary", "editor_disconnected"},
                                  {"die=world.summary", "editor_disconnected"},
                                  {"die-before-line-feed=world.summary", "editor_disconnected"},
                                  {"refuse=hello", "editor_disconnected"}};

class Day {
 public:
  // One round of calls, all of them answered at its end.
  void Wave() {
    for (Editor& editor : editors)
      if (!editor.process || Chance(20)) Replace(editor);
    for (int i = 0; i < 40; ++i) {
      Expect(client.BeginCall("editor_list"), "ok");
      Expect(client.BeginCall("world_info"), "ambiguous_editor");
      Expect(client.BeginCall("objects_query", R"({"limit":"x"})"), "invalid_argument");
      Expect(client.BeginCall("world_info", At("x")), "editor_disconnected");
      for (const Editor& editor : editors) {
        // Calls that are in flight when a later one finds the pipe broken end only at their
        // deadline, so nothing follows the first call to an editor that will refuse it.
        if (i % 4 != 0 || editor.kind->fault == "refuse=hello") continue;
        const std::int64_t id = client.BeginCall("objects_query", At(editor.id));
        Chance(10) ? Cancel(id) : Expect(id, "ok");
      }
    }
    Collect();
    for (Editor& editor : editors)
      if (Chance(10)) MeetFault(editor);
    Collect();
  }

  // Closes all editors, so that what the server then still holds is its own.
  void Evening() {
    for (Editor& editor : editors) editor.process.reset();
    EXPECT_EQ(Outcome(client.Call("world_info")), "no_editor");
  }

  // Kilobytes of the server's memory.
  long Memory() const {
    const std::string status = ReadText(Proc() / "status");
    return std::atol(status.c_str() + status.find("VmRSS:") + 6);
  }
  long Descriptors() const {
    return std::distance(std::filesystem::directory_iterator(Proc() / "fd"), {});
  }

  McpClient client;
  long calls = 0;
  std::size_t started = 0;

 private:
  struct Editor {
    std::string id;
    const Kind* kind = nullptr;
    std::unique_ptr<EditorProcess> process = nullptr;
  };

  bool Chance(int one_in) { return random() % static_cast<unsigned>(one_in) == 0; }
  std::filesystem::path Proc() const { return "/proc/" + std::to_string(client.process.Id()); }

  void Replace(Editor& editor) {
    if (editor.process && Chance(2)) editor.process->Kill();
    editor.process.reset();
    // All kinds in turn, so that what they cost once is spent before memory is compared.
    editor.kind = &kKinds[started++ % kKinds.size()];
    std::vector<std::string> faults = {editor.kind->fault};
    std::erase(faults, "");
    editor.process = std::make_unique<EditorProcess>(editor.id, faults);
  }

  void MeetFault(Editor& editor) {
    const auto& [fault, outcome] = *editor.kind;
    const std::int64_t id = client.BeginCall("world_summary", At(editor.id));
    if (outcome.empty()) {
      Chance(2) ? Cancel(id) : Expect(id, "editor_disconnected");
      client.Ask("ping");  // The call has been sent by then.
      editor.process->Kill();
    } else {
      Expect(id, outcome);
      if (!fault.starts_with("die")) return;
      EXPECT_EQ(editor.process->Die(), 9);
    }
    editor.process.reset();
  }

  void Expect(std::int64_t id, const std::string& outcome) { expected.emplace_back(id, outcome); }
  void Cancel(std::int64_t id) {
    may_come.insert(id);
    client.Cancel(id);
  }
  // Every call that is expected gets its one answer; a cancelled one gets one at most.
  void Collect() {
    calls += static_cast<long>(expected.size());
    for (const auto& [id, outcome] : expected)
      ASSERT_EQ(Outcome(client.Answer(id).At("result")), outcome) << id;
    expected.clear();
    client.Ask("ping");
    while (!client.Unclaimed().empty()) {
      const std::int64_t id = client.Unclaimed().begin()->first;
      const std::string line = client.AnswerLine(id);
      ASSERT_EQ(may_come.erase(id), 1U) << "nobody waits for " << line;
    }
  }

  std::mt19937 random{1};
  std::array<Editor, 3> editors{Editor{"e0"}, Editor{"e1"}, Editor{"e2"}};
  std::vector<std::pair<std::int64_t, std::string>> expected;
  std::set<std::int64_t> may_come;
};

TEST(SoakTest, EveryCallIsAnsweredOnceAndNothingGrows) {
  const char* const wanted = std::getenv("ZORVIK_SOAK_SECONDS");
  const std::chrono::seconds length(wanted == nullptr ? 10 : std::atoi(wanted));
  const TemporaryHome home;
  // Else the allocator keeps large blocks for later, and what it keeps would look like growth.
  const ScopedEnvironment give_back("GLIBC_TUNABLES",
                                    "glibc.malloc.mmap_threshold=131072:"
                                    "glibc.malloc.trim_threshold=131072");
  Day day;
  const long descriptors = day.Descriptors();
  const Clock::time_point start = Clock::now();
  std::vector<long> memory;  // Kilobytes after each wave.
  while (Clock::now() - start < length && !testing::Test::HasFailure()) {
    day.Wave();
    memory.push_back(day.Memory());
  }
  ASSERT_GE(memory.size(), 3U);
  day.Evening();
  EXPECT_EQ(day.Descriptors(), descriptors);
  // Lines of many megabytes make single waves high, so the lowest ones tell what stays. The first
  // third is the time to reach a steady state.
  const auto third = static_cast<std::ptrdiff_t>(memory.size() / 3);
  const long before = *std::min_element(memory.begin() + third, memory.end() - third);
  const long after = *std::min_element(memory.end() - third, memory.end());
  EXPECT_LE(after, before + kToleratedGrowthKb);
  EXPECT_EQ(day.client.Finish(), 0);
  EXPECT_EQ(day.client.process.ReadToEnd(), "");
  std::cout << day.calls << " calls to " << day.started << " editors in " << length.count()
            << " s; lowest memory " << before << " KiB in the second third, " << after
            << " KiB in the last\n";
}

}  // namespace
}  // namespace zorvik::tests
