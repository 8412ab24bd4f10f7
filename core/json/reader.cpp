#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <system_error>
#include <tuple>

#include "core/json.h"
#include "core/json/decimal_scaling.h"
#include "core/json/key_index.h"
#include "core/json/text_scan.h"

namespace zorvik::core {
namespace {

constexpr std::size_t kTextLimit = 16'777'216;
constexpr std::size_t kFieldLimit = 65'536;
constexpr std::size_t kItemLimit = 8'388'608;
constexpr int kDepthLimit = 65;
// The room that an object and a list of texts begin with.
constexpr std::size_t kFirstFields = 4;
constexpr std::size_t kFirstTexts = 4;
// A list begins with the room that the one before took if that was no longer than this: positions
// and colours.
constexpr std::size_t kShortList = 16;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The byte that a letter behind a backslash stands for, or 0.
constexpr std::array<char, 256> kUnescaped = [] {
  std::array<char, 256> bytes{};
  bytes['"'] = '"';
  bytes['\\'] = '\\';
  bytes['/'] = '/';
  bytes['b'] = '\b';
  bytes['f'] = '\f';
  bytes['n'] = '\n';
  bytes['r'] = '\r';
  bytes['t'] = '\t';
  return bytes;
}();

// Writes one to four bytes and returns where they end.
char* PutUtf8(unsigned code, char* to) {
  const auto put = [&to](unsigned byte) { *to++ = static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
    return to;
  }
  if (code < 0x800) {
    put(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      put(0xE0 | code >> 12);
    } else {
      put(0xF0 | code >> 18);
      put(0x80 | (code >> 12 & 0x3F));
    }
    put(0x80 | (code >> 6 & 0x3F));
  }
  put(0x80 | (code & 0x3F));
  return to;
}

bool IsZero(const char* mantissa, const char* mantissa_end) {
  return std::none_of(
      mantissa, mantissa_end, [](char c) { return c >= '1' && c <= '9'; });
}

// The value of digits with at most one point among them, the way a number with an exponent marker
// but no exponent is read. Returns false when a double cannot hold it.
bool DigitByDigit(const char* at, const char* end, double& out) {
  const bool zero = IsZero(at, end);
  double value = 0;
  for (; at < end && *at != '.'; ++at) value = value * 10 + (*at - '0');
  if (at < end) ++at;
  double scale = 0.1;
  for (; at < end; ++at) {
    value += (*at - '0') * scale;
    scale *= 0.1;
  }
  out = value;
  return zero || (value > 0 && value <= std::numeric_limits<double>::max());
}

// The same for a complete number without a sign, to the nearest double.
bool NearestDouble(const char* at, const char* mantissa_end, const char* end, double& out) {
  if (IsZero(at, mantissa_end)) {
    out = 0;
    return true;
  }
  return std::from_chars(at, end, out).ec == std::errc();
}

// How many items of a list follow up to the next text, container or end: 1 if the next item is one
// of those. No more than a list may hold, since a broken one may be nothing but commas.
std::size_t CountScalars(const char* at, const char* end) {
  const auto is_stop = [](char c) { return c == '"' || c == '{' || c == '[' || c == ']'; };
  // Most lists are short: positions, colours, limits.
  constexpr std::ptrdiff_t kShort = 64;
  std::size_t count = 1;
  for (const char* const near = at + std::min(kShort, end - at); at < near; ++at) {
    if (is_stop(*at)) return count;
    count += *at == ',' ? 1 : 0;
  }
  // The others are long. In blocks, so as never to look far beyond what is counted.
  constexpr std::ptrdiff_t kBlock = 1'024;
  for (bool inside = true; inside && at < end;) {
    const char* const block_end = at + std::min(kBlock, end - at);
    const char* stop = block_end;
    for (const char c : {'"', '{', '[', ']'}) {
      const void* const found = std::memchr(at, c, static_cast<std::size_t>(stop - at));
      if (found != nullptr) stop = static_cast<const char*>(found);
    }
    count += static_cast<std::size_t>(std::count(at, stop, ','));
    inside = stop == block_end;
    at = stop;
  }
  return std::min(kItemLimit, count);
}

// Gives back the room of a list that has ended when more than a quarter of it is unused.
template <class List>
void GiveSpareRoomBack(List& list) {
  if (list.capacity() - list.size() > list.size() / 3) list.shrink_to_fit();
}

// Every operation is given the position where it begins and returns the one behind what it read, or
// null after a failure. The position is no member so that it can stay in a register.
class Reader {
 public:
  explicit Reader(const char* end_of_text) : end(end_of_text) {}

