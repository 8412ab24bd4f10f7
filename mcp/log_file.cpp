#include "mcp/log_file.h"

#include <cstddef>
#include <cstdio>
#include <utility>

#include "core/file_write.h"
#include "core/process.h"

namespace zorvik::mcp {
namespace {

constexpr std::size_t kSizeTrigger = 262'144;
constexpr std::size_t kSizeKept = 131'072;

}  // namespace

LogFile::LogFile(std::filesystem::path file) : path(std::move(file)) {}

void LogFile::Line(const std::string& line) {
  const std::string shown = "[zorvik_mcp] " + line + "\n";
  std::fwrite(shown.data(), 1, shown.size(), stderr);
  std::fflush(stderr);
  if (path.empty()) return;

  text += core::LocalTimestamp() + " " + line + "\n";
  if (text.size() > kSizeTrigger) text.erase(0, text.size() - kSizeKept);
  core::WriteHomeFile(path, text);
}

}  // namespace zorvik::mcp
