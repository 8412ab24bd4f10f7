#include <charconv>
#include <limits>
#include <map>
#include <system_error>

#include "core/json.h"
#include "core/json_text_scan.h"

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

void AppendUtf8(std::string& out, unsigned code) {
  const auto byte = [&out](unsigned value) { out.push_back(static_cast<char>(value)); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xC0 | code >> 6);
    byte(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    byte(0xE0 | code >> 12);
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  } else {
    byte(0xF0 | code >> 18);
    byte(0x80 | (code >> 12 & 0x3F));
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  }
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

class Reader {
 public:
  explicit Reader(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

  bool Value(Json& out, int depth);
  bool AtEnd() {
    SkipSpace();
    return at == end;
  }
  const char* Message() const { return message; }

 private:
  bool Object(Json& out, int depth);
  bool Array(Json& out, int depth);
  bool String(std::string& out);
  bool Escape(std::string& out);
  bool Number(Json& out);

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

bool Reader::Value(Json& out, int depth) {
  if (depth == kDepthLimit) return Fail("JSON encaixado demais");
  SkipSpace();
  if (at == end) return Fail("documento vazio");
  if (Take('{')) return Object(out, depth);
  if (Take('[')) return Array(out, depth);
  if (Take('"')) {
    out.kind = Json::Kind::Text;
    return String(out.text);
  }
  if (TakeWord("true") || TakeWord("false")) {
    out.kind = Json::Kind::Bool;
    out.boolean = at[-2] == 'u';
    return true;
  }
  if (TakeWord("null")) return true;
  return Number(out);
}

bool Reader::Object(Json& out, int depth) {
  out.kind = Json::Kind::Object;
  SkipSpace();
  if (Take('}')) return true;
  std::map<std::string, std::size_t> places;
  while (true) {
    SkipSpace();
    if (!Take('"')) return Fail("esperava um texto");
    std::string key;
    if (!String(key)) return false;
    SkipSpace();
    if (!Take(':')) return Fail("esperava \":\"");
    Json value;
    if (!Value(value, depth + 1)) return false;
    if (out.fields.size() == kFieldLimit) return Fail("objeto com campos demais");
    const auto [place, fresh] = places.emplace(key, out.fields.size());
    if (fresh) {
      out.fields.emplace_back(std::move(key), std::move(value));
    } else {
      out.fields[place->second].second = std::move(value);
    }
    SkipSpace();
    if (Take('}')) return true;
    if (!Take(',')) return Fail("esperava \",\" ou \"}\"");
  }
}

bool Reader::Array(Json& out, int depth) {
  out.kind = Json::Kind::Array;
  SkipSpace();
  if (Take(']')) return true;
  while (true) {
    if (out.items.size() == kItemLimit) return Fail("lista com itens demais");
    if (!Value(out.items.emplace_back(), depth + 1)) return false;
    SkipSpace();
    if (Take(']')) return true;
    if (!Take(',')) return Fail("esperava \",\" ou \"]\"");
  }
}

bool Reader::String(std::string& out) {
  while (true) {
    const char* stop = FindTextBreak(at, end);
    out.append(at, stop);
    at = stop;
    if (at == end) return Fail("texto sem fechar");
    if (Take('"')) return true;
    if (!Take('\\')) return Fail("byte de controle dentro de um texto");
    if (!Escape(out)) return false;
  }
}

bool Reader::Escape(std::string& out) {
  if (at == end) return Fail("texto sem fechar");
  const char letter = *at++;
  switch (letter) {
    case '"':
    case '\\':
    case '/':
      out.push_back(letter);
      return true;
    case 'b':
      out.push_back('\b');
      return true;
    case 'f':
      out.push_back('\f');
      return true;
    case 'n':
      out.push_back('\n');
      return true;
    case 'r':
      out.push_back('\r');
      return true;
    case 't':
      out.push_back('\t');
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
  AppendUtf8(out, code);
  return true;
}

bool Reader::Number(Json& out) {
  const bool negative = *at == '-';
  if (*at == '+' || *at == '-') ++at;
  const char* const first = at;
  bool any_digit = false;
  bool only_zeros = true;
  const auto digits = [&] {
    for (; at < end && IsDigit(*at); ++at) {
      any_digit = true;
      only_zeros = only_zeros && *at == '0';
    }
  };
  digits();
  if (Take('.')) digits();
  if (!any_digit) return Fail("esperava um numero");
  const char* const mantissa_end = at;
  bool bare_marker = false;
  if (Take('e') || Take('E')) {
    if (!Take('+')) Take('-');
    bare_marker = at == end || !IsDigit(*at);
    while (at < end && IsDigit(*at)) ++at;
  }

  double value = 0;
  if (!only_zeros) {
    if (bare_marker) {
      value = DigitByDigit(first, mantissa_end);
      if (value == 0 || value > std::numeric_limits<double>::max()) {
        return Fail("numero fora da faixa");
      }
    } else if (std::from_chars(first, at, value).ec != std::errc()) {
      return Fail("numero fora da faixa");
    }
  }
  out.kind = Json::Kind::Number;
  out.number = negative ? -value : value;
  return true;
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
  if (!reader.Value(out, 0)) {
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
