#include <bit>
#include <charconv>
#include <cmath>

#include "core/json.h"
#include "core/json_text_scan.h"
#include "core/text_output.h"
#include "core/wide_product.h"

namespace zorvik::core {
namespace {

// A text from this size on gets its room at once, with some for what follows it. Otherwise the
// output of a large image would grow by doubling, and be copied each time.
constexpr std::size_t kBigText = 65'536;
constexpr std::size_t kRoomBehindBigText = 16'384;

constexpr std::size_t kNumberSize = 32;

void WriteEscape(char byte, TextOutput& out) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  char* const to = out.Room(6);
  to[0] = '\\';
  switch (byte) {
    case '"':
    case '\\':
      to[1] = byte;
      break;
    case '\b':
      to[1] = 'b';
      break;
    case '\t':
      to[1] = 't';
      break;
    case '\n':
      to[1] = 'n';
      break;
    case '\f':
      to[1] = 'f';
      break;
    case '\r':
      to[1] = 'r';
      break;
    default:
      to[1] = 'u';
      to[2] = '0';
      to[3] = '0';
      to[4] = kHexDigits[static_cast<unsigned char>(byte) >> 4];
      to[5] = kHexDigits[static_cast<unsigned char>(byte) & 15];
      out.Advance(6);
      return;
  }
  out.Advance(2);
}

void WriteText(const std::string& text, TextOutput& out) {
  if (text.size() >= kBigText) out.Reserve(text.size() + kRoomBehindBigText);
  out.Put('"');
  const char* at = text.data();
  const char* const end = at + text.size();
  // Eight bytes are copied before it is known how many of them count: cheaper than finding out
  // first where a run ends.
  while (end - at >= 8) {
    const std::uint64_t word = LoadEightBytes(at);
    std::memcpy(out.Room(sizeof word), &word, sizeof word);
    const std::size_t plain = CountPlainBytes(word);
    out.Advance(plain);
    at += plain;
    if (plain < 8) WriteEscape(*at++, out);
  }
  for (; at < end; ++at) {
    if (IsTextBreak(*at)) {
      WriteEscape(*at, out);
    } else {
      out.Put(*at);
    }
  }
  out.Put('"');
}

// `number` times 10 to the power of `scale`, rounded to the nearest integer, ties to even. The
// scaled number must stay below 2^63 and `scale` within kPowersOfFive.
std::uint64_t ScaleAndRound(std::uint64_t mantissa, int exponent, int scale) {
  // mantissa * 2^exponent * 10^scale = mantissa * 5^scale / 2^shift
  const WideProduct product =
      MultiplyWide(mantissa, kPowersOfFive[static_cast<std::size_t>(scale)]);
  const int shift = -(exponent + scale);
  if (shift == 0) return product.low;
  std::uint64_t whole = 0;
  std::uint64_t rest_high = 0;  // The bits shifted out, with the highest of them as top bit.
  std::uint64_t rest_low = 0;
  if (shift < 64) {
    whole = product.high << (64 - shift) | product.low >> shift;
    rest_high = product.low << (64 - shift);
  } else if (shift == 64) {
    whole = product.high;
    rest_high = product.low;
  } else {
    whole = product.high >> (shift - 64);
    rest_high = product.high << (128 - shift) | product.low >> (shift - 64);
    rest_low = product.low << (128 - shift);
  }
  constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
  const bool above_half = rest_high > kHalf || (rest_high == kHalf && rest_low != 0);
  const bool tie = rest_high == kHalf && rest_low == 0;
  return whole + (above_half || (tie && whole % 2 == 1) ? 1 : 0);
}

// Writes a positive number below 2^53 and at least 1e-10 with 17 significant digits.
char* WriteFraction(double number, char* out) {
  constexpr std::uint64_t kTenTo17 = 100'000'000'000'000'000;
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const std::uint64_t mantissa = (bits & 0xF'FFFF'FFFF'FFFF) | 0x10'0000'0000'0000;
  const int binary_exponent = static_cast<int>(bits >> 52) - 1023;

  // log10(2) is 0.30103. The estimate is right or one too small, and one too small gives 18 digits.
  int exponent = binary_exponent * 30'103 / 100'000 - (binary_exponent < 0 ? 1 : 0);
  std::uint64_t digits = ScaleAndRound(mantissa, binary_exponent - 52, 16 - exponent);
  if (digits >= kTenTo17) {
    ++exponent;
    digits = ScaleAndRound(mantissa, binary_exponent - 52, 16 - exponent);
  }

  std::array<char, 24> text;
  std::to_chars(text.data(), text.data() + text.size(), digits);
  std::size_t count = 17;
  while (text[count - 1] == '0') --count;

  const auto put = [&out](const char* from, std::size_t size) {
    std::memcpy(out, from, size);
    out += size;
  };
  if (exponent < -4) {
    *out++ = text[0];
    if (count > 1) {
      *out++ = '.';
      put(&text[1], count - 1);
    }
    put("e-", 2);
    *out++ = static_cast<char>('0' + -exponent / 10);
    *out++ = static_cast<char>('0' + -exponent % 10);
  } else if (exponent < 0) {
    put("0.0000", static_cast<std::size_t>(1 - exponent));
    put(text.data(), count);
  } else {
    const auto whole = static_cast<std::size_t>(exponent) + 1;
    put(text.data(), whole);
    *out++ = '.';
    put(&text[whole], count - whole);
  }
  return out;
}

// The bytes that printf's "%.17g" gives, in every locale.
char* WriteDouble(double number, char* out) {
  if (number < 0) *out++ = '-';
  const double magnitude = std::abs(number);
  if (magnitude >= 1e-10 && magnitude < 9'007'199'254'740'992.0) {
    return WriteFraction(magnitude, out);
  }
  return std::to_chars(out, out + kNumberSize - 1, magnitude, std::chars_format::general, 17).ptr;
}

void WriteNumber(double number, TextOutput& out) {
  constexpr double kInt64Bound = 9'223'372'036'854'775'808.0;
  char* const first = out.Room(kNumberSize);
  char* last = first;
  if (number >= -kInt64Bound && number < kInt64Bound) {
    const auto whole = static_cast<std::int64_t>(number);
    last = static_cast<double>(whole) == number
               ? std::to_chars(first, first + kNumberSize, whole).ptr
               : WriteDouble(number, first);
  } else if (std::isfinite(number)) {
    last = WriteDouble(number, first);
  } else {
    *last++ = '0';
  }
  out.Advance(static_cast<std::size_t>(last - first));
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
      WriteNumber(value.number, out);
      break;
    case Json::Kind::Text:
      WriteText(value.text, out);
      break;
    case Json::Kind::Array: {
      if (value.items.empty()) out.Put('[');
      char separator = '[';
      for (const Json& item : value.items) {
        out.Put(separator);
        separator = ',';
        Write(item, out);
      }
      out.Put(']');
      break;
    }
    case Json::Kind::Object: {
      if (value.fields.empty()) out.Put('{');
      char separator = '{';
      for (const Json::Field& field : value.fields) {
        out.Put(separator);
        separator = ',';
        WriteText(field.first, out);
        out.Put(':');
        Write(field.second, out);
      }
      out.Put('}');
      break;
    }
  }
}

}  // namespace

std::string WriteJson(const Json& value) {
  std::string text;
  TextOutput out(text);
  Write(value, out);
  out.Flush();
  return text;
}

}  // namespace zorvik::core
