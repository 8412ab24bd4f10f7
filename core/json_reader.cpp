#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <system_error>
#include <tuple>

#include "core/json.h"
#include "core/json_key_index.h"
#include "core/json_text_scan.h"
#include "core/text_output.h"
#include "core/wide_product.h"

namespace zorvik::core {
namespace {

constexpr std::size_t kTextLimit = 16'777'216;
constexpr std::size_t kFieldLimit = 65'536;
constexpr std::size_t kItemLimit = 8'388'608;
constexpr int kDepthLimit = 65;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

void PutUtf8(unsigned code, TextOutput& out) {
  const auto put = [&out](unsigned byte) { out.Put(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
    return;
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
}

// The value of digits with at most one point among them, the way a number with an exponent marker
// but no exponent is read.
double DigitByDigit(const char* at, const char* end) {
  double value = 0;
  for (; at < end && IsDigit(*at); ++at) value = value * 10 + (*at - '0');
  if (at < end) ++at;
  double scale = 0.1;
  for (; at < end; ++at) {
    value += (*at - '0') * scale;
    scale *= 0.1;
  }
  return value;
}

// 1/5^n for n from 1 on: the 64 bits from the first that is set, cut off behind them.
constexpr std::array<std::uint64_t, kPowersOfFive.size()> kReciprocalsOfFive = [] {
  std::array<std::uint64_t, kPowersOfFive.size()> reciprocals{};
  for (std::size_t i = 1; i < reciprocals.size(); ++i) {
    const std::uint64_t power = kPowersOfFive[i];
    std::uint64_t rest = std::bit_floor(power);
    for (int bit = 0; bit < 64; ++bit) {
      rest *= 2;
      reciprocals[i] = reciprocals[i] * 2 + (rest >= power ? 1 : 0);
      if (rest >= power) rest -= power;
    }
  }
  return reciprocals;
}();

// Finds the double nearest to mantissa / 10^scale. Returns false when its 64 bits of precision
// cannot tell; `mantissa` must not be 0 and `scale` lie in kReciprocalsOfFive, from 1 on.
bool DivideByPowerOfTen(std::uint64_t mantissa, std::size_t scale, double& out) {
  const int shift = std::countl_zero(mantissa);
  WideProduct quotient = MultiplyWide(mantissa << shift, kReciprocalsOfFive[scale]);
  // The true quotient is less than 2 above quotient.high.
  int exponent =
      1 - shift - static_cast<int>(std::bit_width(kPowersOfFive[scale])) - static_cast<int>(scale);
  // 53 bits are kept; the rest says which way to round, unless it is too close to a half.
  const int dropped = 11 - std::countl_zero(quotient.high);
  const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  const std::uint64_t rest = quotient.high & (half * 2 - 1);
  if (rest == half || rest == half - 1) return false;
  const std::uint64_t kept = (quotient.high >> dropped) + (rest > half ? 1 : 0);
  exponent += dropped;
  out = static_cast<double>(kept) *
        std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52);
  return true;
}

// Finds the double nearest to mantissa * 10^exponent where that takes little work.
bool ScaleExactly(std::uint64_t mantissa, int exponent, double& out) {
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
  constexpr std::array<double, 23> kExactPowersOfTen = {
      1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr int kExactScale = static_cast<int>(kExactPowersOfTen.size()) - 1;
  if (mantissa == 0 || exponent == 0) {
    out = static_cast<double>(mantissa);
    return true;
  }
  const auto scale = static_cast<std::size_t>(std::abs(exponent));
  if (mantissa <= kExactIntegers && std::abs(exponent) <= kExactScale) {
    // Both are exact, so that only the one operation rounds.
    const double power = kExactPowersOfTen[scale];
    out = exponent < 0 ? static_cast<double>(mantissa) / power
                       : static_cast<double>(mantissa) * power;
    return true;
  }
  return exponent < 0 && scale < kReciprocalsOfFive.size() &&
         DivideByPowerOfTen(mantissa, scale, out);
}

class Reader {
 public:
  explicit Reader(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

  // Reads a value into `out`, which must be a null. `model` is a value that may look alike: the
  // one before in a list. It saves growing and looking for repeated keys, and changes no result.
  bool Value(Json& out, int depth, const Json& model);
  bool AtEnd() {
    SkipSpace();
    return at == end;
  }
  const char* Message() const { return message; }

 private:
  bool Object(Json& out, int depth, const Json& model);
  bool FieldBeyondLimit(int depth);
  bool Array(Json& out, int depth, const Json& model);
  void MakeRoomForItem(std::vector<Json>& items) const;
  bool String(std::string& out);
  bool EscapedString(std::string& out);
  bool Escape(TextOutput& out);
  bool Number(Json& out);
  bool UnusualNumber(const char* first, const char* mantissa_end, bool bare_marker, double& value);

  bool Fail(const char* why) {
    message = why;
    return false;
  }
  void SkipSpace() {
    while (at < end && (*at == ' ' || *at == '\t' || *at == '\n' || *at == '\r')) ++at;
  }
  bool Take(char c) {
    if (at == end || *at != c) return false;
    ++at;
    return true;
  }
  bool TakeWord(std::string_view word) {
    if (std::string_view(at, static_cast<std::size_t>(end - at)).substr(0, word.size()) != word) {
      return false;
    }
    at += word.size();
    return true;
  }
  // Four hexadecimal digits, or -1.
  int CodeUnit() {
    if (end - at < 4) return -1;
    int unit = 0;
    for (const char* stop = at + 4; at < stop; ++at) {
      const int digit = HexDigit(*at);
      if (digit < 0) return -1;
      unit = unit * 16 + digit;
    }
    return unit;
  }

  const char* at;
  const char* end;
  const char* message = "JSON invalido";
};

bool Reader::Value(Json& out, int depth, const Json& model) {
  if (depth == kDepthLimit) return Fail("JSON encaixado demais");
  SkipSpace();
  if (at == end) return Fail("documento vazio");
  switch (*at) {
    case '{':
      ++at;
      return Object(out, depth, model);
    case '[':
      ++at;
      return Array(out, depth, model);
    case '"':
      ++at;
      out.kind = Json::Kind::Text;
      return String(out.text);
    case 't':
    case 'f':
      out.boolean = *at == 't';
      if (!TakeWord(out.boolean ? "true" : "false")) break;
      out.kind = Json::Kind::Bool;
      return true;
    case 'n':
      if (!TakeWord("null")) break;
      return true;
    default:
      break;
  }
  return Number(out);
}

bool Reader::Object(Json& out, int depth, const Json& model) {
  out.kind = Json::Kind::Object;
  SkipSpace();
  if (Take('}')) return true;
  out.fields.reserve(model.fields.size());
  KeyIndex index;
  // While the keys are those of the model, each of them is new.
  bool like_model = true;
  while (true) {
    SkipSpace();
    if (!Take('"')) return Fail("esperava um texto");
    const std::size_t count = out.fields.size();
    if (count == kFieldLimit) return FieldBeyondLimit(depth);
    Json::Field& field = out.fields.emplace_back();
    if (!String(field.first)) return false;
    SkipSpace();
    if (!Take(':')) return Fail("esperava \":\"");

    like_model =
        like_model && count < model.fields.size() && model.fields[count].first == field.first;
    const std::size_t place = like_model ? count : index.PlaceOfLast(out.fields);
    if (place < count) {
      out.fields.pop_back();
      out.fields[place].second = Json();
    }
    const Json& value_model = like_model ? model.fields[count].second : Nothing;
    if (!Value(out.fields[place].second, depth + 1, value_model)) return false;
    SkipSpace();
    if (Take('}')) return true;
    if (!Take(',')) return Fail("esperava \",\" ou \"}\"");
  }
}

// One field more is an error, but only if it has none of its own.
bool Reader::FieldBeyondLimit(int depth) {
  std::string key;
  if (!String(key)) return false;
  SkipSpace();
  if (!Take(':')) return Fail("esperava \":\"");
  Json value;
  if (!Value(value, depth + 1, Nothing)) return false;
  return Fail("objeto com campos demais");
}

bool Reader::Array(Json& out, int depth, const Json& model) {
  out.kind = Json::Kind::Array;
  SkipSpace();
  if (Take(']')) return true;
  out.items.reserve(model.items.size());
  while (true) {
    const std::size_t count = out.items.size();
    if (count == kItemLimit) return Fail("lista com itens demais");
    if (count == out.items.capacity()) MakeRoomForItem(out.items);
    Json& item = out.items.emplace_back();
    if (!Value(item, depth + 1, count > 0 ? out.items[count - 1] : Nothing)) return false;
    SkipSpace();
    if (Take(']')) return true;
    if (!Take(',')) return Fail("esperava \",\" ou \"]\"");
  }
}

// Long lists are mostly lists of numbers. Their values are much larger than their text, and moving
// them costs more than counting ahead.
void Reader::MakeRoomForItem(std::vector<Json>& items) const {
  constexpr std::size_t kCountedFrom = 16;
  std::size_t ahead = 1;
  if (items.size() >= kCountedFrom) {
    for (const char* next = at; next < end; ++next) {
      if (*next == ',') ++ahead;
      // Commas of texts and of inner containers are none of this list.
      if (*next == ']' || *next == '[' || *next == '{' || *next == '"') break;
    }
  }
  items.reserve(std::max(items.size() + ahead, items.size() * 2));
}

bool Reader::String(std::string& out) {
  const char* const stop = FindTextBreak(at, end);
  if (stop == end || *stop != '"') return EscapedString(out);
  out.assign(at, stop);
  at = stop + 1;
  return true;
}

bool Reader::EscapedString(std::string& target) {
  TextOutput out(target);
  while (true) {
    std::size_t plain = 0;
    if (end - at >= 8) {
      // All eight are copied before it is known how many of them count: cheaper than finding out
      // first where a run ends.
      const std::uint64_t word = LoadEightBytes(at);
      std::memcpy(out.Room(sizeof word), &word, sizeof word);
      plain = CountPlainBytes(word);
      out.Advance(plain);
    } else if (at < end && !IsTextBreak(*at)) {
      out.Put(*at);
      plain = 1;
    }
    at += plain;
    if (plain > 0) continue;
    if (at == end) return Fail("texto sem fechar");
    if (Take('"')) break;
    if (!Take('\\')) return Fail("byte de controle dentro de um texto");
    if (!Escape(out)) return false;
  }
  out.Flush();
  return true;
}

bool Reader::Escape(TextOutput& out) {
  if (at == end) return Fail("texto sem fechar");
  const char letter = *at++;
  switch (letter) {
    case '"':
    case '\\':
    case '/':
      out.Put(letter);
      return true;
    case 'b':
      out.Put('\b');
      return true;
    case 'f':
      out.Put('\f');
      return true;
    case 'n':
      out.Put('\n');
      return true;
    case 'r':
      out.Put('\r');
      return true;
    case 't':
      out.Put('\t');
      return true;
    case 'u':
      break;
    default:
      return Fail("escape desconhecido");
  }
  const int unit = CodeUnit();
  if (unit < 0) return Fail("escape \\u incompleto");
  auto code = static_cast<unsigned>(unit);
  if (code >= 0xD800 && code <= 0xDBFF) {
    if (!TakeWord("\\u")) return Fail("par substituto sem a segunda metade");
    const int second = CodeUnit();
    if (second < 0xDC00 || second > 0xDFFF) return Fail("par substituto invalido");
    code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned>(second) - 0xDC00);
  }
  PutUtf8(code, out);
  return true;
}

bool Reader::Number(Json& out) {
  const bool negative = *at == '-';
  if (*at == '+' || *at == '-') ++at;
  const char* const first = at;
  std::uint64_t mantissa = 0;
  const auto take_digits = [this, &mantissa] {
    const char* const start = at;
    for (; at < end && IsDigit(*at); ++at) {
      mantissa = mantissa * 10 + static_cast<unsigned char>(*at - '0');
    }
    return at - start;
  };
  std::ptrdiff_t digits = take_digits();
  int exponent = 0;
  if (Take('.')) {
    const std::ptrdiff_t fraction = take_digits();
    digits += fraction;
    exponent = -static_cast<int>(fraction);
  }
  if (digits == 0) return Fail("esperava um numero");

  const char* const mantissa_end = at;
  bool bare_marker = false;
  if (Take('e') || Take('E')) {
    const bool minus = at < end && *at == '-';
    if (!Take('+')) Take('-');
    bare_marker = at == end || !IsDigit(*at);
    int written = 0;
    for (; at < end && IsDigit(*at); ++at) {
      if (written < 10'000) written = written * 10 + (*at - '0');
    }
    exponent += minus ? -written : written;
  }

  constexpr std::ptrdiff_t kMantissaDigits = 19;  // As many as 64 bits always hold.
  double value = 0;
  if (bare_marker || digits > kMantissaDigits || !ScaleExactly(mantissa, exponent, value)) {
    if (!UnusualNumber(first, mantissa_end, bare_marker, value)) return false;
  }
  out.kind = Json::Kind::Number;
  out.number = negative ? -value : value;
  return true;
}

bool Reader::UnusualNumber(const char* first, const char* mantissa_end, bool bare_marker,
                           double& value) {
  value = 0;
  const bool zero = std::none_of(first, mantissa_end, [](char c) { return c >= '1' && c <= '9'; });
  if (zero) return true;
  if (bare_marker) {
    value = DigitByDigit(first, mantissa_end);
    if (value > 0 && value <= std::numeric_limits<double>::max()) return true;
  } else if (std::from_chars(first, at, value).ec == std::errc()) {
    return true;
  }
  return Fail("numero fora da faixa");
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
  Reader reader(text);
  if (!reader.Value(out, 0, Nothing)) {
    error = reader.Message();
    return false;
  }
  if (!reader.AtEnd()) {
    error = "sobrou texto depois do documento";
    return false;
  }
  return true;
}

}  // namespace zorvik::core
