#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/local_pipe/lines.h"
#include "core/platform/wait.h"

namespace zorvik::core {

// The client end of the line transport between a server and one editor. One thread uses it, and
// nothing moves but in Send and Receive. After any failure but one of not being connected it is
// closed, and what was queued or half received is gone; it can be connected again.
class LocalPipeClient {
 public:
  // Milliseconds of a monotonic clock, for the time-outs. Tests bring their own.
  using TickClock = std::function<std::uint64_t()>;

  LocalPipeClient();
  explicit LocalPipeClient(TickClock clock);
  ~LocalPipeClient();
  LocalPipeClient(const LocalPipeClient&) = delete;
  LocalPipeClient& operator=(const LocalPipeClient&) = delete;

  // Connects to the server of the bare pipe name `name`, closing first whatever was open. A busy
  // pipe is tried again until `timeout_ms` have passed (negative counts as 0); any other failure
  // returns at once. False with a message in `error` on failure.
  bool Connect(const std::string& name, std::int32_t timeout_ms, std::string& error);
  bool Connected() const;
  // Safe in any state, also when repeated.
  void Close();

  // Queues `line` (without its line feed) and writes what the pipe takes without waiting. True
  // doesn't mean that the peer has it. False, with a message in `error`, when not connected, when
  // the connection fails, or when a write has been in flight for 30,000 ms. POSIX takes a line in
  // pieces, each a write with that time of its own; Windows has to get all of a line through in it.
  bool Send(std::string line, std::string& error);

  // Goes on writing, and appends the complete lines that have arrived to `lines` without waiting.
  // Takes about 4 MiB or 262,144 lines at most; what a fast peer writes beyond that is left to the
  // next call. On false, with a message in `error`, `lines` may still hold lines that came before
  // the failure, and the caller must handle them.
  bool Receive(Lines& lines, std::string& error);

  // Lets what comes from the peer end a pause.
  void AddTo(platform::WaitSources& sources) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace zorvik::core
