#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/editor_registry.h"
#include "core/local_pipe/client.h"
#include "mcp/editor_gateway.h"

namespace zorvik::mcp {

// The gateway over local pipes, with one connection for each editor. The first Send opens it, and
// so does the next Send after it was lost. Each new connection starts with a hello, whose answer is
// not waited for. There are no timers, and nothing is repeated.
class PipeGateway : public EditorGateway {
 public:
  std::vector<core::EditorRecord> List() override;
  bool Send(const core::EditorRecord& editor, const core::Json& request,
            std::string& error) override;
  void Poll(const std::function<void(Reply)>& receive, std::vector<std::string>& lost) override;
  // Lets what comes from the editors end a pause.
  void AddTo(core::platform::WaitSources& sources) const;

 private:
  struct Link {
    core::EditorRecord record;  // As it was when the connection was opened.
    core::LocalPipeClient client;
  };

  std::map<std::string, std::unique_ptr<Link>> links;  // By editor_id.
};

}  // namespace zorvik::mcp
