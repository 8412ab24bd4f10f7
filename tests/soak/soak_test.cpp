// Leaves a server in the middle of a busy day: several calls in flight to editors that come and go,
// by themselves and otherwise. Runs for as many seconds as ZORVIK_SOAK_SECONDS says.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <set>
#include <sstream>
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

// What becomes of a call that meets the fault of its editor.
enum class Fate : std::uint8_t { Answered, Lost, Unanswered };

struct Kind {
  const char* fault;  // Befalls `world_summary` alone.
  Fate fate;
  bool dies = false;
};
constexpr std::array<Kind, 11> kKinds = {{{"", Fate::Answered},
                                          {"late", Fate::Answered},
                                          {"pieces", Fate::Answered},
                                          {"garbage", Fate::Answered},
                                          {"flood", Fate::Answered},
                                          {"never", Fate::Unanswered},
                                          {"foreign-id", Fate::Unanswered},
                                          {"huge", Fate::Lost},
                                          {"die", Fate::Lost, true},
                                          {"die-mid-answer", Fate::Lost, true},
                                          {"refuse-hello", Fate::Lost}}};

class Day {
 public:
  // One round of calls, all of them answered at its end.
  void Wave() {
    for (std::size_t i = 0; i < editors.size(); ++i)
      if (!editors[i] || Chance(20)) Replace(i);
    for (int i = 0; i < 40; ++i) {
      Expect(client.BeginCall("editor_list"), "ok");
      Expect(client.BeginCall("world_info"), "ambiguous_editor");
      Expect(client.BeginCall("objects_query", R"({"limit":"x"})"), "invalid_argument");
      Expect(client.BeginCall("world_info", R"({"editor_id":"x"})"), "editor_disconnected");
      for (std::size_t editor = 0; i % 4 == 0 && editor < editors.size(); ++editor) {
        // Calls that are in flight when a later one finds the pipe broken end only at their
        // deadline, so nothing follows the first call to an editor that will refuse it.
        if (kinds[editor]->fault == std::string("refuse-hello")) continue;
        const std::int64_t id =
            client.BeginCall(i % 8 == 0 ? "world_info" : "objects_query", At(editor));
        if (Chance(10))
          Cancel(id);
        else
          Expect(id, "ok");
      }
    }
    Collect();
    for (std::size_t editor = 0; editor < editors.size(); ++editor)
      if (Chance(10)) MeetFault(editor);
    Collect();
  }

  // Closes all editors, so that what the server then still holds is its own.
  void Evening() {
    for (auto& editor : editors) editor.reset();
    Expect(client.BeginCall("world_info"), "no_editor");
    Collect();
  }
  void Finish() {
    EXPECT_EQ(client.Finish(), 0);
    EXPECT_EQ(client.process.ReadToEnd(), "");
  }

  // Kilobytes of the server's memory.
  long Memory() const {
    std::istringstream status(ReadText(Proc() / "status"));
    for (std::string word; status >> word;)
      if (word == "VmRSS:" && status >> word) return std::stol(word);
    return -1;
  }
  long Descriptors() const {
    const std::filesystem::directory_iterator all(Proc() / "fd");
    return static_cast<long>(std::distance(begin(all), end(all)));
  }

  long calls = 0;
  long cancelled = 0;
  long started = 0;
  long faults = 0;

 private:
  bool Chance(int one_in) { return random() % static_cast<unsigned>(one_in) == 0; }
  static std::string At(std::size_t editor) {
    return R"({"editor_id":"e)" + std::to_string(editor) + R"("})";
  }
  std::filesystem::path Proc() const { return "/proc/" + std::to_string(client.process.Id()); }

  void Replace(std::size_t editor) {
    if (editors[editor] && Chance(2)) editors[editor]->Kill();
    editors[editor].reset();
    // All kinds in turn, so that what they cost once is spent before memory is compared.
    kinds[editor] = &kKinds[static_cast<std::size_t>(started++) % kKinds.size()];
    const std::string fault = kinds[editor]->fault;
    std::vector<std::string> misbehaviours;
    if (!fault.empty()) misbehaviours.push_back(fault + "=world.summary");
    editors[editor] = std::make_unique<EditorProcess>("e" + std::to_string(editor), misbehaviours);
  }

  void MeetFault(std::size_t editor) {
    ++faults;
    const std::int64_t id = client.BeginCall("world_summary", At(editor));
    const Kind& kind = *kinds[editor];
    if (kind.fate == Fate::Unanswered && Chance(2))
      Cancel(id);
    else
      Expect(id, kind.fate == Fate::Answered ? "ok" : "editor_disconnected");
    if (kind.fate == Fate::Unanswered) {
      client.Ask("ping");  // The call has been sent by then.
      editors[editor]->Kill();
    } else if (kind.dies) {
      EXPECT_EQ(editors[editor]->Die(), 9);
    }
    if (kind.dies || kind.fate == Fate::Unanswered) editors[editor].reset();
  }

  void Expect(std::int64_t id, const char* outcome) {
    ++calls;
    expected.emplace_back(id, outcome);
  }
  void Cancel(std::int64_t id) {
    ++calls;
    ++cancelled;
    may_come.insert(id);
    client.Line(R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" +
                std::to_string(id) + "}}");
  }
  // Every call that is expected gets its one answer; a cancelled one gets one at most.
  void Collect() {
    for (const auto& [id, outcome] : expected)
      ASSERT_EQ(Outcome(client.Answer(id).At("result")), outcome) << id;
    expected.clear();
    client.Ask("ping");
    while (!client.Unclaimed().empty()) {
      const std::int64_t id = client.Unclaimed().begin()->first;
      ASSERT_EQ(may_come.erase(id), 1U) << "nobody waits for " << client.AnswerLine(id);
      client.AnswerLine(id);
    }
  }

  McpClient client;
  std::mt19937 random{1};
  std::array<std::unique_ptr<EditorProcess>, 3> editors;
  std::array<const Kind*, 3> kinds{};
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
  Clock::time_point report = start;
  std::vector<long> memory;  // Kilobytes after each wave.
  while (Clock::now() - start < length && !testing::Test::HasFailure()) {
    day.Wave();
    memory.push_back(day.Memory());
    if (Clock::now() < report) continue;
    report += std::chrono::seconds(10);
    const auto passed = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
    std::printf(
        "%4ld s: %7ld calls, %6ld cancelled, %4ld editors started, %4ld faults, %5ld KiB, "
        "%2ld descriptors\n",
        static_cast<long>(passed.count()), day.calls, day.cancelled, day.started, day.faults,
        memory.back(), day.Descriptors());
    std::fflush(stdout);
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
  day.Finish();
  std::printf(
      "%ld calls in %ld s, each answered once (or cancelled: %ld); lowest memory %ld KiB in "
      "the second third and %ld KiB in the last (tolerated: %ld more); %ld descriptors\n",
      day.calls, static_cast<long>(length.count()), day.cancelled, before, after,
      kToleratedGrowthKb, descriptors);
}

}  // namespace
}  // namespace zorvik::tests
