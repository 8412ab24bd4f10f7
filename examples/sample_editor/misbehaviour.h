#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/json.h"
#include "core/local_pipe/server.h"

namespace zorvik::sample_editor {

// The faults that tests ask for. An editor has no need of this file.
//
// A fault is given as KIND or KIND=OPERATION; without an operation it befalls all requests.
//   refuse-hello    every hello gets a refusal
//   late            the answer comes 400 ms later
//   reorder         the answer waits for the next one, and comes behind it
//   pieces          the answer is spread with white space to 1 MiB, so that it comes in many pieces
//   never           no answer at all
//   garbage         lines that answer nothing come first
//   huge            a line longer than a reader takes, instead of the answer
//   die             the process ends instead of answering
//   die-mid-answer  the process ends when it has written a part of the answer
//   foreign-id      the answer has an id that nobody asked with
//   flood           100,000 lines that nobody asked for, then the answer
//   hang            for 5 s the editor neither reads nor writes, then the answer
class Misbehaviour {
 public:
  explicit Misbehaviour(core::LocalPipeServer& server) : pipe(server) {}
  Misbehaviour(const Misbehaviour&) = delete;
  Misbehaviour& operator=(const Misbehaviour&) = delete;

  // False when there is no such kind.
  bool Add(std::string_view fault);
  bool RefusesHello() const;

  // Stands in for the bridge's own `deliver` and `withdraw`.
  void Deliver(std::int32_t connection, const std::string& operation, core::Json reply);
  void Withdraw(std::int32_t connection, std::int64_t target);
  // Does what is due. To be called in each turn of the main loop.
  void Tick();
  // Whether the pipe is to be left alone.
  bool Hanging() const;

 private:
  using Clock = std::chrono::steady_clock;

  struct Fault {
    std::string kind;
    std::string operation;
  };
  struct Held {
    std::int32_t connection = 0;
    std::int64_t id = 0;
    std::string line;
    Clock::time_point due;      // Of a late answer.
    int lines_before = 0;       // Of a flood.
    bool for_the_next = false;  // Waits until another answer has gone.
  };

  std::string KindFor(const std::string& operation) const;

  core::LocalPipeServer& pipe;
  std::vector<Fault> faults;
  std::vector<Held> held;
  std::optional<Clock::time_point> hanging_until;
};

}  // namespace zorvik::sample_editor
