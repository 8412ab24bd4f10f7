#include "tests/faulty_editor/faults.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <string>

#include "core/process.h"

namespace zorvik::tests {

using core::Json;

namespace {

constexpr std::chrono::milliseconds kLateness(400);
constexpr int kHangMs = 1000;
constexpr int kDeathStatus = 9;
constexpr std::size_t kLongAnswer = 1'000'000;
constexpr std::size_t kPiece = 100'000;
// Longer than a reader takes, by more than it reads at once.
constexpr std::size_t kHugeLine = 18'000'000;
constexpr int kForeignId = 1000;
constexpr int kFloodBlocks = 100;
constexpr int kFloodLinesPerBlock = 1000;

[[noreturn]] void Die() {
  std::_Exit(kDeathStatus);
}

// The request gets lost on its way out of the editor.
void Never(FaultyEditor& editor, const Json& request) {
  editor.SoundAnswer(request);
}

void Late(FaultyEditor& editor, const Json& request) {
  editor.WriteLater(editor.SoundAnswer(request), kLateness);
}

// Behind the answer to the next request.
void Reorder(FaultyEditor& editor, const Json& request) {
  editor.WriteBehindNext(editor.SoundAnswer(request));
}

void ForeignId(FaultyEditor& editor, const Json& request) {
  Json other = request;
  other.Set("id", Json::Int(request.At("id").IntOr(0) + kForeignId));
  editor.Write(editor.SoundAnswer(other));
}

// Lines that answer nothing come first.
void Garbage(FaultyEditor& editor, const Json& request) {
  editor.Write(
      "isto nao e JSON\n[1, 2, 3]\n{\"ok\": true}\n\n\r\n{\"id\": 987654321, \"ok\": true}\n");
  editor.Write(editor.SoundAnswer(request));
}

// So many lines that nobody asked for that they fill the pipe again and again.
void Flood(FaultyEditor& editor, const Json& request) {
  std::string block;
  for (int line = 0; line < kFloodLinesPerBlock; ++line)
    block += "{\"id\": 987654321, \"ok\": true, \"result\": {}}\n";
  for (int i = 0; i < kFloodBlocks; ++i) editor.Write(block);
  editor.Write(editor.SoundAnswer(request));
}

// A long answer with pauses in it.
void Pieces(FaultyEditor& editor, const Json& request) {
  const std::string line = editor.SoundAnswer(request).insert(1, kLongAnswer, ' ');
  for (std::size_t begin = 0; begin < line.size(); begin += kPiece) {
    editor.Write(line.substr(begin, kPiece));
    core::SleepMilliseconds(2);
  }
}

void Huge(FaultyEditor& editor, const Json& /*request*/) {
  editor.Write(std::string(kHugeLine, 'x') + '\n');
}

// Neither reads nor writes for a while.
void Hang(FaultyEditor& editor, const Json& request) {
  core::SleepMilliseconds(kHangMs);
  editor.Write(editor.SoundAnswer(request));
}

void DieAtOnce(FaultyEditor& /*editor*/, const Json& /*request*/) {
  Die();
}

void DieMidAnswer(FaultyEditor& editor, const Json& request) {
  const std::string line = editor.SoundAnswer(request);
  editor.Write(line.substr(0, line.size() / 2));
  Die();
}

// All of the answer is there, but for what ends its line.
void DieBeforeLineFeed(FaultyEditor& editor, const Json& request) {
  const std::string line = editor.SoundAnswer(request);
  editor.Write(std::string_view(line).substr(0, line.find('\n')));
  Die();
}

// As an editor to which the token of the record says nothing; for `hello`. It leaves the hanging up
// to the server.
void Refuse(FaultyEditor& editor, const Json& request) {
  Json stranger = request;
  stranger.Set("token", Json::Text("desconhecido"));
  editor.Write(editor.SoundAnswer(stranger));
  editor.Ignore();
}

constexpr Fault kFaults[] = {
    {"die", DieAtOnce},
    {"die-before-line-feed", DieBeforeLineFeed},
    {"die-mid-answer", DieMidAnswer},
    {"flood", Flood},
    {"foreign-id", ForeignId},
    {"garbage", Garbage},
    {"hang", Hang},
    {"huge", Huge},
    {"late", Late},
    {"never", Never},
    {"pieces", Pieces},
    {"refuse", Refuse},
    {"reorder", Reorder},
};

}  // namespace

const Fault* FindFault(std::string_view kind) {
  const auto* const found = std::find_if(std::begin(kFaults), std::end(kFaults),
                                         [&](const Fault& fault) { return fault.kind == kind; });
  return found == std::end(kFaults) ? nullptr : found;
}

}  // namespace zorvik::tests
