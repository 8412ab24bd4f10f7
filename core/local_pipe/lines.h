#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace zorvik::core {

// Grows without moving what is there: a writer ahead of its reader sends thousands of lines at
// once.
using Lines = std::deque<std::string>;

// Bytes received and not yet cut into lines. `scanned` counts the bytes at the front of `bytes`
// that are known to hold no line feed, so that a long line which arrives in small pieces is looked
// through only once. Bytes come in by Append and leave by TakeLines and Clear.
struct LineBuffer {
  std::string bytes;
  std::size_t scanned = 0;

  void Append(std::string_view received);
  void Clear();
};

// The longest unfinished line, in bytes, that a reader puts up with.
inline constexpr std::size_t kLineRestLimit = 16'777'216;

// Moves every complete line out of `buffer` to the end of `lines`. Lines lose their line feed and
// one carriage return in front of it; empty lines are dropped. Returns false when the unfinished
// rest is longer than kLineRestLimit.
bool TakeLines(LineBuffer& buffer, Lines& lines);

}  // namespace zorvik::core