  // Reads a value into `out`, which must be a null. `model` is a value that may look alike: the
  // one before in a list. It saves growing and looking for repeated keys, and changes no result.
  const char* Value(const char* at, Json& out, int depth, const Json& model) {
    if (depth == kDepthLimit) return Fail("JSON encaixado demais");
    at = SkipSpace(at);
    if (at == end) return Fail("documento vazio");
    if (*at == '{') return Object(at + 1, out, depth, model);
    if (*at == '[') return Array(at + 1, out, depth, model);
    return Scalar(at, out);
  }
  const char* SkipSpace(const char* at) const {
    // Most texts hold no white space at all.
    while (at < end && static_cast<unsigned char>(*at) <= ' ' && IsSpace(*at)) ++at;
    return at;
  }
  const char* Message() const { return message; }

 private:
  const char* Scalar(const char* at, Json& out);
  const char* Object(const char* at, Json& out, int depth, const Json& model);
  const char* Key(const char* at, std::string_view& key);
  const char* Array(const char* at, Json& out, int depth, const Json& model);
  const char* String(const char* at, std::string& out);
  const char* EscapedString(const char* at, std::string& out);
  const char* UnicodeEscape(const char* at, unsigned& code);
  const char* Number(const char* at, Json& out);

  const char* Fail(const char* why) {
    message = why;
    return nullptr;
  }
  bool Is(const char* at, char c) const { return at < end && *at == c; }
  bool IsWord(const char* at, std::string_view word) const {
    return std::string_view(at, static_cast<std::size_t>(end - at)).starts_with(word);
  }
  // The value of four hexadecimal digits, or -1.
  int CodeUnit(const char* at) const {
    if (end - at < 4) return -1;
    int unit = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = HexDigit(at[i]);
      if (digit < 0) return -1;
      unit = unit * 16 + digit;
    }
    return unit;
  }

