#pragma once

#include <filesystem>
#include <string>

namespace zorvik::mcp {

// The log of one process: each line goes to standard error and, with a time stamp, into a file
// that is rewritten as a whole. The file holds at most 262,144 bytes; a line that takes it beyond
// that cuts it to its last 131,072.
class LogFile {
 public:
  // An empty path means standard error only. A file that is there already is not read.
  explicit LogFile(std::filesystem::path file);

  // Never fails: a line that couldn't be written to the file goes there with the next one.
  void Line(const std::string& line);

 private:
  std::filesystem::path path;
  std::string text;  // All that the file is to hold.
};

}  // namespace zorvik::mcp
