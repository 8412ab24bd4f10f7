#pragma once

#include <filesystem>
#include <string>

namespace zorvik::mcp {

// The log of one process. Each line goes to standard error and, with a time stamp, into a file that
// is rewritten as a whole by core::WriteHomeFile. When a line takes it beyond 262,144 bytes, only
// its last 131,072 stay.
class LogFile {
 public:
  // An empty path means standard error only. A file that exists already is replaced by the first
  // line.
  explicit LogFile(std::filesystem::path file);

  // Control characters (below 0x20, and 0x7F) are written as `\xNN`, so a line stays one line.
  // Never fails: a line that couldn't be written to the file goes into it with the next one.
  void Line(const std::string& raw);

 private:
  std::filesystem::path path;
  std::string text;  // All that the file is to hold.
};

}  // namespace zorvik::mcp
