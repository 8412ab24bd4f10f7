#include "core/local_pipe/outgoing_lines.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zorvik::core {
namespace {

// Keeps a fast reader from holding the thread. Starting a write and collecting it take a pass each.
constexpr int kPassesPerPump = 64;

}  // namespace

OutgoingLines::OutgoingLines(TickClock tick_clock, std::uint64_t stall_limit_ms)
    : clock(std::move(tick_clock)), stall_ms(stall_limit_ms) {}

void OutgoingLines::Push(std::string line) {
  line.push_back('\n');
  queue.push_back(std::move(line));
}

bool OutgoingLines::Pump(platform::PipeEnd& end) {
  for (int pass = 0; pass < kPassesPerPump; ++pass) {
    if (in_flight) {
      std::size_t count = 0;
      switch (end.FinishWrite(count)) {
        case platform::Progress::Pending:
          return !clock || clock() - write_started < stall_ms;
        case platform::Progress::Failed:
          return false;
        case platform::Progress::Done:
          break;
      }
      in_flight = false;
      written += std::min(count, writing.size() - written);
      if (written == writing.size()) {
        std::string().swap(writing);  // Gives its memory back.
        written = 0;
      }
    } else if (Idle()) {
      return true;
    } else {
      if (writing.empty()) {
        writing = std::move(queue.front());
        queue.pop_front();
      }
      // An offset instead of erasing the front: a line of many megabytes goes out in many pieces.
      if (!end.StartWrite(std::string_view(writing).substr(written))) return false;
      in_flight = true;
      write_started = clock ? clock() : 0;
    }
  }
  return true;
}

bool OutgoingLines::Idle() const {
  return writing.empty() && queue.empty();
}

void OutgoingLines::Clear() {
  queue.clear();
  std::string().swap(writing);  // Gives its memory back.
  written = 0;
  in_flight = false;
}

}  // namespace zorvik::core
