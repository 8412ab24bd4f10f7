#include <array>
#include <string>

#include "authoring/protocols.h"
#include "core/platform/files.h"
#include "core/platform/privacy.h"
#include "core/process.h"
#include "editor_check/connection.h"
#include "editor_check/rules.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

constexpr std::size_t kLongestId = 64;

std::string Path(const Subject& subject) {
  return core::platform::PathText(subject.file);
}

Verdict Require(const Subject& subject, bool kept, const std::string& came, std::string expected) {
  if (kept) return std::nullopt;
  return Finding{true, "a look at " + Path(subject), Shown(came, subject.Text("token")),
                 std::move(expected)};
}

std::string Pair(const Subject& subject, const char* key) {
  if (!subject.record.Has(key)) return "no `" + std::string(key) + "`";
  return "`" + std::string(key) + "` " + core::WriteJson(subject.record.At(key));
}

Verdict Keys(Subject& subject) {
  if (subject.record.kind != Json::Kind::Object)
    return Require(subject, false, subject.text, "one JSON object");
  for (const char* key : {"editor_id", "pipe", "token", "bridge"}) {
    const Json& value = subject.record.At(key);
    if (Verdict fault = Require(subject, value.kind == Json::Kind::Text && !value.text.empty(),
                                Pair(subject, key), "a text that isn't empty"))
      return fault;
  }
  const Json& pid = subject.record.At("pid");
  return Require(subject, pid.IsInteger() && pid.number >= 1 && pid.number <= 4294967295.0,
                 Pair(subject, "pid"), "the process id, a whole number");
}

Verdict About(Subject& subject) {
  for (const char* key :
       {"engine_version", "project", "project_name", "world", "world_id", "started"})
    if (Verdict fault = Require(subject, subject.record.At(key).kind == Json::Kind::Text,
                                Pair(subject, key), "a text"))
      return fault;
  return std::nullopt;
}

Verdict OneLine(Subject& subject) {
  return Require(subject, subject.text.find('\n') == subject.text.size() - 1,
                 "no line feed, or one before the end", "one line, ended by a line feed");
}

Verdict FileName(Subject& subject) {
  const std::string expected = std::to_string(subject.Pid()) + ".json";
  const std::string name = core::platform::PathText(subject.file.filename());
  return Require(subject, name == expected, name, expected);
}

Verdict EditorId(Subject& subject) {
  // The server counts characters; bytes are never fewer.
  const std::string id = subject.Text("editor_id");
  std::size_t characters = 0;
  for (const char byte : id)
    if ((static_cast<unsigned char>(byte) & 0xC0U) != 0x80U) ++characters;
  if (Verdict fault = Require(subject, characters <= kLongestId,
                              std::to_string(characters) + " characters", "at most 64"))
    return fault;
  std::size_t same = 0;
  for (const Subject& other : ListSubjects())
    if (other.Text("editor_id") == id && core::ProcessAlive(other.Pid())) ++same;
  return Require(subject, same <= 1, std::to_string(same) + " open editors with this id",
                 "an id of its own");
}

Verdict Bridge(Subject& subject) {
  return Require(subject, subject.Text("bridge") == authoring::kBridgeProtocol,
                 Pair(subject, "bridge"), authoring::kBridgeProtocol);
}

Verdict Private(const std::filesystem::path& path, const std::string& expected) {
  const std::optional<std::string> rights = core::platform::RightsOfOthers(path);
  if (!rights) return NotTried("there is no mode to look at");
  if (rights->empty()) return std::nullopt;
  return Finding{true, "a look at " + core::platform::PathText(path), *rights, expected};
}

Verdict PrivateFile(Subject& subject) {
  return Private(subject.file, "mode 0600");
}

Verdict PrivateFolder(Subject& subject) {
  return Private(subject.file.parent_path(), "mode 0700");
}

Verdict PidAlive(Subject& subject) {
  return Require(subject, core::ProcessAlive(subject.Pid()),
                 "no process " + std::to_string(subject.Pid()), "the process that serves the pipe");
}

Verdict PipeName(Subject& subject) {
  return Require(subject, subject.Text("pipe").find_first_of("/\\") == std::string::npos,
                 Pair(subject, "pipe"), R"(a bare name, without `/` and `\`)");
}

Verdict PipeServed(Subject& subject) {
  return Connection(subject).Connect();
}

constexpr auto kRules = std::to_array<Rule>({
    {"record.keys",
     "The record is a JSON object with `editor_id`, `pipe`, `token` and `bridge` as texts that "
     "aren't empty, and `pid` as a whole number.",
     "", Keys},
    {"record.about",
     "`engine_version`, `project`, `project_name`, `world`, `world_id` and `started` are texts.",
     "record.keys", About},
    {"record.line", "The record is one line, ended by a line feed.", "record.keys", OneLine},
    {"record.file", "Its file is named by the pid: `<pid>.json`.", "record.keys", FileName},
    {"record.editor_id",
     "`editor_id` has at most 64 characters, and no other open editor has the same.", "record.keys",
     EditorId},
    {"record.bridge", "`bridge` is `zorvik-bridge/1`.", "record.keys", Bridge},
    {"record.private_file", "Nobody but the user can read or write the record's file.", "",
     PrivateFile},
    {"record.private_folder", "Nobody but the user can read or write the folder of the records.",
     "", PrivateFolder},
    {"record.pid_alive", "The process of `pid` is running.", "record.keys", PidAlive},
    {"record.pipe_name", R"(`pipe` is a bare name, without `/` and `\`.)", "record.keys", PipeName},
    {"record.pipe_served", "The pipe is served.", "record.pipe_name", PipeServed},
});

}  // namespace

std::span<const Rule> RecordRules() {
  return kRules;
}

}  // namespace zorvik::editor_check
