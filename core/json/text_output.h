#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zorvik::core {

// Appends to a string through a small buffer, so that bytes which come one by one cost a store
// each. What is in the buffer reaches the string with Flush.
class TextOutput {
 public:
  explicit TextOutput(std::string& target) : out(target) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  // Where up to `size` bytes may be written; Advance then tells where what was written ends. `size`
  // is at most the buffer's.
  char* Room(std::size_t size) {
    if (buffer.size() - used < size) Flush();
    return buffer.data() + used;
  }
  void Advance(const char* end) { used = static_cast<std::size_t>(end - buffer.data()); }

  void Put(char c) {
    *Room(1) = c;
    ++used;
  }
  void Put(std::string_view bytes) { used += bytes.copy(Room(bytes.size()), bytes.size()); }

  void Flush() {
    out.append(buffer.data(), used);
    used = 0;
  }
  // Makes the string ready to take that many bytes more without moving again.
  void Reserve(std::size_t size) { out.reserve(out.size() + used + size); }

 private:
  std::string& out;
  std::size_t used = 0;
  std::array<char, 2048> buffer;
};

}  // namespace zorvik::core
