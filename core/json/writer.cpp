#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "core/json.h"
#include "core/json/memory.h"
#include "core/json/number_writer.h"
#include "core/json/text_output.h"
#include "core/json/text_scan.h"

namespace zorvik::core {
namespace {

// A text from this size on gets its room at once, with some for what follows it. Otherwise the
// output of a large image would grow in steps, and be copied at each.
constexpr std::size_t kBigText = 1'048'576;
constexpr std::size_t kRoomBehindBigText = 16'384;

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

// Writes bytes as they must stand in a text. There must be room for six times as many and eight
// more.
char* PutTextBytes(std::string_view text, char* to) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    // All are copied before it is known how many of them count: cheaper than finding out first
    // where a run ends.
    const auto size = static_cast<std::size_t>(end - at);
    const std::uint64_t word = size >= 8 ? LoadEightBytes(at) : LoadFewBytes(at, size);
    std::memcpy(to, &word, sizeof word);
    const std::size_t plain = CountPlainBytes(word);
    at += plain;
    to += plain;
    if (plain == sizeof word) continue;
    while (at < end && IsTextBreak(*at)) to = PutTextByte(*at++, to);
  }
  return to;
}

// As many bytes of a text as go out in one piece, and the room for them with what surrounds a key.
constexpr std::size_t kTextPart = 256;
constexpr std::size_t kPartRoom = kTextPart * 6 + 16;

// Writes a text of at most kTextPart bytes. There must be kPartRoom.
char* PutShortText(std::string_view text, char* to) {
  *to++ = '"';
  to = PutTextBytes(text, to);
  *to++ = '"';
  return to;
}

char* WriteText(std::string_view text, char* to, TextOutput& out) {
  if (text.size() <= kTextPart) return PutShortText(text, out.Room(to, kPartRoom));
  if (text.size() >= kBigText) to = out.Reserve(to, text.size() + kRoomBehindBigText);
  to = out.Room(to, 1);
  *to++ = '"';
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), kTextPart)))
    to = PutTextBytes(text.substr(0, kTextPart), out.Room(to, kPartRoom));
  to = out.Room(to, 1);
  *to++ = '"';
  return to;
}

char* PutWord(std::string_view word, char* to) {
  return to + word.copy(to, word.size());
}

char* WriteArray(const Json& value, char* to, TextOutput& out);
char* WriteObject(const Json& value, char* to, TextOutput& out);

// The room that each value begins with; a number needs most.
constexpr std::size_t kValueRoom = kNumberRoom;

// There must be kValueRoom, and what follows must see to its own.
char* Write(const Json& value, char* to, TextOutput& out) {
  switch (value.kind) {
    case Json::Kind::Null:
      return PutWord("null", to);
    case Json::Kind::Bool:
      return value.boolean ? PutWord("true", to) : PutWord("false", to);
    case Json::Kind::Number:
      return PutNumber(value.number, to);
    case Json::Kind::Text:
      return WriteText(value.text, to, out);
    case Json::Kind::Array:
      return WriteArray(value, to, out);
    case Json::Kind::Object:
      return WriteObject(value, to, out);
  }
  return to;
}

char* WriteArray(const Json& value, char* to, TextOutput& out) {
  if (value.items.empty()) return PutWord("[]", to);
  char separator = '[';
  for (const Json& item : value.items) {
    to = out.Room(to, 1 + kValueRoom);
    *to++ = separator;
    to = Write(item, to, out);
    separator = ',';
  }
  to = out.Room(to, 1);
  *to++ = ']';
  return to;
}

char* WriteObject(const Json& value, char* to, TextOutput& out) {
  if (value.fields.empty()) return PutWord("{}", to);
  char separator = '{';
  for (const Json::Field& field : value.fields) {
    to = out.Room(to, 1 + kPartRoom + kValueRoom);
    *to++ = separator;
    if (field.first.size() <= kTextPart)
      to = PutShortText(field.first, to);
    else
      to = out.Room(WriteText(field.first, to, out), 1 + kValueRoom);
    *to++ = ':';
    to = Write(field.second, to, out);
    separator = ',';
  }
  to = out.Room(to, 1);
  *to++ = '}';
  return to;
}

}  // namespace

void AppendJson(const Json& value, std::string& text) {
  TextOutput out(text);
  out.Flush(Write(value, out.Begin(), out));
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
