#include "core/local_pipe/lines.h"

#include <utility>

namespace zorvik::core {
namespace {

constexpr std::size_t kLongLine = 1'048'576;

}  // namespace

void LineBuffer::Append(std::string_view received) {
  // Doubling would copy a long line four more times, and touch twice the memory. Room that isn't
  // used costs next to nothing.
  const std::size_t size = bytes.size() + received.size();
  if (size > kLongLine && size > bytes.capacity()) bytes.reserve(kLineRestLimit + kLongLine);
  bytes.append(received);
}

void LineBuffer::Clear() {
  // Neither clear() nor an empty string moved in need give a long line's memory back, which shall
  // not stay with an idle owner.
  std::string().swap(bytes);
  scanned = 0;
}

bool TakeLines(LineBuffer& buffer, Lines& lines) {
  std::string& bytes = buffer.bytes;
  std::size_t begin = 0;
  std::size_t feed = bytes.find('\n', buffer.scanned);
  while (feed != std::string::npos) {
    std::size_t end = feed;
    if (end > begin && bytes[end - 1] == '\r') --end;
    if (begin == 0 && end > 0 && feed + 1 == bytes.size()) {
      // The usual case, and the one of a very long line: nothing but this line is there, so it is
      // handed over without a copy.
      bytes.resize(end);
      lines.push_back(std::move(bytes));
      buffer.Clear();
      return true;
    }
    if (end > begin) lines.emplace_back(bytes, begin, end - begin);
    begin = feed + 1;
    feed = bytes.find('\n', begin);
  }
  bytes.erase(0, begin);
  buffer.scanned = bytes.size();
  return bytes.size() <= kLineRestLimit;
}

}  // namespace zorvik::core
