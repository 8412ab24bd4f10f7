#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "core/json.h"
#include "core/local_pipe/server.h"
#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {

// The editor's side of the bridge protocol: from the lines of the connections to operations on the
// world, and back. Every line of a server carries the token of the editor's record.
class Bridge {
 public:
  Bridge(World& world, core::LocalPipeServer& pipe, std::string token);
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  void Handle(const core::LocalPipeServer::Message& message);
  // The connection has ended.
  void Forget(std::int32_t connection);

  // How the answer to a request leaves. At first it is sent at once.
  std::function<void(std::int32_t connection, const std::string& operation, core::Json reply)>
      deliver;
  // Takes back the answer to the request of that id, if it hasn't left. At first there is nothing
  // to do, since all operations are done and answered on the spot.
  std::function<void(std::int32_t connection, std::int64_t target)> withdraw;

 private:
  void Send(std::int32_t connection, const core::Json& message);
  void Hello(std::int32_t connection, const core::Json& message);
  core::Json Answer(const core::Json& request);
  void Remember(const std::string& key, const core::Json& reply);

  World& world;
  core::LocalPipeServer& pipe;
  std::string token;
  std::set<std::int32_t> accepted;  // Connections whose hello was right.
  // Answers to requests that had a request_id, for when one is repeated; the oldest go first.
  std::map<std::string, core::Json> remembered;
  std::deque<std::string> remembered_order;
};

}  // namespace zorvik::sample_editor
