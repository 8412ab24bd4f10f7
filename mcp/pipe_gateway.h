#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/editor_registry.h"
#include "core/local_pipe/client.h"
#include "mcp/editor_gateway.h"

namespace zorvik::mcp {

// The gateway over local pipes: one connection for each editor, opened by the first Send and opened
// again by the next one after it fell. Says hello on each new connection and never waits for the
// answer. It has no timers and repeats nothing.
class PipeGateway : public EditorGateway {
 public:
  std::vector<core::EditorRecord> List() override;
  bool Send(const core::EditorRecord& editor, const core::Json& request,
            std::string& error) override;
  void Poll(std::vector<Reply>& replies, std::vector<std::string>& lost) override;

 private:
  struct Link {
    core::EditorRecord record;  // With which the connection was last opened.
    core::LocalPipeClient client;
  };

  std::map<std::string, std::unique_ptr<Link>> links;  // By editor_id.
};

}  // namespace zorvik::mcp
