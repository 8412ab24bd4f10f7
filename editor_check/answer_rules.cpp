#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "authoring/validate.h"
#include "editor_check/arguments.h"
#include "editor_check/connection.h"
#include "editor_check/rules.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

constexpr int kInFlight = 200;

// Asks for every reading operation at once, the first time. False: the editor isn't there.
Verdict Read(Subject& subject) {
  if (!subject.readings.empty()) return std::nullopt;
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  std::vector<std::int64_t> ids;
  for (const authoring::ToolSpec& tool : authoring::Tools()) {
    if (tool.kind != authoring::ToolKind::Read || tool.local) continue;
    Reading reading{tool.operation, SmallestValid(tool.input), {}, {}, {}};
    ids.push_back(connection.Begin(reading.operation, reading.args));
    subject.readings.push_back(std::move(reading));
  }
  bool all = true;
  for (std::size_t at = 0; at < ids.size(); ++at) {
    // Once one hasn't come in time, the others aren't waited for any more.
    if (!all && connection.CountAnswers(ids[at]) == 0) continue;
    Exchange exchange;
    if (connection.Await(ids[at], exchange)) all = false;
    Reading& reading = subject.readings[at];
    reading.sent = exchange.sent;
    reading.came = exchange.came;
    reading.line = connection.AnswerLine(ids[at]);
  }
  return std::nullopt;
}

// Judges each answer by `judge`, which gives what it should have been, or an empty text.
template <class Judge>
Verdict EachReading(Subject& subject, Judge judge) {
  if (Verdict fault = Read(subject)) return fault;
  for (const Reading& reading : subject.readings) {
    Json answer;
    std::string ignored;
    if (!core::ParseJson(reading.line, answer, ignored)) continue;
    const std::string expected =
        judge(reading, answer, *authoring::FindOperation(reading.operation));
    if (!expected.empty()) return Finding{true, reading.sent, reading.came, expected};
  }
  return std::nullopt;
}

bool Succeeded(const Json& answer) {
  return answer.At("ok").BoolOr(false);
}

Verdict Given(Subject& subject) {
  if (Verdict fault = Read(subject)) return fault;
  for (const Reading& reading : subject.readings)
    if (reading.line.empty())
      return Finding{true, reading.sent, reading.came, "an answer with the id of the request"};
  return std::nullopt;
}

Verdict Ok(Subject& subject) {
  return EachReading(
      subject,
      [](const Reading& reading, const Json& answer, const authoring::ToolSpec&) {
        if (answer.At("ok").kind != Json::Kind::Bool) return "`ok` true or false";
        if (Succeeded(answer)) return "";
        if (reading.operation == "world.capabilities" || reading.operation == "world.info")
          return "`ok` true: every editor has this operation";
        const bool unsupported = answer.At("error").At("code").text == "unsupported";
        // Only arguments may be wrong in ways that the check can't know.
        return unsupported || !reading.args.fields.empty()
                   ? ""
                   : "`ok` true, or `unsupported`: nothing was asked for that could be wrong";
      });
}

Verdict Revision(Subject& subject) {
  return EachReading(
      subject,
      [](const Reading&, const Json& answer, const authoring::ToolSpec&) {
        const Json& revision = answer.At("revision");
        return !Succeeded(answer) || (revision.IsInteger() && revision.number >= 0)
                   ? ""
                   : "`revision`, a whole number";
      });
}

Verdict Result(Subject& subject) {
  return EachReading(
      subject,
      [](const Reading&, const Json& answer, const authoring::ToolSpec& tool) -> std::string {
        const Json& result = answer.At("result");
        const std::string& description = tool.output.At("description").text;
        const std::vector<std::string> names = NamedMembers(description);
        if (!Succeeded(answer) || std::any_of(
                                      names.begin(), names.end(),
                                      [&](const std::string& name) { return result.Has(name); }))
          return "";
        return "`result`, an object with: " + description;
      });
}

// The document that the server would make of the answer.
Verdict Schema(Subject& subject) {
  return EachReading(
      subject,
      [](const Reading&, const Json& answer, const authoring::ToolSpec& tool) -> std::string {
        Json document = Json::Object({{"ok", answer.At("ok")}});
        if (const Json& revision = answer.At("revision"); revision.kind == Json::Kind::Number)
          document.Set("revision", revision);
        for (const auto& [key, value] : answer.At("result").fields)
          // The keys of `result` differ from each other; to look each up takes quadratic time.
          if (key == "ok" || key == "revision")
            document.Set(key, value);
          else
            document.fields.emplace_back(key, value);
        std::string field;
        std::string reason;
        if (authoring::Validate(tool.output, document, field, reason)) return "";
        return "what the output schema of " + tool.name + " lets pass: " + field + " " + reason;
      });
}

bool TellsError(const Json& answer) {
  const Json& error = answer.At("error");
  return !error.At("code").text.empty() && !error.At("message").text.empty();
}

Verdict Error(Subject& subject) {
  return EachReading(
      subject,
      [](const Reading&, const Json& answer, const authoring::ToolSpec&) {
        return answer.At("ok").BoolOr(true) || TellsError(answer)
                   ? ""
                   : "`error` with the texts `code` and `message`";
      });
}

bool IsBase64(const std::string& text) {
  const std::size_t end =
      text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
  const std::size_t padding = end == std::string::npos ? 0 : text.size() - end;
  return !text.empty() && text.size() % 4 == 0 && padding <= 2 &&
         text.find_first_not_of('=', text.size() - padding) == std::string::npos;
}

