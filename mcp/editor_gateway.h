#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/editor_registry.h"
#include "core/json.h"

namespace zorvik::mcp {

// The door to the editors. The server knows them through this interface alone.
class EditorGateway {
 public:
  // One line from an editor that isn't its answer to the hello.
  struct Reply {
    std::string editor;  // The editor_id of the connection on which it came.
    core::Json message;
  };

  EditorGateway() = default;
  virtual ~EditorGateway() = default;
  EditorGateway(const EditorGateway&) = delete;
  EditorGateway& operator=(const EditorGateway&) = delete;

  // The editors that are open now.
  virtual std::vector<core::EditorRecord> List() = 0;
  // Hands `request`, a whole message, to the transport. Returns false, with the reason in `error`,
  // when it won't reach the editor.
  virtual bool Send(const core::EditorRecord& editor, const core::Json& request,
                    std::string& error) = 0;
  // Hands over what has arrived, one by one, since all of it together may be a multiple of what
  // it was as text. Appends the id of each editor whose connection has just ended to `lost`; an id
  // may come twice. Never waits.
  virtual void Poll(const std::function<void(Reply)>& receive, std::vector<std::string>& lost) = 0;
};

}  // namespace zorvik::mcp