  const char* end;
  const char* message = "JSON invalido";
  std::string escaped_key;
};

const char* Reader::Scalar(const char* at, Json& out) {
  switch (*at) {
    case '"':
      out.kind = Json::Kind::Text;
      return String(at + 1, out.text);
    case 't':
      if (!IsWord(at, "true")) break;
      out.kind = Json::Kind::Bool;
      out.boolean = true;
      return at + 4;
    case 'f':
      if (!IsWord(at, "false")) break;
      out.kind = Json::Kind::Bool;
      return at + 5;
    case 'n':
      if (!IsWord(at, "null")) break;
      return at + 4;
    default:
      break;
  }
  return Number(at, out);
}

const char* Reader::Object(const char* at, Json& out, int depth, const Json& model) {
  out.kind = Json::Kind::Object;
  at = SkipSpace(at);
  if (Is(at, '}')) return at + 1;
  out.fields.reserve(model.fields.empty() ? kFirstFields : model.fields.size());
  KeyIndex index;
  std::size_t like_model = 0;  // So many first keys are those of the model, so they are different.
  for (std::size_t count = 0;; ++count) {
    at = SkipSpace(at);
    if (!Is(at, '"')) return Fail("esperava um texto");
    std::string_view key;
    at = Key(at + 1, key);
    if (at == nullptr) return nullptr;
    at = SkipSpace(at);
    if (!Is(at, ':')) return Fail("esperava \":\"");
    ++at;

    if (count == kFieldLimit) {
      index.Merge(out.fields, like_model);
      count = out.fields.size();
      if (count == kFieldLimit) {
        // An error of the value comes before the one that it is there at all.
        Json beyond;
        at = Value(at, beyond, depth + 1, Nothing);
        return at == nullptr ? nullptr : Fail("objeto com campos demais");
      }
    }
    Json::Field& field = out.fields.emplace_back(
        std::piecewise_construct, std::forward_as_tuple(key), std::forward_as_tuple());
    // Where there is no model, the field before may be one: schemas of many properties are alike.
    const Json* value_model = count > 0 ? &(&field - 1)->second : &Nothing;
    if (count == like_model && count < model.fields.size() && model.fields[count].first == key) {
      value_model = &model.fields[count].second;
      ++like_model;
    }
    at = Value(at, field.second, depth + 1, *value_model);
    if (at == nullptr) return nullptr;
    at = SkipSpace(at);
    if (Is(at, ',')) {
      ++at;
    } else if (Is(at, '}')) {
      if (like_model < out.fields.size()) index.Merge(out.fields, like_model);
      GiveSpareRoomBack(out.fields);
      return at + 1;
    } else {
      return Fail("esperava \",\" ou \"}\"");
    }
  }
}

// The bytes of a key, where they are if they can be had there. They stay until the next key.
const char* Reader::Key(const char* at, std::string_view& key) {
  const char* const stop = FindTextBreak(at, end);
  if (Is(stop, '"')) {
    key = std::string_view(at, static_cast<std::size_t>(stop - at));
    return stop + 1;
  }
  escaped_key.clear();
  at = EscapedString(at, escaped_key);
  key = escaped_key;
  return at;
}

const char* Reader::Array(const char* at, Json& out, int depth, const Json& model) {
  out.kind = Json::Kind::Array;
  at = SkipSpace(at);
  if (Is(at, ']')) return at + 1;
  if (model.items.size() <= kShortList) out.items.reserve(model.items.size());
  // More items than a list may hold don't fit a text of the greatest length, so nobody counts them.
  for (std::size_t count = 0;; ++count) {
    // A value is much larger than its text, so counting ahead is cheaper than moving what is there.
    if (count == out.items.capacity())
      out.items.reserve(count + std::max(count, Is(at, '"') ? kFirstTexts : CountScalars(at, end)));
    Json& item = out.items.emplace_back();
    at = Value(at, item, depth + 1, count > 0 ? *(&item - 1) : Nothing);
    if (at == nullptr) return nullptr;
    at = SkipSpace(at);
    if (Is(at, ',')) {
      ++at;
    } else {
      GiveSpareRoomBack(out.items);
      return Is(at, ']') ? at + 1 : Fail("esperava \",\" ou \"]\"");
    }
  }
}

const char* Reader::String(const char* at, std::string& out) {
  const char* const stop = FindTextBreak(at, end);
  if (!Is(stop, '"')) return EscapedString(at, out);
  out.assign(at, stop);
  return stop + 1;
}

const char* Reader::EscapedString(const char* at, std::string& out) {
  // Bytes are collected here first, so that each of them costs no more than a store.
  constexpr std::ptrdiff_t kMostAtOnce = 8;
  std::array<char, 2048> buffer;
  char* const full = buffer.data() + buffer.size() - kMostAtOnce;
  char* to = buffer.data();
  while (true) {
    if (to > full) {
      out.append(buffer.data(), to);
      to = buffer.data();
    }
    if (Is(at, '\\')) {
      if (at + 1 == end) return Fail("texto sem fechar");
      const char byte = kUnescaped[static_cast<unsigned char>(at[1])];
      if (byte != '\0') {
        *to++ = byte;
        at += 2;
      } else {
        unsigned code = 0;
        at = UnicodeEscape(at + 1, code);
        if (at == nullptr) return nullptr;
        to = PutUtf8(code, to);
      }
    } else if (end - at >= 8) {
      // All eight are copied before it is known how many of them count: cheaper than finding out
      // first where a run ends.
      const std::uint64_t word = LoadEightBytes(at);
      std::memcpy(to, &word, sizeof word);
      const std::size_t plain = CountPlainBytes(word);
      at += plain;
      to += plain;
      if (plain == 0) break;
    } else {
      if (at == end || IsTextBreak(*at)) break;
      *to++ = *at++;
    }
  }
  if (at == end) return Fail("texto sem fechar");
  if (*at != '"') return Fail("byte de controle dentro de um texto");
  out.append(buffer.data(), to);
  return at + 1;
}

// The code point of what stands behind a backslash that begins none of the short escapes.
const char* Reader::UnicodeEscape(const char* at, unsigned& code) {
  if (*at != 'u') return Fail("escape desconhecido");
  const int unit = CodeUnit(at + 1);
  if (unit < 0) return Fail("escape \\u incompleto");
  at += 5;
  code = static_cast<unsigned>(unit);
  if (code < 0xD800 || code > 0xDBFF) return at;
  if (!IsWord(at, "\\u")) return Fail("par substituto sem a segunda metade");
  const int second = CodeUnit(at + 2);
  if (second < 0xDC00 || second > 0xDFFF) return Fail("par substituto invalido");
  code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned>(second) - 0xDC00);
  return at + 6;
}