Verdict Images(Subject& subject) {
  bool any = false;
  Verdict fault =
      EachReading(subject, [&](const Reading&, const Json& answer, const authoring::ToolSpec&) {
        const Json& result = answer.At("result");
        if (!Succeeded(answer) || !result.Has("images")) return "";
        any = true;
        const auto& images = result.At("images").items;
        const bool good =
            !images.empty() && std::all_of(images.begin(), images.end(), [](const Json& image) {
              const std::string mime = image.Has("mime") ? image.At("mime").text : "image/png";
              return mime.starts_with("image/") && IsBase64(image.At("data_base64").text);
            });
        return good ? "" : "`images`, a list of {`mime`, `data_base64`}";
      });
  return fault || any ? fault : NotTried("no answer had images");
}

Verdict UnknownOperation(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  Exchange exchange;
  for (const char* operation : {"zorvik.editor_check", "world_info", ""}) {
    if (Verdict fault = connection.Ask(operation, Json::Object(), exchange)) return fault;
    if (Verdict fault = exchange.Require(!exchange.Ok() && exchange.Code() == "unsupported",
                                         "`ok` false with the code `unsupported`"))
      return fault;
  }
  return std::nullopt;
}

Verdict BadArguments(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  for (const authoring::ToolSpec& tool : authoring::Tools()) {
    if (tool.kind != authoring::ToolKind::Read || tool.local) continue;
    std::vector<std::int64_t> ids;
    for (Json& args : Refused(tool.input))
      ids.push_back(connection.Begin(tool.operation, std::move(args)));
    Exchange exchange;
    for (const std::int64_t id : ids)
      if (Verdict fault = connection.Await(id, exchange)) return fault;
  }
  return std::nullopt;
}

Verdict InFlight(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  std::vector<std::int64_t> ids;
  ids.reserve(kInFlight);
  for (int count = 0; count < kInFlight; ++count)
    ids.push_back(
        connection.Begin(count % 2 == 0 ? "world.info" : "objects.query", Json::Object()));
  Exchange exchange;
  for (const std::int64_t id : ids)
    if (Verdict fault = connection.Await(id, exchange)) return fault;
  // What comes twice has come by the time of this answer.
  if (Verdict fault = connection.Ask("world.info", Json::Object(), exchange)) return fault;
  for (const std::int64_t id : ids) {
    if (connection.CountAnswers(id) == 1) continue;
    return Finding{
        true, std::to_string(kInFlight) + " requests at once",
        std::to_string(connection.CountAnswers(id)) + " answers with the id " + std::to_string(id),
        "one"};
  }
  return std::nullopt;
}

// Whether the requests were answered at most once, and the next one is answered still.
Verdict GoesOn(Connection& connection, const std::vector<std::int64_t>& ids,
               const std::string& sent) {
  Exchange exchange;
  if (Verdict fault = connection.Ask("world.info", Json::Object(), exchange)) {
    fault->sent = sent + ", then " + fault->sent;
    return fault;
  }
  for (const std::int64_t id : ids)
    if (connection.CountAnswers(id) > 1)
      return Finding{true, sent,
                     std::to_string(connection.CountAnswers(id)) + " answers with the id " +
                         std::to_string(id),
                     "one at most"};
  return exchange.Require(exchange.Ok(), "`ok` true");
}

Verdict Cancel(Subject& subject) {
  constexpr int kCancelled = 20;
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  std::vector<std::int64_t> ids;
  const auto cancel = [&](std::int64_t target) {
    ids.push_back(connection.Send(Json::Object({{"op", "cancel"}, {"target", target}}),
                                  subject.Text("token")));
  };
  for (int count = 0; count < kCancelled; ++count) {
    ids.push_back(connection.Begin("world.summary", Json::Object()));
    cancel(ids.back());
  }
  cancel(ids.front());  // Answered long since, and one that never was.
  cancel(9'007'199'254'740'991);
  return GoesOn(connection, ids, "requests, each with a cancel behind it");
}

Verdict Deadline(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  std::vector<std::int64_t> ids;
  for (const char* operation : {"world.summary", "objects.query", "inspect.capture"})
    ids.push_back(connection.Begin(operation, Json::Object(), 1));
  return GoesOn(connection, ids, "requests with `deadline_ms` 1");
}

constexpr auto kRules = std::to_array<Rule>({
    {"answer.given", "Every request is answered, with its `id`.", "hello.accepted", Given},
    {"answer.ok",
     "`ok` is true or false. A reading operation that needs no arguments succeeds or is "
     "`unsupported`; `world.capabilities` and `world.info` succeed.",
     "hello.accepted", Ok},
    {"answer.revision", "A successful answer has `revision`, a whole number.", "hello.accepted",
     Revision},
    {"answer.result",
     "A successful answer has `result`, an object with members of the operation's row.",
     "hello.accepted", Result},
    {"answer.schema",
     "`ok`, `revision` and the members of `result` together fit the tool's output schema.",
     "answer.ok", Schema},
    {"answer.error", "A failed answer has `error` with the texts `code` and `message`.",
     "hello.accepted", Error},
    {"answer.images",
     "Each of `images` has `data_base64` with padding and without line breaks; "
     "`mime`, if there, is an image's.",
     "hello.accepted", Images},
    {"request.unknown", "An unknown operation is answered with `unsupported`.", "hello.accepted",
     UnknownOperation},
    {"request.arguments",
     "Arguments that no schema lets pass are answered too, and the editor goes on.", "answer.given",
     BadArguments},
    {"request.many", "Of 200 requests in flight each is answered once.", "hello.accepted",
     InFlight},
    {"request.cancel", "A cancelled request is answered at most once, and the editor goes on.",
     "hello.accepted", Cancel},
    {"request.deadline",
     "A request whose deadline passes is answered at most once, and the editor goes on.",
     "hello.accepted", Deadline},
});

}  // namespace

std::span<const Rule> AnswerRules() {
  return kRules;
}

}  // namespace zorvik::editor_check
