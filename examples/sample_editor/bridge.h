#pragma once

#include <cstdint>
#include <deque>
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
  // What to send back for a line.
  struct Reply {
    core::Json message{};  // Null: nothing.
    bool hang_up = false;  // The connection is to end behind it.
  };

  Bridge(World& world, std::string token);
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  Reply Handle(const core::LocalPipeServer::Message& message);
  // The connection has ended.
  void Forget(std::int32_t connection);

 private:
  Reply Hello(std::int32_t connection, const core::Json& message);
  core::Json Answer(const core::Json& request);
  void Remember(const std::string& key, const core::Json& reply);

  World& world;
  std::string token;
  std::set<std::int32_t> accepted;  // Connections whose hello was right.
  // Answers to requests that had a request_id, for when one is repeated; the oldest go first.
  std::map<std::string, core::Json> remembered;
  std::deque<std::string> remembered_order;
};

}  // namespace zorvik::sample_editor
