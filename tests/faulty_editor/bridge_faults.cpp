#include "tests/faulty_editor/bridge_faults.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <utility>

#include "authoring/catalog.h"
#include "authoring/protocols.h"
#include "core/platform/files.h"

namespace zorvik::tests {

using core::Json;
using Path = std::filesystem::path;
using Reply = sample_editor::Bridge::Reply;

// What is wrong is one of these; the others are empty.
struct BridgeFault {
  std::string_view name;
  std::function<void(const Path& file)> record = nullptr;
  std::function<bool(const std::string& line)> line = nullptr;  // False: hangs up.
  // One that becomes null gets lost.
  std::function<void(BrokenEditor& editor, Json& request)> request = nullptr;
  std::function<void(BrokenEditor&, const Json& request, Reply&)> reply = nullptr;
  std::int32_t limit = 4;
};

namespace {

void WriteRecord(const Path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::string ReadRecord(const Path& file) {
  std::string text;
  core::platform::ReadWholeFile(file, text);
  return text;
}

bool Is(const Json& request, std::string_view operation) {
  return request.At("op").text == operation;
}

Json& Args(Json& request) {
  return *request.Find("args");
}

void Erase(Json& object, std::string_view key) {
  std::erase_if(
      object.fields, [&](const Json::Field& field) { return field.first == key; });
}

// The kinds of faults that several rows share.

auto Key(const char* key, const Json& value) {
  return [=](const Path& file) {
    Json record;
    std::string error;
    core::ParseJson(ReadRecord(file), record, error);
    record.Set(key, value);
    WriteRecord(file, core::WriteJson(record) + "\n");
  };
}

auto LongestLine(std::size_t limit) {
  return [=](const std::string& line) { return line.size() <= limit; };
}

// Each answer to that operation has this member.
auto Member(const char* operation, const char* key, const Json& value) {
  return [=](BrokenEditor&, const Json& request, Reply& reply) {
    if (Is(request, operation)) reply.message.Set(key, value);
  };
}

// So has each result.
auto ResultMember(const char* operation, const char* key, const Json& value) {
  return [=](BrokenEditor&, const Json& request, Reply& reply) {
    Json* result = reply.message.Find("result");
    if (Is(request, operation) && result != nullptr) result->Set(key, value);
  };
}

// Requests get `value` for `key` where `condition` holds.
template <typename Condition, typename Value>
auto Request(const Condition& condition, const char* key, const Value& value) {
  return [=](BrokenEditor& editor, Json& request) {
    if (condition(request)) request.Set(key, value(editor));
  };
}

template <typename Condition>
auto Lost(const Condition& condition) {
  return [=](BrokenEditor&, Json& request) {
    if (condition(request)) request = Json();
  };
}

template <typename Condition>
auto HangUp(const Condition& condition) {
  return [=](BrokenEditor&, const Json& request, Reply& reply) {
    if (condition(request)) reply = {Json(), true};
  };
}

// Errors of one code get another.
template <typename Condition>
auto Code(const Condition& condition, const char* from, const char* to) {
  return [=](BrokenEditor&, const Json& request, Reply& reply) {
    Json* error = reply.message.Find("error");
    if (condition(request) && error != nullptr && error->At("code").text == from)
      error->Set("code", Json::Text(to));
  };
}

auto Operation(const char* name) {
  return [=](const Json& request) { return Is(request, name); };
}

bool IsHello(const Json& request) {
  return Is(request, "hello");
}

bool IsUnknown(const Json& request) {
  return authoring::FindOperation(request.At("op").text) == nullptr;
}

Json Token(const BrokenEditor& editor) {
  return Json::Text(editor.token);
}

// A request on any revision counts as one on the newest.
auto OnNewestRevision(bool named) {
  return [=](BrokenEditor& editor, Json& request) {
    if (request.At("args").Has("base_revision") == named &&
        (named || Is(request, "objects.update")))
      Args(request).Set("base_revision", Json::Int(editor.Revision()));
  };
}

const BridgeFault kFaults[] = {
    {.name = "record.keys", .record = Key("token", Json::Int(7))},
    {.name = "record.about", .record = Key("world_id", Json())},
    {.name = "record.line",
     .record = [](const Path& file) { WriteRecord(file, ReadRecord(file) + "\n"); }},
    {.name = "record.file",
     .record = [](const Path& file) { rename(file, file.parent_path() / "editor.json"); }},
    {.name = "record.editor_id", .record = Key("editor_id", Json::Text(std::string(65, 'a')))},
    {.name = "record.bridge", .record = Key("bridge", Json::Text("zorvik-bridge/9"))},
    {.name = "record.private_file",
     .record = [](const Path& file) { permissions(file, std::filesystem::perms{0644}); }},
    {.name = "record.private_folder",
     .record =
         [](const Path& file) { permissions(file.parent_path(), std::filesystem::perms{0755}); }},
    {.name = "record.pid_alive",
     .record =
         [](const Path& file) {
           Key("pid", Json::Int(999'999'999))(file);
           rename(file, file.parent_path() / "999999999.json");
         }},
    {.name = "record.pipe_name", .record = Key("pipe", Json::Text("a/b"))},
    {.name = "record.pipe_served", .record = Key("pipe", Json::Text("zorvik-nobody"))},

    {.name = "hello.accepted", .reply = Member("hello", "ok", Json::Text("sim"))},
    {.name = "hello.wrong_token", .request = Request(IsHello, "token", Token)},
    {.name = "hello.wrong_token/code", .reply = Code(IsHello, "unauthorized", "forbidden")},
    {.name = "hello.refused_closes",
     .reply = [](BrokenEditor&, const Json&, Reply& reply) { reply.hang_up = false; }},
    {.name = "hello.wrong_version",
     .request = Request(IsHello, "bridge",
                        [](BrokenEditor&) { return Json::Text(authoring::kBridgeProtocol); })},
    {.name = "hello.first",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (!IsHello(request))
             editor.SoundReply(Json::Object({{"id", 0},
                                             {"op", "hello"},
                                             {"token", editor.token},
                                             {"bridge", authoring::kBridgeProtocol}}));
         }},
    {.name = "request.token", .request = Request(std::not_fn(IsHello), "token", Token)},
    {.name = "connection.several", .limit = 1},
    {.name = "lines.cut", .request = Lost([](const Json& request) {
                            return request.At("client").text.find('\xE2') != std::string::npos;
                          })},
    {.name = "lines.long", .line = LongestLine(65'536)},
    {.name = "lines.limit", .line = LongestLine(8'388'608)},
    {.name = "lines.garbage",
     .line = [](const std::string& line) { return line.starts_with('{'); }},

    {.name = "answer.given", .request = Lost(Operation("jobs.list"))},
    {.name = "answer.given/id", .reply = Member("jobs.list", "id", Json::Int(1'000'000))},
    {.name = "answer.ok", .reply = Member("jobs.list", "ok", Json::Text("sim"))},
    // Tells the token twice, too, which no report may.
    {.name = "answer.ok/fails",
     .reply =
         [](BrokenEditor& editor, const Json& request, Reply& reply) {
           const std::string told = editor.token + " " + editor.token;
           if (Is(request, "water.list"))
             reply.message = Json::Object({{"id", request.At("id")},
                                           {"ok", false},
                                           {"error", authoring::ErrorBody("x", told, "", Json())}});
         }},
    {.name = "answer.revision", .reply = Member("jobs.list", "revision", Json::Text("1"))},
    {.name = "answer.result", .reply = Member("water.list", "result", Json::Object({{"agua", 1}}))},
    {.name = "answer.result/list", .reply = Member("water.list", "result", Json::Array())},
    {.name = "answer.schema", .reply = ResultMember("water.list", "warnings", Json::Text("oi"))},
    {.name = "answer.error",
     .reply = Member("roads.list", "error", Json::Object({{"code", "unsupported"}}))},
    {.name = "answer.images",
     .reply = ResultMember(
         "inspect.capture", "images",
         Json::Array({Json::Object({{"mime", "image/png"}, {"data_base64", "abc\n"}})}))},
    {.name = "request.unknown", .reply = Code(IsUnknown, "unsupported", "not_found")},
    {.name = "request.arguments", .reply = HangUp([](const Json& request) {
                                    return request.Has("args") &&
                                           request.At("args").kind != Json::Kind::Object;
                                  })},
    {.name = "request.many",
     .reply =
         [](BrokenEditor& editor, const Json& request, Reply& reply) {
           if (Is(request, "world.info")) editor.Send(reply.message);
         }},
    {.name = "request.cancel", .reply = HangUp(Operation("cancel"))},
    {.name = "request.deadline",
     .reply = HangUp([](const Json& request) { return request.At("deadline_ms").IntOr(0) == 1; })},

    {.name = "change.create",
     .reply = ResultMember("objects.create", "created",
                           Json::Array({Json::Object({{"id", 1'000'000}})}))},
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
    {.name = "change.base_revision", .request = OnNewestRevision(false)},
    {.name = "change.conflict", .request = OnNewestRevision(true)},
    {.name = "change.batch",
     .request =
         [](BrokenEditor& editor, Json& request) {
           if (!Is(request, "batch.apply")) return;
           Json first = request;
           first.Set("op", Json::Text("objects.create"));
           first.Set("args", request.At("args").At("ops")[0].At("args"));
           editor.SoundReply(first);
         }},
    {.name = "change.revision", .reply = Member("objects.delete", "revision", Json::Int(1))},
    {.name = "change.clients",
     .request = Request(Operation("objects.create"), "client",
                        [](BrokenEditor&) { return Json::Text("todos"); })},
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
