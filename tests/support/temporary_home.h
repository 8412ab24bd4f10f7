#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "core/platform/files.h"
#include "core/process.h"
#include "tests/support/environment.h"

namespace zorvik::tests {

// A fresh folder that is McpHome() until the end of the scope and is deleted then.
class TemporaryHome {
 public:
  TemporaryHome() { std::filesystem::create_directories(folder); }
  ~TemporaryHome() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  const std::filesystem::path& Path() const { return folder; }
  std::filesystem::path Editors() const { return folder / "editors"; }

 private:
  std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("zorvik-test-" + core::RandomHex(8));
  ScopedEnvironment home{"ZORVIK_MCP_HOME", core::platform::PathText(folder)};
};

// Writes a small file as it is, making the folders above it. Whatever the umask, nobody else may
// write there: the programs wouldn't trust such files.
inline void WriteText(const std::filesystem::path& path, std::string_view text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
  using std::filesystem::perms;
  for (const std::filesystem::path& made : {path.parent_path(), path}) {
    std::error_code not_ours;
    std::filesystem::permissions(made, perms::group_write | perms::others_write,
                                 std::filesystem::perm_options::remove, not_ours);
  }
}

// The bytes of a file; empty when it can't be read.
inline std::string ReadText(const std::filesystem::path& path) {
  std::string text;
  core::platform::ReadWholeFile(path, text);
  return text;
}

}  // namespace zorvik::tests
