#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>

#include "core/json.h"
#include "core/json/decimal_scaling.h"
#include "core/json/memory.h"
#include "core/json/text_output.h"
#include "core/json/text_scan.h"

namespace zorvik::core {
namespace {

// A text from this size on gets its room at once, with some for what follows it. Otherwise the
// output of a large image would grow by doubling, and be copied each time.
constexpr std::size_t kBigText = 1'048'576;
constexpr std::size_t kRoomBehindBigText = 16'384;

// A number takes at most 24 bytes. Behind them there is room for zeros that don't count.
constexpr std::size_t kNumberSize = 64;

// What a byte is written as behind a backslash: a letter, 'u' for the six-byte form, or 0 when it
// stands for itself.
constexpr std::array<char, 256> kEscapes = [] {
  std::array<char, 256> letters{};
  for (std::size_t i = 0; i < 0x20; ++i) letters[i] = 'u';
  letters['"'] = '"';
  letters['\\'] = '\\';
  letters['\b'] = 'b';
  letters['\t'] = 't';
  letters['\n'] = 'n';
  letters['\f'] = 'f';
  letters['\r'] = 'r';
  return letters;
}();

// Writes a byte as it must stand in a text, in one to six bytes.
char* PutTextByte(char byte, char* to) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  const auto code = static_cast<unsigned char>(byte);
  const char escape = kEscapes[code];
  if (escape == '\0') {
    *to++ = byte;
    return to;
  }
  *to++ = '\\';
  *to++ = escape;
  if (escape == 'u') {
    *to++ = '0';
    *to++ = '0';
    *to++ = kHexDigits[code >> 4];
    *to++ = kHexDigits[code & 15];
  }
  return to;
}

// Writes bytes as they must stand in a text. There must be room for six times as many.
char* PutTextBytes(const char* at, const char* end, char* to) {
  while (end - at >= 8) {
    // All eight are copied before it is known how many of them count: cheaper than finding out
    // first where a run ends.
    const std::uint64_t word = LoadEightBytes(at);
    std::memcpy(to, &word, sizeof word);
    const std::size_t plain = CountPlainBytes(word);
    at += plain;
    to += plain;
    if (plain == 8) continue;
    do {
      to = PutTextByte(*at++, to);
    } while (at < end && IsTextBreak(*at));
  }
  while (at < end) to = PutTextByte(*at++, to);
  return to;
}

// As many bytes of a text as fit the output's buffer for certain.
constexpr std::size_t kTextPart = 256;

void WriteText(std::string_view text, TextOutput& out) {
  if (text.size() >= kBigText) out.Reserve(text.size() + kRoomBehindBigText);
  out.Put('"');
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), kTextPart))) {
    const std::string_view part = text.substr(0, kTextPart);
    char* const begin = out.Room(kTextPart * 6);
    char* const end = PutTextBytes(part.data(), part.data() + part.size(), begin);
    out.Advance(end);
  }
  out.Put('"');
}

void WriteKey(char separator, std::string_view key, TextOutput& out) {
  if (key.size() > kTextPart) {
    out.Put(separator);
    WriteText(key, out);
    out.Put(':');
    return;
  }
  // The usual one goes out in one piece.
  char* to = out.Room(kTextPart * 6 + 4);
  *to++ = separator;
  *to++ = '"';
  to = PutTextBytes(key.data(), key.data() + key.size(), to);
  *to++ = '"';
  *to++ = ':';
  out.Advance(to);
}

// A number below 10^8 as eight digits, the first of them in the lowest byte, so that it comes first
// in memory. Halves, pairs and single digits are taken apart in one word. The divisions are
// multiplications that are exact for what comes here: 10'486 is 2^20 / 100 + 0.24, and
// 9'999 * 0.24 / 2^20 < 1 / 100; 103 is 2^10 / 10 + 0.6, and 99 * 0.6 / 2^10 < 1 / 10.
std::uint64_t EightDigits(std::uint32_t number) {
  std::uint64_t digits = number / 10'000 | std::uint64_t{number % 10'000} << 32;
  const std::uint64_t hundreds = (digits * 10'486) >> 20 & 0x0000'007F'0000'007F;
  digits = hundreds | (digits - hundreds * 100) << 16;
  const std::uint64_t tens = (digits * 103) >> 10 & 0x000F'000F'000F'000F;
  return tens | (digits - tens * 10) << 8;
}

constexpr std::uint64_t kTenTo8 = 100'000'000;
constexpr std::uint64_t kTenTo16 = kTenTo8 * kTenTo8;

// Writes a number below 10^16 with leading zeros, and returns where its last digit but zeros ends.
char* PutSixteenDigits(std::uint64_t number, char* to) {
  constexpr std::uint64_t kZeros = 0x3030'3030'3030'3030;
  const std::uint64_t first = EightDigits(static_cast<std::uint32_t>(number / kTenTo8));
  const std::uint64_t last = EightDigits(static_cast<std::uint32_t>(number % kTenTo8));
  for (const std::uint64_t digits : {first | kZeros, last | kZeros}) {
    std::memcpy(to, &digits, sizeof digits);
    to += sizeof digits;
  }
  if (last != 0) return to - std::countl_zero(last) / 8;
  return to - 8 - std::countl_zero(first) / 8;
}

