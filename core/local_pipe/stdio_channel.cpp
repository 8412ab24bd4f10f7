#include "core/local_pipe/stdio_channel.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace zorvik::core {
namespace {

constexpr std::size_t kReadChunk = 65'536;
constexpr int kReadsPerPoll = 64;

}  // namespace

StdioChannel::StdioChannel()
    : StdioChannel(platform::InputStream::Standard(), platform::OutputStream::Standard()) {}

StdioChannel::StdioChannel(platform::InputStream source, platform::OutputStream sink)
    : input(source), output(sink) {}

void StdioChannel::Poll(Lines& lines, bool& closed) {
  if (!input.Valid()) ended = true;
  // Without Peek there is no telling whether a second read would block.
  const int reads = input.CanPeek() ? kReadsPerPoll : 1;
  std::array<char, kReadChunk> chunk;
  for (int i = 0; i < reads && !ended; ++i) {
    std::size_t limit = chunk.size();
    if (input.CanPeek()) {
      std::size_t available = 0;
      bool open = input.Peek(available);
      // The rest of a long line comes in pieces no larger than the pipe. Where the pause after
      // this call would not end with the next piece, a moment for each is far shorter.
      const bool within_long_line = lines.empty() && buffer.bytes.size() >= kReadChunk;
      if (open && available == 0 && within_long_line && input.WaitForMore())
        open = input.Peek(available);
      if (!open) {
        End(lines);
        break;
      }
      if (available == 0) break;
      limit = std::min(limit, available);
    }
    std::size_t count = 0;
    if (!input.Read(chunk.data(), limit, count) || count == 0) {
      End(lines);
      break;
    }
    buffer.Append({chunk.data(), count});
    if (!TakeLines(buffer, lines)) {
      buffer.Clear();
      ended = true;
    }
  }
  closed = ended;
}

void StdioChannel::End(Lines& lines) {
  ended = true;
  std::string rest = std::move(buffer.bytes);
  buffer.Clear();
  if (!rest.empty() && rest.back() == '\r') rest.pop_back();
  if (!rest.empty()) lines.push_back(std::move(rest));
}

bool StdioChannel::Write(std::string line) {
  if (!output.Valid()) return false;
  line += '\n';
  std::string_view left = line;
  while (!left.empty()) {
    std::size_t count = 0;
    if (!output.Write(left.data(), left.size(), count) || count == 0) return false;
    left.remove_prefix(count);
  }
  return true;
}

}  // namespace zorvik::core
