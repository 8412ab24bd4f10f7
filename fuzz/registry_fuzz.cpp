#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include "core/editor_registry.h"
#include "fuzz/generate.h"
#include "fuzz/require.h"
#include "fuzz/slow_json.h"

// An input tells what stands in the registry folder, an entry on each line: the first byte stands
// for its name, the rest is its content, in which $ stands for the id of this process.
namespace zorvik::fuzz {
namespace {

namespace fs = std::filesystem;

// The last three are no regular files.
constexpr std::array<const char*, 10> kNames = {"1.json",    "10.json",  "9.json", "a b.json",
                                                "n.txt",     "7.JSON",   ".json",  "folder.json",
                                                "fifo.json", "link.json"};

fs::path MakeFolder() {
  const fs::path home = fs::temp_directory_path() / ("zorvik_fuzz-" + std::to_string(getpid()));
  setenv("ZORVIK_MCP_HOME", home.c_str(), 1);
  fs::create_directories(home / "editors");
  return home / "editors";
}

// Values of a record that come back as they stand in the file; none for what is no record.
std::vector<std::string> Values(const core::EditorRecord& record) {
  return {record.editor_id,
          record.pipe,
          record.token,
          record.bridge,
          record.engine_version,
          record.project,
          record.project_name,
          record.world,
          record.world_id,
          record.started,
          std::to_string(record.pid)};
}
std::vector<std::string> Values(const std::string& content) {
  Json json;
  std::string error;
  if (!SlowParse(content, json, error)) return {};
  std::vector<std::string> values;
  for (const char* key : {"editor_id", "pipe", "token", "bridge", "engine_version", "project",
                          "project_name", "world", "world_id", "started"})
    values.push_back(json.At(key).TextOr(""));
  // The low 32 bits, as two's complement has them; beyond 64 bits there are none.
  const double pid = std::trunc(json.At("pid").number);
  double low = std::fabs(pid) < std::ldexp(1, 63) ? std::fmod(pid, std::ldexp(1, 32)) : 0;
  if (low < 0) low += std::ldexp(1, 32);
  values.push_back(std::to_string(static_cast<long long>(low)));
  return values[1].empty() || low == 0 ? std::vector<std::string>() : values;
}

// What should have become of one entry; takes it out of the list.
void Check(const fs::path& path, const std::string& content,
           std::vector<std::vector<std::string>>& listed) {
  const bool kept = fs::exists(fs::symlink_status(path));
  const std::vector<std::string> values = Values(content);
  if (path.extension() != ".json" || values.empty())
    return Require(kept, "deleted", path.filename().string() + content);
  const auto found = std::find(listed.begin(), listed.end(), values);
  const bool shown = found != listed.end();
  if (shown) listed.erase(found);
  const long long pid = std::stoll(values.back());
  // Whether other processes live can't be known here, but one of both has to have happened.
  Require(kept == shown, "not either listed or deleted", content);
  Require(pid != getpid() || shown, "alive and not listed", content);
  Require(pid <= 4'194'304 || !shown, "no process has that id", content);
}

void Run(const fs::path& folder, std::istringstream script) {
  std::map<fs::path, std::string> entries;
  for (std::string line; std::getline(script, line);) {
    Bytes bytes(line);
    const std::size_t name = bytes.Below(kNames.size());
    const fs::path path = folder / kNames[name];
    std::string& content = entries[path];
    if (!content.empty() || line.size() < 2) continue;
    for (const char c : line.substr(1))
      content += c == '$' ? std::to_string(getpid()) : std::string(1, c);
    if (name < 7) std::ofstream(path, std::ios::binary) << content;
    if (name == 7) fs::create_directory(path);
    if (name == 8) mkfifo(path.c_str(), 0600);
    if (name == 9) fs::create_symlink("nothing", path);
    if (name >= 7) content = "no record";
  }
  std::erase_if(entries, [](const auto& entry) { return entry.second.empty(); });

  std::vector<std::vector<std::string>> listed;
  std::uint32_t last = 0;
  for (const core::EditorRecord& record : core::ListEditorRecords()) {
    Require(record.pid >= last, "order", std::to_string(record.pid));
    last = record.pid;
    listed.push_back(Values(record));
  }
  for (const auto& [path, content] : entries) Check(path, content, listed);
  Require(listed.empty(), "listed without a file", std::to_string(listed.size()));
  for (const auto& [path, content] : entries) fs::remove(path);
}

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const std::filesystem::path kFolder = zorvik::fuzz::MakeFolder();
  zorvik::fuzz::Run(kFolder, std::istringstream({reinterpret_cast<const char*>(data), size}));
  return 0;
}
