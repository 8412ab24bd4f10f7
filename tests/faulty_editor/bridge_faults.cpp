#include "tests/faulty_editor/bridge_faults.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "authoring/catalog.h"
#include "authoring/protocols.h"
#include "core/platform/files.h"

namespace zorvik::tests {

using core::Json;
using Path = std::filesystem::path;
using Reply = sample_editor::Bridge::Reply;

struct BridgeFault {
  std::string_view name;
  void (*record)(const Path& file) = nullptr;
  bool (*line)(const std::string& line) = nullptr;                 // False: hangs up.
  void (*request)(BrokenEditor& editor, Json& request) = nullptr;  // Null: it gets lost.
  void (*reply)(BrokenEditor& editor, const Json& request, Reply& reply) = nullptr;
  std::int32_t limit = 4;
};

namespace {

constexpr std::size_t kShortLine = 65'536;
constexpr std::size_t kMediumLine = 8'388'608;

void WriteRecord(const Path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::string ReadRecord(const Path& file) {
  std::string text;
  core::platform::ReadWholeFile(file, text);
  return text;
}

void Change(const Path& file, const char* key, Json value) {
  Json record;
  std::string error;
  core::ParseJson(ReadRecord(file), record, error);
  record.Set(key, std::move(value));
  WriteRecord(file, core::WriteJson(record) + "\n");
}

bool Is(const Json& request, std::string_view operation) {
  return request.At("op").text == operation;
}

void Lose(Json& request) {
  request = Json();
}

Json& Args(Json& request) {
  return *request.Find("args");
}

// Puts a member into the result of that operation.
void SetResult(const Json& request, Reply& reply, std::string_view operation, const char* key,
               Json value) {
  Json* result = reply.message.Find("result");
  if (Is(request, operation) && result != nullptr) result->Set(key, std::move(value));
}

void SetMember(const Json& request, Reply& reply, std::string_view operation, const char* key,
               Json value) {
  if (Is(request, operation)) reply.message.Set(key, std::move(value));
}

void SetCode(Reply& reply, const char* from, const char* to) {
  Json* error = reply.message.Find("error");
  if (error != nullptr && error->At("code").text == from) error->Set("code", Json::Text(to));
}

void HangUp(Reply& reply) {
  reply = {Json(), true};
}

void Erase(Json& object, std::string_view key) {
  std::erase_if(
      object.fields, [&](const Json::Field& field) { return field.first == key; });
}

const BridgeFault kFaults[] = {
    {.name = "record.keys",
     .record = [](const Path& file) { Change(file, "token", Json::Int(7)); }},
    {.name = "record.about", .record = [](const Path& file) { Change(file, "world_id", Json()); }},
    {.name = "record.line",
     .record = [](const Path& file) { WriteRecord(file, ReadRecord(file) + "\n"); }},
    {.name = "record.file",
     .record = [](const Path& file) { rename(file, file.parent_path() / "editor.json"); }},
    {.name = "record.editor_id",
     .record =
         [](const Path& file) { Change(file, "editor_id", Json::Text(std::string(65, 'a'))); }},
    {.name = "record.bridge",
     .record = [](const Path& file) { Change(file, "bridge", Json::Text("zorvik-bridge/9")); }},
    {.name = "record.private_file",
     .record = [](const Path& file) { permissions(file, std::filesystem::perms{0644}); }},
    {.name = "record.private_folder",
     .record =
         [](const Path& file) { permissions(file.parent_path(), std::filesystem::perms{0755}); }},
    {.name = "record.pid_alive",
     .record =
         [](const Path& file) {
           Change(file, "pid", Json::Int(999'999'999));
           rename(file, file.parent_path() / "999999999.json");
         }},
    {.name = "record.pipe_name",
     .record = [](const Path& file) { Change(file, "pipe", Json::Text("a/b")); }},
    {.name = "record.pipe_served",
     .record = [](const Path& file) { Change(file, "pipe", Json::Text("zorvik-nobody")); }},

    {.name = "hello.accepted",
     .reply = [](BrokenEditor&, const Json& request,
                 Reply& reply) { SetMember(request, reply, "hello", "ok", Json::Text("sim")); }},
    {.name = "hello.wrong_token",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (Is(request, "hello")) request.Set("token", Json::Text(editor.token));
         }},
    {.name = "hello.wrong_token/code",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (Is(request, "hello")) SetCode(reply, "unauthorized", "forbidden");
         }},
    {.name = "hello.refused_closes",
     .reply = [](BrokenEditor&, const Json&, Reply& reply) { reply.hang_up = false; }},
    {.name = "hello.wrong_version",
     .request =
         [](BrokenEditor&, Json& request) {
           if (Is(request, "hello")) request.Set("bridge", Json::Text(authoring::kBridgeProtocol));
         }},
    {.name = "hello.first",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (!Is(request, "hello"))
             editor.SoundReply(Json::Object({{"id", 0},
                                             {"op", "hello"},
                                             {"token", editor.token},
                                             {"bridge", authoring::kBridgeProtocol}}));
         }},
    {.name = "request.token",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (!Is(request, "hello")) request.Set("token", Json::Text(editor.token));
         }},
    {.name = "connection.several", .limit = 1},
    {.name = "lines.cut",
     .request =
         [](BrokenEditor&, Json& request) {
           if (request.At("client").text.find('\xE2') != std::string::npos) Lose(request);
         }},
    {.name = "lines.long",
     .line = [](const std::string& line) { return line.size() <= kShortLine; }},
    {.name = "lines.limit",
     .line = [](const std::string& line) { return line.size() <= kMediumLine; }},
    {.name = "lines.garbage",
     .line = [](const std::string& line) { return line.starts_with('{'); }},

    {.name = "answer.given",
     .request =
         [](BrokenEditor&, Json& request) {
           if (Is(request, "jobs.list")) Lose(request);
         }},
    {.name = "answer.given/id",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "jobs.list", "id", Json::Int(1'000'000));
         }},
    {.name = "answer.ok",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "jobs.list", "ok", Json::Text("sim"));
         }},
    {.name = "answer.ok/fails",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (Is(request, "water.list"))
             reply.message = Json::Object({{"id", request.At("id")},
                                           {"ok", false},
                                           {"error", authoring::ErrorBody("x", "x", "", Json())}});
         }},
    {.name = "answer.revision",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "jobs.list", "revision", Json::Text("1"));
         }},
    {.name = "answer.result",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "water.list", "result", Json::Object({{"agua", 1}}));
         }},
    {.name = "answer.result/list",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "water.list", "result", Json::Array());
         }},
    {.name = "answer.schema",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetResult(request, reply, "water.list", "warnings", Json::Text("cuidado"));
         }},
    {.name = "answer.error",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "roads.list", "error",
                     Json::Object({{"code", "unsupported"}}));
         }},
    {.name = "answer.images",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetResult(
               request, reply, "inspect.capture", "images",
               Json::Array({Json::Object({{"mime", "image/png"}, {"data_base64", "abc\n"}})}));
         }},
    {.name = "request.unknown",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (authoring::FindOperation(request.At("op").text) == nullptr)
             SetCode(reply, "unsupported", "not_found");
         }},
    {.name = "request.arguments",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (request.Has("args") && request.At("args").kind != Json::Kind::Object) HangUp(reply);
         }},
    {.name = "request.many",
     .reply =
         [](BrokenEditor& editor, const Json& request, Reply& reply) {
           if (Is(request, "world.info")) editor.Send(reply.message);
         }},
    {.name = "request.cancel",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (Is(request, "cancel")) HangUp(reply);
         }},
    {.name = "request.deadline",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           if (request.At("deadline_ms").IntOr(0) == 1) HangUp(reply);
         }},

    {.name = "change.create",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetResult(request, reply, "objects.create", "created",
                     Json::Array({Json::Object({{"id", 1'000'000}})}));
         }},
    {.name = "change.update",
     .request =
         [](BrokenEditor&, Json& request) {
           if (Is(request, "objects.update")) Erase(Args(request).Find("updates")->items[0], "x");
         }},
    // Changes nothing, as an update without fields.
    {.name = "change.delete",
     .request =
         [](BrokenEditor&, Json& request) {
           if (!Is(request, "objects.delete")) return;
           Json args = Json::Object(
               {{"updates", Json::Array({Json::Object({{"id", request.At("args").At("ids")[0]}})})},
                {"base_revision", request.At("args").At("base_revision")}});
           request.Set("op", Json::Text("objects.update"));
           request.Set("args", std::move(args));
         }},
    {.name = "change.revert",
     .request =
         [](BrokenEditor&, Json& request) {
           if (!Is(request, "history.revert")) return;
           request.Set("op", Json::Text("world.info"));
           request.Set("args", Json::Object());
         }},
    {.name = "change.request_id",
     .request =
         [](BrokenEditor&, Json& request) {
           if (request.At("args").Has("request_id")) Erase(Args(request), "request_id");
         }},
    {.name = "change.base_revision",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (Is(request, "objects.update") && !request.At("args").Has("base_revision"))
             Args(request).Set("base_revision", Json::Int(editor.Revision()));
         }},
    {.name = "change.conflict",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (request.At("args").Has("base_revision"))
             Args(request).Set("base_revision", Json::Int(editor.Revision()));
         }},
    {.name = "change.batch",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (!Is(request, "batch.apply")) return;
           Json first = request;
           first.Set("op", Json::Text("objects.create"));
           first.Set("args", request.At("args").At("ops")[0].At("args"));
           editor.SoundReply(first);
         }},
    {.name = "change.revision",
     .reply =
         [](BrokenEditor&, const Json& request, Reply& reply) {
           SetMember(request, reply, "objects.delete", "revision", Json::Int(1));
         }},
    {.name = "change.clients",
     .request =
         [](BrokenEditor&, Json& request) {
           if (Is(request, "objects.create")) request.Set("client", Json::Text("todos"));
         }},
};

