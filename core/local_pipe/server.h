#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/wait.h"

namespace zorvik::core {

// The editor's end of the line transport: serves one pipe name to several clients from one thread.
// Only this user and the system can connect. Nothing moves but in Poll.
class LocalPipeServer {
 public:
  // One line received, without its end, and the id of the connection that sent it.
  struct Message {
    std::int32_t connection = 0;
    std::string line;
  };

  LocalPipeServer();
  // As Close.
  ~LocalPipeServer();
  LocalPipeServer(const LocalPipeServer&) = delete;
  LocalPipeServer& operator=(const LocalPipeServer&) = delete;

  // Starts serving `name` to at most `limit` clients at once (below 1 counts as 1), closing first
  // whatever was open. False, with a message in `error`, when the name is served already or the
  // system refuses.
  bool Open(const std::string& name, std::string& error, std::int32_t limit = 4);
  bool IsOpen() const;
  // The name of the last Open.
  const std::string& Name() const;
  // Connected clients, those marked by Drop included.
  std::size_t Connections() const;

  // Does all the work without waiting: accepts, reads, writes. Appends what came to `messages` and
  // the ids of connections that ended by themselves to `closed`. Does nothing unless open.
  void Poll(std::vector<Message>& messages, std::vector<std::int32_t>& closed);

  // Queues `line` for that connection; the next Poll writes it. False when there is no such
  // connection, or it has no client, or it was dropped. The queue has no limit.
  bool Send(std::int32_t connection, std::string line);
  // Lets that connection end once all that is queued for it has been written. It isn't reported in
  // `closed`.
  void Drop(std::int32_t connection);
  // Lets what comes from the clients, and a new one, end a pause. What was queued by Send since the
  // last Poll doesn't: whoever queued something polls before pausing.
  void AddTo(platform::WaitSources& sources) const;
  // Cuts all clients off, without reports, and gives the name up. Connection ids are not reused.
  void Close();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace zorvik::core
