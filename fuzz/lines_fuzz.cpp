#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>

#include "core/local_pipe/lines.h"
#include "fuzz/generate.h"
#include "fuzz/require.h"

namespace zorvik::fuzz {
namespace {

// Gives `input` behind `filler` bytes that end no line, in pieces whose sizes come from `sizes`
// over and over, and compares with what a walk over the single bytes says.
void Check(const std::string& sizes, const std::string& input, std::size_t filler) {
  core::LineBuffer buffer;
  buffer.bytes.assign(filler, 'x');
  core::Lines lines;
  core::Lines expected;
  std::string rest(filler, 'x');
  std::size_t given = 0;
  for (std::size_t turn = 0; given < input.size() || turn == 0; ++turn) {
    // A piece may be empty; only where all are it would never end.
    const std::size_t size = turn > 2 * input.size() || sizes.empty()
                                 ? input.size()
                                 : static_cast<std::size_t>(sizes[turn % sizes.size()] & 15);
    const std::string piece = input.substr(given, size);
    given += piece.size();
    for (const char c : piece) {
      if (c != '\n') {
        rest += c;
        continue;
      }
      if (!rest.empty() && rest.back() == '\r') rest.pop_back();
      if (!rest.empty()) expected.push_back(rest);
      rest.clear();
    }
    buffer.bytes += piece;
    const bool accepted = core::TakeLines(buffer, lines);
    Require(accepted == (rest.size() <= 16'777'216), "verdict", std::to_string(rest.size()));
    Require(buffer.bytes.size() == rest.size(), "size of the rest", std::to_string(rest.size()));
  }
  Require(lines == expected, "lines", std::to_string(lines.size()));
  Require(buffer.bytes == rest, "rest", std::to_string(filler));
}

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  zorvik::fuzz::Bytes bytes(text);
  const std::string sizes = bytes.Text(bytes.Below(8));
  const std::string input = bytes.Text(size);
  zorvik::fuzz::Check(sizes, input, 0);
  // The limit is far away and the way there slow, so only some inputs go.
  if (const std::size_t hash = std::hash<std::string>()(text); hash % 512 == 0)
    zorvik::fuzz::Check(sizes, input, zorvik::core::kLineRestLimit - hash / 512 % (size + 2));
  return 0;
}
