#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>

#include "core/platform/pipes.h"

namespace zorvik::core {

// The write side of a connection: the lines that wait, and the one write in flight. The end that it
// writes to must be closed before this object is cleared or destroyed, since the system may be
// reading from its memory until then.
class OutgoingLines {
 public:
  using TickClock = std::function<std::uint64_t()>;

  // Waits for its reader without a limit.
  OutgoingLines() = default;
  // Gives up once one write has been in flight for `stall_ms` by `clock`.
  OutgoingLines(TickClock clock, std::uint64_t stall_ms);
  OutgoingLines(const OutgoingLines&) = delete;
  OutgoingLines& operator=(const OutgoingLines&) = delete;

  // Queues `line` (without its line feed) without a limit.
  void Push(std::string line);
  // Writes what `end` takes without waiting, a bounded amount per call. False: the write side has
  // failed, or a write has stalled.
  bool Pump(platform::PipeEnd& end);
  // Whether all that was pushed has been written.
  bool Idle() const;
  // Forgets everything, the write in flight included.
  void Clear();

 private:
  TickClock clock;
  std::uint64_t stall_ms = 0;
  std::deque<std::string> queue;  // Each with its line feed.
  std::string writing;            // The line that goes out now.
  std::size_t written = 0;        // How much of its front is confirmed.
  bool in_flight = false;
  std::uint64_t write_started = 0;
};

}  // namespace zorvik::core
