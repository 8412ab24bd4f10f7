#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/json.h"
#include "mcp/editor_gateway.h"
#include "tests/support/wire.h"

namespace zorvik::tests {

// A gateway whose editors, failures and replies the test decides, and which notes what was sent.
class ScriptedGateway : public mcp::EditorGateway {
 public:
  std::vector<core::EditorRecord> editors;
  std::string send_failure;                               // Not empty: Send fails with this text.
  std::vector<std::pair<std::string, std::string>> sent;  // editor_id and the message's text.
  std::vector<Reply> replies;                             // Handed over by the next Poll.
  std::vector<std::string> lost;

  void Open(const std::string& id) {
    core::EditorRecord record;
    record.editor_id = id;
    record.pipe = "pipe-" + id;
    record.token = "token-" + id;
    record.pid = static_cast<std::uint32_t>(editors.size() + 1);
    editors.push_back(record);
  }

  // Queues the reply that `text` holds, a JSON document.
  void Answer(const std::string& editor, const std::string& text) {
    replies.push_back({editor, Parse(text)});
  }

  std::vector<core::EditorRecord> List() override { return editors; }

  bool Send(const core::EditorRecord& editor, const core::Json& request,
            std::string& error) override {
    error = send_failure;
    if (!send_failure.empty()) return false;
    sent.emplace_back(editor.editor_id, core::WriteJson(request));
    return true;
  }

  void Poll(const std::function<void(Reply)>& receive, std::vector<std::string>& ended) override {
    for (Reply& reply : std::exchange(replies, {})) receive(std::move(reply));
    ended = std::exchange(lost, {});
  }
};

}  // namespace zorvik::tests
