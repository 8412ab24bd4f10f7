#include "tests/support/child_process.h"

#include <utility>

namespace zorvik::tests {

std::optional<std::string> ChildProcess::ReadLine() {
  std::string bytes;
  while (lines.empty()) {
    bytes.clear();
    if (!ReadSome(bytes)) return std::nullopt;
    std::size_t begin = 0;
    for (std::size_t end = bytes.find('\n'); end != std::string::npos;
         end = bytes.find('\n', begin)) {
      rest.append(bytes, begin, end - begin);
      lines.push_back(std::exchange(rest, {}));
      begin = end + 1;
    }
    rest.append(bytes, begin);
  }
  std::string line = std::move(lines.front());
  lines.pop_front();
  return line;
}

std::string ChildProcess::ReadToEnd() {
  std::string all;
  for (const std::string& line : std::exchange(lines, {})) all += line + '\n';
  all += std::exchange(rest, {});
  while (ReadSome(all)) {
  }
  return all;
}

}  // namespace zorvik::tests
