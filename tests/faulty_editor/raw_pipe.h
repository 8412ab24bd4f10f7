#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/local_pipe/lines.h"
#include "core/platform/pipes.h"

namespace zorvik::tests {

// The editor's end of a pipe, for one client at a time. Unlike LocalPipeServer it neither queues
// nor adds anything, so a fault decides over every byte that goes out, and when.
class RawPipe {
 public:
  // Throws when the name can't be served.
  explicit RawPipe(std::string pipe_name);
  // Appends the lines that have come, or takes in the client that has come. Never waits.
  void Poll(core::Lines& lines);
  // Returns when the client has taken all of it, or has gone.
  void Write(std::string_view bytes);

  // Tells one client from the next.
  std::int32_t Connection() const { return connection; }

 private:
  // Parts from the client and waits for the next one.
  void Listen();

  std::string name;
  core::platform::PipeService service;
  std::unique_ptr<core::platform::PipeEnd> end;
  core::LineBuffer incoming;
  std::int32_t connection = 0;
  bool connected = false;
  bool reading = false;
};

}  // namespace zorvik::tests
