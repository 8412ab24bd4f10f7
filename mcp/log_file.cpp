#include "mcp/log_file.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "core/file_write.h"
#include "core/platform/streams.h"
#include "core/process.h"

namespace zorvik::mcp {
namespace {

constexpr std::size_t kSizeTrigger = 262'144;
constexpr std::size_t kSizeKept = 131'072;

// Clients and editors say what some lines hold. None of them shall forge a second line or speak to
// a terminal.
std::string Visible(std::string_view line) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string visible;
  visible.reserve(line.size());
  for (const char byte : line) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20 && code != 0x7F)
      visible += byte;
    else
      visible.append("\\x").append({kHexDigits[code >> 4], kHexDigits[code & 15]});
  }
  return visible;
}

}  // namespace

LogFile::LogFile(std::filesystem::path file) : path(std::move(file)) {}

void LogFile::Line(const std::string& raw) {
  const std::string line = Visible(raw);
  core::platform::WriteStandardError("[zorvik_mcp] " + line + "\n");
  if (path.empty()) return;

  text += core::LocalTimestamp() + " " + line + "\n";
  if (text.size() > kSizeTrigger) text.erase(0, text.size() - kSizeKept);
  core::WriteHomeFile(path, text);
}

}  // namespace zorvik::mcp
