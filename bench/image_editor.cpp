// An editor that answers every inspect_capture with the same large image: zorvik_image_editor SIZE,
// with SIZE the characters of base64. It ends with its standard input.

#include <cstdlib>
#include <string>
#include <vector>

#include "authoring/protocols.h"
#include "core/editor_registry.h"
#include "core/json.h"
#include "core/local_pipe/server.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/platform/wait.h"
#include "core/process.h"

namespace core = zorvik::core;

int main(int argc, char** argv) {
  const std::size_t size = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 12'000'000;
  const std::string image(size, 'A');

  core::EditorRecord record;
  record.pid = core::CurrentProcessId();
  record.editor_id = "image";
  record.pipe = "zorvik-" + std::to_string(record.pid) + "-" + core::RandomHex(8);
  record.token = core::RandomHex(16);
  record.bridge = zorvik::authoring::kBridgeProtocol;
  core::LocalPipeServer pipe;
  std::string error;
  if (!pipe.Open(record.pipe, error)) return 1;
  core::WriteEditorRecord(record);
  core::StdioChannel console;
  console.Write("pronto " + record.editor_id);

  bool closed = false;
  while (!closed) {
    std::vector<core::LocalPipeServer::Message> messages;
    std::vector<std::int32_t> ended;
    pipe.Poll(messages, ended);
    for (const auto& [connection, line] : messages) {
      core::Json request;
      core::ParseJson(line, request, error);
      std::string reply = R"({"id":)" + std::to_string(request.At("id").IntOr(0)) + R"(,"ok":true)";
      if (request.At("op").text == "inspect.capture") {
        reply += R"(,"revision":1,"result":{"images":[{"mime":"image/png","data_base64":")";
        reply += image;
        reply += R"(","width":1920,"height":1080}]})";
      }
      pipe.Send(connection, reply + "}");
    }
    core::Lines lines;
    console.Poll(lines, closed);
    if (messages.empty()) {
      core::platform::WaitSources sources;
      pipe.AddTo(sources);
      console.AddTo(sources);
      core::platform::WaitForInput(sources, 1);
    }
  }
  core::RemoveEditorRecord(record.pid);
  return 0;
}