const BridgeFault& Find(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kFaults), std::end(kFaults),
                                         [&](const BridgeFault& row) { return row.name == name; });
  if (found == std::end(kFaults)) throw std::runtime_error("no fault " + std::string(name));
  return *found;
}

}  // namespace

BrokenEditor::BrokenEditor(std::string_view name, const std::string& pipe_name,
                           const std::string& secret)
    : token(secret), fault(Find(name)), bridge(world, secret) {
  std::string error;
  if (!pipe.Open(pipe_name, error, fault.limit)) throw std::runtime_error(error);
}

void BrokenEditor::SpoilRecord(const Path& file) {
  if (fault.record != nullptr) fault.record(file);
}

void BrokenEditor::Turn() {
  std::vector<core::LocalPipeServer::Message> messages;
  std::vector<std::int32_t> ended;
  pipe.Poll(messages, ended);
  for (const auto& message : messages) Handle(message);
  for (const std::int32_t gone : ended) bridge.Forget(gone);
}

Reply BrokenEditor::SoundReply(const Json& message) {
  return bridge.Handle({connection, core::WriteJson(message)});
}

void BrokenEditor::Handle(const core::LocalPipeServer::Message& message) {
  connection = message.connection;
  if (fault.line != nullptr && !fault.line(message.line)) return pipe.Drop(connection);
  Json request;
  std::string error;
  if (!core::ParseJson(message.line, request, error)) return;
  if (fault.request != nullptr) fault.request(*this, request);
  Reply reply = SoundReply(request);
  if (fault.reply != nullptr) fault.reply(*this, request, reply);
  if (reply.message.kind != Json::Kind::Null) Send(reply.message);
  if (reply.hang_up) pipe.Drop(connection);
}

std::vector<std::string_view> BridgeFaultNames() {
  std::vector<std::string_view> names;
  for (const BridgeFault& row : kFaults) names.push_back(row.name);
  return names;
}

}  // namespace zorvik::tests
