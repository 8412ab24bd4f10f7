#include "examples/sample_editor/misbehaviour.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr const char* kKinds[] = {"refuse-hello",   "late",       "reorder", "pieces",
                                  "never",          "garbage",    "huge",    "die",
                                  "die-mid-answer", "foreign-id", "flood",   "hang"};
constexpr std::chrono::milliseconds kLateness(400);
constexpr std::chrono::seconds kHang(5);
constexpr std::size_t kPiecesPadding = std::size_t{1} << 20U;
// More than any pipe takes at once, and less than the longest line that a reader accepts.
constexpr std::size_t kCutPadding = std::size_t{8} << 20U;
constexpr std::size_t kHugeLine = std::size_t{17} << 20U;
constexpr int kFloodLines = 100'000;
constexpr int kFloodLinesPerTick = 1000;
constexpr int kForeignId = 1000;
constexpr int kDeathStatus = 9;

std::string Padded(std::string line, std::size_t padding) {
  return line.insert(1, padding, ' ');
}

}  // namespace

bool Misbehaviour::Add(std::string_view fault) {
  const std::size_t sign = std::min(fault.find('='), fault.size());
  const std::string kind(fault.substr(0, sign));
  if (std::find(std::begin(kKinds), std::end(kKinds), kind) == std::end(kKinds)) return false;
  fault.remove_prefix(std::min(sign + 1, fault.size()));
  faults.push_back({kind, std::string(fault)});
  return true;
}

bool Misbehaviour::RefusesHello() const {
  return std::any_of(
      faults.begin(), faults.end(),
      [](const Fault& fault) { return fault.kind == "refuse-hello"; });
}

std::string Misbehaviour::KindFor(const std::string& operation) const {
  for (const Fault& fault : faults)
    if (fault.operation.empty() || fault.operation == operation) return fault.kind;
  return "";
}

void Misbehaviour::Deliver(std::int32_t connection, const std::string& operation, Json reply) {
  const std::string kind = KindFor(operation);
  const std::int64_t id = reply.At("id").IntOr(0);
  if (kind == "foreign-id") reply.Set("id", Json::Int(id + kForeignId));
  std::string line = core::WriteJson(reply);
  std::vector<Held> released;
  const auto waiting = std::stable_partition(held.begin(), held.end(),
                                             [](const Held& entry) { return !entry.for_the_next; });
  std::move(waiting, held.end(), std::back_inserter(released));
  held.erase(waiting, held.end());

  if (kind == "never") {
    held.push_back({connection, id, "", Clock::time_point::max(), 0, false});
  } else if (kind == "late") {
    held.push_back({connection, id, std::move(line), Clock::now() + kLateness, 0, false});
  } else if (kind == "reorder" && released.empty()) {
    held.push_back({connection, id, std::move(line), Clock::time_point::max(), 0, true});
  } else if (kind == "flood") {
    held.push_back({connection, id, std::move(line), Clock::now(), kFloodLines, false});
  } else if (kind == "die") {
    std::_Exit(kDeathStatus);
  } else if (kind == "die-mid-answer") {
    pipe.Send(connection, Padded(std::move(line), kCutPadding));
    std::vector<core::LocalPipeServer::Message> messages;
    std::vector<std::int32_t> closed;
    pipe.Poll(messages, closed);
    std::_Exit(kDeathStatus);
  } else if (kind == "huge") {
    pipe.Send(connection, std::string(kHugeLine, 'x'));
  } else {
    if (kind == "garbage")
      for (const char* nonsense :
           {"isto nao e JSON", "[1, 2, 3]", R"({"ok": true})", R"({"id": 987654321, "ok": true})"})
        pipe.Send(connection, nonsense);
    if (kind == "hang") hanging_until = Clock::now() + kHang;
    pipe.Send(connection, kind == "pieces" ? Padded(std::move(line), kPiecesPadding) : line);
  }
  for (Held& entry : released) pipe.Send(entry.connection, std::move(entry.line));
}

void Misbehaviour::Withdraw(std::int32_t connection, std::int64_t target) {
  std::erase_if(
      held,
      [&](const Held& entry) { return entry.connection == connection && entry.id == target; });
}

void Misbehaviour::Tick() {
  const Clock::time_point now = Clock::now();
  std::erase_if(held, [&](Held& entry) {
    if (entry.due > now) return false;
    // Many lines in one piece, so that the pipe and not its queue sets the pace.
    std::string lines;
    for (int count = 0; count < kFloodLinesPerTick && entry.lines_before > 0; ++count) {
      lines += R"({"id": 987654321, "ok": true, "result": {}})"
               "\n";
      --entry.lines_before;
    }
    if (!lines.empty()) {
      lines.pop_back();  // Sending adds the last line feed.
      pipe.Send(entry.connection, std::move(lines));
    }
    if (entry.lines_before > 0) return false;
    pipe.Send(entry.connection, std::move(entry.line));
    return true;
  });
}

bool Misbehaviour::Hanging() const {
  return hanging_until && Clock::now() < *hanging_until;
}

}  // namespace zorvik::sample_editor