const char* Reader::Number(const char* at, Json& out) {
  const bool negative = *at == '-';
  if (*at == '+' || *at == '-') ++at;
  const char* const first = at;
  std::uint64_t mantissa = 0;
  // Whole parts are short. Digits beyond the nineteenth may overflow: they are not counted on
  // below.
  for (; at < end && IsDigit(*at); ++at)
    mantissa = mantissa * 10 + static_cast<unsigned>(*at - '0');
  std::ptrdiff_t digits = at - first;
  int exponent = 0;
  if (Is(at, '.')) {
    const char* const fraction = at + 1;
    at = TakeDigits(fraction, end, mantissa);
    digits += at - fraction;
    exponent = -static_cast<int>(at - fraction);
  }
  if (digits == 0) return Fail("esperava um numero");

  const char* const mantissa_end = at;
  bool bare_marker = false;
  if (Is(at, 'e') || Is(at, 'E')) {
    ++at;
    const bool minus = Is(at, '-');
    if (minus || Is(at, '+')) ++at;
    bare_marker = at == end || !IsDigit(*at);
    int written = 0;
    for (; at < end && IsDigit(*at); ++at)
      if (written < 10'000) written = written * 10 + (*at - '0');
    exponent += minus ? -written : written;
  }

  constexpr std::ptrdiff_t kMantissaDigits = 19;  // As many as 64 bits always hold.
  double value = 0;
  if (bare_marker) {
    if (!DigitByDigit(first, mantissa_end, value)) return Fail("numero fora da faixa");
  } else if (digits > kMantissaDigits || !ScaleExactly(mantissa, exponent, value)) {
    if (!NearestDouble(first, mantissa_end, at, value)) return Fail("numero fora da faixa");
  }
  out.kind = Json::Kind::Number;
  out.number = negative ? -value : value;
  return at;
}

}  // namespace

bool ParseJson(std::string_view text, Json& out, std::string& error) {
  out = Json();
  error.clear();
  if (text.size() > kTextLimit) {
    error = "documento JSON grande demais";
    return false;
  }
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const char* const end = text.data() + text.size();
  Reader reader(end);
  const char* const rest = reader.Value(text.data(), out, 0, Nothing);
  if (rest == nullptr) {
    error = reader.Message();
    return false;
  }
  if (reader.SkipSpace(rest) != end) {
    error = "sobrou texto depois do documento";
    return false;
  }
  return true;
}

}  // namespace zorvik::core
