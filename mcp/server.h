#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/json.h"
#include "mcp/answers.h"
#include "mcp/editor_gateway.h"

namespace zorvik::mcp {

// Turns lines of JSON-RPC into work and work into lines of JSON-RPC. It has no threads, knows no
// streams, and never waits for an editor: a forwarded call is answered by a later Poll.
//
// Its members stand in dispatch.cpp (lines, batches, methods), tool_calls.cpp (a call up to the
// editor) and pending_calls.cpp (how calls end). What leaves by `sender` gets its form in
// answers.cpp.
class Server {
 public:
  using Clock = std::chrono::steady_clock;
  using Sender = std::function<void(std::string)>;
  using Logger = std::function<void(const std::string&)>;
  using Now = std::function<Clock::time_point()>;

  // `editors` must outlive the server. `sender` writes one protocol line. `logger` writes one log
  // line, and may be empty. `clock` times the calls and their deadlines.
  Server(EditorGateway& editors, Sender sender, Logger logger, Now clock = Clock::now);

  // Handles one line, without its line feed, and writes any answer that is due now.
  void Receive(std::string_view line);
  // Ends the calls whose reply has come, whose editor was lost, or whose time is up, in this order.
  void Poll();
  // The number of calls in flight.
  std::size_t PendingCount() const { return pending.size(); }

 private:
  using Era = mcp::Era;

  // A call that an editor has and hasn't answered yet.
  struct Pending {
    core::Json id;  // The client's.
    Era era;        // Shapes the answer, whatever was negotiated since.
    std::string tool;
    std::string editor;
    std::uint64_t bridge_id = 0;
    Clock::time_point started;
    Clock::time_point deadline;
  };

  using PendingCalls = std::map<std::uint64_t, Pending>;  // By bridge id.

  // All of these return the answer's text, or an empty one when there is nothing to send now.
  std::string Handle(core::Json message);
  std::string HandleRequest(const core::Json& id, const std::string& method, core::Json params);
  std::string Initialize(const core::Json& id, const core::Json& params);
  std::string CallTool(const core::Json& id, const Era& era, core::Json params);

  // Fills `records` and returns the one among them that the call is for. Null, with a tool document
  // in `error`, when that one isn't open or can't be told.
  const core::EditorRecord* Target(const core::Json& arguments,
                                   std::vector<core::EditorRecord>& records, core::Json& error);
  core::Json EditorList();

  void Cancel(const core::Json& params);
  void Finish(const Pending& pending, core::Json message);
  void FinishError(const Pending& pending, core::Json document);
  // Forgets the call and gives the one behind it.
  PendingCalls::iterator Remove(PendingCalls::iterator call);
  void Log(const std::string& text);

  std::int64_t deadline_ms = 120000;
  EditorGateway& gateway;
  Sender send;
  Logger log;
  Now now;
  std::optional<std::string> legacy_version;
  PendingCalls pending;
  // The same calls as the text of the client's id and the bridge id, for cancelling.
  std::set<std::pair<std::string, std::uint64_t>> by_client_id;
  std::uint64_t next_id = 1;
  std::string client_label;
};

}  // namespace zorvik::mcp
