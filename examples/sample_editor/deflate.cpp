#include "examples/sample_editor/deflate.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

namespace zorvik::sample_editor {

namespace {

constexpr std::uint32_t kAdlerModulus = 65521;
constexpr std::size_t kShortest = 3;
constexpr std::size_t kLongest = 258;
constexpr std::size_t kWindow = 32768;
constexpr int kTries = 48;
constexpr unsigned kEndOfBlock = 256;

// Bytes that came before too, some distance back.
struct Repetition {
  std::size_t length = 0;
  std::size_t distance = 0;
};

class Repetitions {
 public:
  explicit Repetitions(std::string_view all)
      : bytes(all), newest(1U << 15U, all.size()), older(all.size(), all.size()) {}

  // The longest one of those tried that begins at that place. The places before must have been
  // entered.
  Repetition At(std::size_t at) const {
    Repetition best;
    if (at + kShortest > bytes.size()) return best;
    const std::size_t most = std::min(kLongest, bytes.size() - at);
    std::size_t from = newest[Key(at)];
    for (int turn = 0; turn < kTries && from < at && at - from <= kWindow; ++turn) {
      std::size_t length = 0;
      while (length < most && bytes[from + length] == bytes[at + length]) ++length;
      if (length > best.length) best = {length, at - from};
      if (length == most) break;
      from = older[from];
    }
    return best;
  }
  void Enter(std::size_t at) {
    if (at + kShortest <= bytes.size()) older[at] = std::exchange(newest[Key(at)], at);
  }

 private:
  std::size_t Key(std::size_t at) const {
    const auto byte = [&](std::size_t index) {
      return static_cast<unsigned>(static_cast<unsigned char>(bytes[at + index]));
    };
    return ((byte(0) << 16U | byte(1) << 8U | byte(2)) * 0x9E3779B1U) >> 17U;
  }

  std::string_view bytes;
  std::vector<std::size_t> newest;  // The last place where three bytes of that key began,
  std::vector<std::size_t> older;   // and for each place the one before it.
};

// Deflate fills its bytes from the lowest bit up, but writes its codes from their highest bit.
struct BitWriter {
  std::string bytes;
  unsigned used = 0;  // Bits taken in the last byte, 0 to 7.

  void Bits(std::size_t value, unsigned count) {
    for (; count > 0; --count, value >>= 1U, used = (used + 1) % 8) {
      if (used == 0) bytes += '\0';
      bytes.back() =
          static_cast<char>(static_cast<unsigned char>(bytes.back()) | ((value & 1U) << used));
    }
  }
  void Code(std::size_t code, unsigned length) {
    while (length-- > 0) Bits(code >> length, 1);
  }
  // A byte, the end, or the length of a repetition, in the fixed code.
  void Symbol(std::size_t symbol) {
    if (symbol < 144)
      Code(0x30 + symbol, 8);
    else if (symbol < 256)
      Code(0x190 + symbol - 144, 9);
    else if (symbol < 280)
      Code(symbol - 256, 7);
    else
      Code(0xC0 + symbol - 280, 8);
  }
  // Lengths and distances are told by ranges that double in size every few codes, and by the place
  // within the range.
  void Write(const Repetition& repetition) {
    const std::size_t length = repetition.length - kShortest;
    const unsigned spread = length < 8 ? 0 : static_cast<unsigned>(std::bit_width(length)) - 3;
    // The greatest length has a code of its own.
    const bool greatest = repetition.length == kLongest;
    Symbol(greatest ? 285 : 257 + 4 * spread + (length >> spread));
    Bits(length, greatest ? 0 : spread);
    const std::size_t back = repetition.distance - 1;
    const unsigned wide = back < 4 ? 0 : static_cast<unsigned>(std::bit_width(back)) - 2;
    Code((back >> wide) + wide + wide, 5);
    Bits(back, wide);
  }
};

}  // namespace

std::string Compress(std::string_view bytes) {
  BitWriter out{"\x78\x01"};
  out.Bits(1, 1);  // The last block,
  out.Bits(1, 2);  // in the fixed code.
  Repetitions repetitions(bytes);
  for (std::size_t at = 0; at < bytes.size();) {
    const Repetition here = repetitions.At(at);
    repetitions.Enter(at);
    // A longer one that begins at the next byte is worth waiting for.
    const bool waits = here.length < kLongest && repetitions.At(at + 1).length > here.length;
    if (here.length < kShortest || waits) {
      out.Symbol(static_cast<unsigned char>(bytes[at++]));
      continue;
    }
    out.Write(here);
    for (const std::size_t end = at + here.length; ++at < end;) repetitions.Enter(at);
  }
  out.Symbol(kEndOfBlock);

  std::uint32_t low = 1;
  std::uint32_t high = 0;
  for (const char byte : bytes) {
    low = (low + static_cast<unsigned char>(byte)) % kAdlerModulus;
    high = (high + low) % kAdlerModulus;
  }
  for (const std::uint32_t part : {high >> 8U, high, low >> 8U, low})
    out.bytes += static_cast<char>(part & 0xFFU);
  return out.bytes;
}

}  // namespace zorvik::sample_editor
