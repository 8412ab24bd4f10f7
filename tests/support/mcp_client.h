#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "core/json.h"
#include "tests/support/child_process.h"
#include "tests/support/wire.h"

namespace zorvik::tests {

inline const std::string kStateless = "2026-07-28";

// "ok", or the code of a failed tool result.
std::string Outcome(const core::Json& result);
// Arguments that mean that editor and no more.
std::string At(const std::string& editor);

// A server of its own and the client at its standard streams. The server must end by itself, with
// status 0, once the client is destroyed.
class McpClient {
 public:
  // Starts the server, with the McpHome() of this moment as its home. A legacy `era` is settled by
  // handshake, kStateless goes into every request, and with an empty one the test does it all.
  explicit McpClient(std::string era = "2025-11-25", const ProgramStart& wanted = {});
  ~McpClient();
  McpClient(const McpClient&) = delete;
  McpClient& operator=(const McpClient&) = delete;

  // Writes one line, to which the line feed is added.
  bool Line(const std::string& line) { return process.Write(line + "\n"); }
  // Sends a request, whose `params` are the text of an object, and gives its id.
  std::int64_t Begin(const std::string& method, std::string params = "{}");
  std::int64_t BeginCall(const std::string& tool, const std::string& arguments = "{}");
  void Cancel(std::int64_t id);
  // Waits for the line that answers `id`. Lines that answer other requests are kept for them.
  std::string AnswerLine(std::int64_t id);
  core::Json Answer(std::int64_t id) { return Parse(AnswerLine(id)); }
  // The result of a request.
  core::Json Ask(const std::string& method, const std::string& params = "{}");
  core::Json Call(const std::string& tool, const std::string& arguments = "{}");
  // What was read and not yet asked for, by id.
  const std::map<std::int64_t, std::string>& Unclaimed() const { return answers; }

  // Closes standard input and gives the exit code.
  int Finish();
  // The log's lines without their time stamps.
  std::string Log() const;
  std::string Errors() const;
  std::filesystem::path LogPath() const;

 private:
  std::string version;
  std::filesystem::path home;
  std::int64_t last_id = 0;
  std::map<std::int64_t, std::string> answers;
  ProgramStart start;

 public:
  ChildProcess process;
};

}  // namespace zorvik::tests
