#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "core/json.h"
#include "core/local_pipe/client.h"
#include "editor_check/rules.h"

namespace zorvik::editor_check {

// A request and its answer.
struct Exchange {
  std::string sent;
  std::string came;  // Empty: no answer.
  core::Json answer;

  bool Ok() const { return answer.At("ok").BoolOr(false); }
  const core::Json& Result() const { return answer.At("result"); }
  const std::string& Code() const { return answer.At("error").At("code").text; }
  std::int64_t Revision() const { return answer.At("revision").IntOr(-1); }
  // Nothing if `kept`, or else a failure with what was sent and what came.
  Verdict Require(bool kept, std::string expected) const;
};

// The check in a server's place: one connection to the editor. Every wait ends after the subject's
// patience.
class Connection {
 public:
  // `client` is the label that requests carry.
  explicit Connection(const Subject& subject, std::string client = "zorvik_editor_check");

  // Connects, without a hello.
  Verdict Connect();
  // Connects, says hello and is let in.
  Verdict Open();
  // Says hello with that token and protocol.
  Verdict Hello(const std::string& token, std::string_view bridge, Exchange& exchange);
  // Sends a request and waits for its answer.
  Verdict Ask(std::string_view operation, core::Json args, Exchange& exchange);
  // As Ask, but an answer with `ok` false isn't kept; `unsupported` means that it can't be tried.
  Verdict Do(std::string_view operation, core::Json args, Exchange& exchange);

  // Sends a request without waiting, and gives its id. `deadline_ms` defaults to the patience.
  std::int64_t Begin(std::string_view operation, core::Json args, std::int64_t deadline_ms = 0);
  // Sends a message with the next id and that token, and gives the id.
  std::int64_t Send(core::Json message, const std::string& token);
  // Sends any line.
  void SendLine(std::string line);
  // Waits for the answer to that request.
  Verdict Await(std::int64_t id, Exchange& exchange);
  // How many answers with that id have come so far.
  std::size_t CountAnswers(std::int64_t id) const;
  // The first of them, the whole line; empty when none has come.
  std::string AnswerLine(std::int64_t id) const;
  // Waits for the editor to close the connection. False if it doesn't.
  bool AwaitEnd();

 private:
  struct Request {
    std::string sent;    // As a report shows it.
    std::string answer;  // The line of the first answer.
    std::size_t answers = 0;
  };

  // Takes in what has come, or waits a moment. False when the connection has ended.
  bool Turn();
  // Keeps the line if it answers a request.
  void Take(std::string line);

  std::string pipe;
  std::string token;
  std::string client_label;
  std::uint32_t patience_ms;
  core::LocalPipeClient client;
  std::int64_t next_id = 1;
  std::map<std::int64_t, Request> requests;  // By id.
  std::size_t kept_bytes = 0;                // Of answers.
  std::string end;                           // Why the connection has ended.
};

}  // namespace zorvik::editor_check
