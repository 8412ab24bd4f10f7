#include "tests/support/temporary_home.h"

#include <fstream>
#include <system_error>

#include "core/platform/files.h"
#include "core/process.h"

namespace zorvik::tests {
namespace {

std::filesystem::path NewFolder() {
  std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("zorvik-test-" + core::RandomHex(8));
  std::filesystem::create_directories(folder);
  return folder;
}

}  // namespace

TemporaryHome::TemporaryHome()
    : folder(NewFolder()), home("ZORVIK_MCP_HOME", core::platform::PathText(folder)) {}

TemporaryHome::~TemporaryHome() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void WriteText(const std::filesystem::path& path, std::string_view text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::filesystem::path& path) {
  std::string text;
  core::platform::ReadWholeFile(path, text);
  return text;
}

}  // namespace zorvik::tests
