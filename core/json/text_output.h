#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace zorvik::core {

// Appends to a string through a small buffer, so that bytes which come one by one cost a store
// each. Where the next byte goes is passed along as `to`, so that it can stay in a register: it
// begins with Begin, may move by Room and Reserve, and ends with Flush.
class TextOutput {
 public:
  explicit TextOutput(std::string& target) : out(target) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  char* Begin() { return buffer.data(); }

  // Where up to `size` bytes may be written. `size` is at most the buffer's.
  char* Room(char* to, std::size_t size) {
    return buffer.size() - Used(to) >= size ? to : Flush(to);
  }

  // Lets what was written up to `to` reach the string.
  char* Flush(const char* to) {
    // Fourfold room: what isn't touched takes no memory, and moving takes time.
    if (out.capacity() - out.size() < Used(to)) out.reserve((out.size() + Used(to)) * 4);
    out.append(buffer.data(), Used(to));
    return buffer.data();
  }

  // Makes the string ready to take that many bytes more without moving again.
  char* Reserve(const char* to, std::size_t size) {
    out.reserve(out.size() + Used(to) + size);
    return Flush(to);
  }

 private:
  std::size_t Used(const char* to) const { return static_cast<std::size_t>(to - buffer.data()); }

  std::string& out;
  std::array<char, 4096> buffer;
};

}  // namespace zorvik::core