// Writes a number that has a fraction, is below 2^53 and at least 1e-10, with 17 significant
// digits.
char* PutFraction(double number, char* out) {
  constexpr std::string_view kZeros = "0.000";
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const std::uint64_t mantissa = (bits & 0xF'FFFF'FFFF'FFFF) | 0x10'0000'0000'0000;
  const int binary_exponent = static_cast<int>(bits >> 52) - 1023;

  // log10(2) is 0.30103. The estimate is right or one too small, and one too small gives 18 digits.
  int exponent = binary_exponent * 30'103 / 100'000 - (binary_exponent < 0 ? 1 : 0);
  std::uint64_t digits = ScaleAndRound(mantissa, binary_exponent - 52, 16 - exponent);
  if (digits >= kTenTo16 * 10) {
    ++exponent;
    digits = ScaleAndRound(mantissa, binary_exponent - 52, 16 - exponent);
  }

  if (exponent >= 0) {
    // Rounding never reaches the next whole number: 17 digits tell all doubles apart, and that
    // number is one.
    const auto whole = static_cast<std::uint64_t>(number);
    out = std::to_chars(out, out + kNumberSize, whole).ptr;
    *out++ = '.';
    return PutSixteenDigits((digits - whole * PowerOfTen(16 - exponent)) * PowerOfTen(exponent),
                            out);
  }
  const char first = static_cast<char>('0' + digits / kTenTo16);
  if (exponent >= -4) {
    kZeros.copy(out, kZeros.size());
    out += 1 - exponent;
    *out++ = first;
    return PutSixteenDigits(digits % kTenTo16, out);
  }
  *out++ = first;
  *out = '.';
  char* const end = PutSixteenDigits(digits % kTenTo16, out + 1);
  if (end > out + 1) out = end;
  *out++ = 'e';
  *out++ = '-';
  *out++ = static_cast<char>('0' + -exponent / 10);
  *out++ = static_cast<char>('0' + -exponent % 10);
  return out;
}

// The bytes that printf's "%.17g" gives, in every locale.
char* PutDouble(double number, char* out) {
  if (number < 0) *out++ = '-';
  const double magnitude = std::abs(number);
  if (magnitude >= 1e-10 && magnitude < 9'007'199'254'740'992.0) return PutFraction(magnitude, out);
  return std::to_chars(out, out + kNumberSize - 1, magnitude, std::chars_format::general, 17).ptr;
}

char* PutNumber(double number, char* to) {
  constexpr double kInt64Bound = 9'223'372'036'854'775'808.0;
  if (number >= -kInt64Bound && number < kInt64Bound) {
    const auto whole = static_cast<std::int64_t>(number);
    if (static_cast<double>(whole) != number) return PutDouble(number, to);
    if (whole < 0 || whole > 9) return std::to_chars(to, to + kNumberSize, whole).ptr;
    *to++ = static_cast<char>('0' + whole);
    return to;
  }
  if (std::isfinite(number)) return PutDouble(number, to);
  *to++ = '0';
  return to;
}

void Write(const Json& value, TextOutput& out) {
  switch (value.kind) {
    case Json::Kind::Null:
      out.Put("null");
      break;
    case Json::Kind::Bool:
      out.Put(value.boolean ? "true" : "false");
      break;
    case Json::Kind::Number:
      out.Advance(PutNumber(value.number, out.Room(kNumberSize)));
      break;
    case Json::Kind::Text:
      WriteText(value.text, out);
      break;
    case Json::Kind::Array: {
      if (value.items.empty()) out.Put('[');
      char separator = '[';
      for (const Json& item : value.items) {
        if (item.kind == Json::Kind::Number) {
          // Long lists are mostly lists of numbers.
          char* const to = out.Room(1 + kNumberSize);
          *to = separator;
          out.Advance(PutNumber(item.number, to + 1));
        } else {
          out.Put(separator);
          Write(item, out);
        }
        separator = ',';
      }
      out.Put(']');
      break;
    }
    case Json::Kind::Object: {
      if (value.fields.empty()) out.Put('{');
      char separator = '{';
      for (const Json::Field& field : value.fields) {
        WriteKey(separator, field.first, out);
        separator = ',';
        Write(field.second, out);
      }
      out.Put('}');
      break;
    }
  }
}

}  // namespace

void AppendJson(const Json& value, std::string& text) {
  TextOutput out(text);
  Write(value, out);
  out.Flush();
}

std::string WriteJson(const Json& value) {
  std::string buffer = TakeSpareText();
  AppendJson(value, buffer);
  if (buffer.size() >= kBigText) return buffer;
  std::string text;
  text.reserve(buffer.size() + 1);  // For the line feed that mostly follows.
  text = buffer;
  KeepSpareText(std::move(buffer));
  return text;
}

}  // namespace zorvik::core
