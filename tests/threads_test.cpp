// What several threads of one program may do at the same time. The thread sanitizer watches
// (preset `tsan`); the expectations see what it can't: that nobody gets another one's data.

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "core/editor_registry.h"
#include "core/file_write.h"
#include "core/json.h"
#include "core/process.h"
#include "tests/support/temporary_home.h"
#include "tests/support/wire.h"

namespace zorvik::tests {
namespace {

using core::Json;

constexpr int kThreads = 4;
constexpr int kTurns = 60;

void OnSeveralThreads(const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

// Lists and objects of many sizes, so that blocks of each of them come and go.
std::string Text(int seed) {
  std::string text = "{\"seed\":" + std::to_string(seed);
  for (int i = 0; i < 40; ++i) {
    text += ",\"k" + std::to_string(i) + "\":[";
    for (int k = 0; k < i; ++k) text += std::to_string(seed + k) + ",";
    text += "[{\"x\":\"" + std::string(static_cast<std::size_t>(i * 7), 'x') + "\"}]]";
  }
  return text + "}";
}

TEST(ThreadsTest, EachReadsAndWritesDocumentsAndPassesThemOn) {
  std::deque<Json> queue;
  std::mutex mutex;
  OnSeveralThreads([&](int thread) {
    for (int turn = 0; turn < kTurns; ++turn) {
      const std::string text = Text(thread * 1'000 + turn);
      Json document = Parse(text);
      Json copy = document;
      copy.Set("k39", Json::Int(turn));
      EXPECT_EQ(core::WriteJson(document), text);
      std::unique_lock lock(mutex);
      queue.push_back(std::move(document));
      if (turn % 10 == 0) continue;  // Some outlive the threads that made them.
      Json passed = std::move(queue.front());
      queue.pop_front();
      lock.unlock();
      EXPECT_EQ(core::WriteJson(passed), Text(static_cast<int>(passed.At("seed").number)));
      passed.Set("k20", Json());  // Memory of the other thread goes back on this one.
    }
  });
  EXPECT_EQ(queue.size(), static_cast<std::size_t>(kThreads * kTurns / 10));
  for (const Json& document : queue) EXPECT_TRUE(document.Has("k39"));
}

TEST(ThreadsTest, ShareTheCatalog) {
  const std::string arguments = R"({"objects":[{"asset":"a","x":1,"z":2,"extra":3}]})";
  OnSeveralThreads([&](int) {
    for (int turn = 0; turn < kTurns; ++turn) {
      const authoring::ToolSpec* tool = authoring::FindTool("objects_create");
      std::string field;
      std::string reason;
      EXPECT_FALSE(authoring::Validate(tool->input, Parse(arguments), field, reason));
      EXPECT_EQ(field, "objects[0].extra");
    }
  });
}

TEST(ThreadsTest, ARecordIsListedWholeOrNotAtAll) {
  const TemporaryHome home;
  core::EditorRecord record;
  record.editor_id = std::string(500, 'e');
  record.pipe = "zorvik-teste";
  record.pid = core::CurrentProcessId();
  std::atomic<bool> written = false;
  OnSeveralThreads([&](int thread) {
    for (int turn = 0; thread == 0 && turn < kTurns; ++turn) {
      EXPECT_EQ(core::WriteEditorRecord(record).message, "");
      if (turn % 7 == 0) core::RemoveEditorRecord(record.pid);
    }
    if (thread == 0) written = true;
    while (!written)
      for (const core::EditorRecord& listed : core::ListEditorRecords())
        EXPECT_EQ(listed.editor_id, record.editor_id);
  });
}

TEST(ThreadsTest, AForcedFailureMeetsOneWriterOnly) {
  const TemporaryHome home;
  for (int turn = 0; turn < 10; ++turn) {
    std::atomic<int> failures = 0;
    core::InjectWriteFailure(core::WriteStep::SyncTemporary);
    OnSeveralThreads([&](int thread) {
      const auto path = home.Path() / std::to_string(thread);
      std::string error;
      if (!core::WriteFileReplacing(path, Text(thread), error)) ++failures;
      EXPECT_TRUE(core::WriteFileReplacing(path, Text(thread), error)) << error;
      EXPECT_EQ(ReadText(path), Text(thread));
    });
    EXPECT_EQ(failures, 1);
  }
}

}  // namespace
}  // namespace zorvik::tests
