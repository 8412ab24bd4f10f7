#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "core/json.h"

// A second reader of JSON, without any speed, so that one sees that it is right.
namespace zorvik::fuzz {

using core::Json;

struct Refused {
  const char* message;
};

class SlowReader {
 public:
  // `depth` is the number of values that may stand inside each other.
  SlowReader(std::string_view text, int depth) : left(text), depth_limit(depth) {}

  Json Document() {
    Took("\xEF\xBB\xBF");
    Json document = Value(0);
    Space();
    if (!left.empty()) throw Refused{"sobrou texto depois do documento"};
    return document;
  }

 private:
  Json Value(int depth) {
    if (depth == depth_limit) throw Refused{"JSON encaixado demais"};
    Space();
    if (left.empty()) throw Refused{"documento vazio"};
    if (Took("{")) return Object(depth);
    if (Took("[")) return Array(depth);
    if (Took("\"")) return Json::Text(Text());
    if (Took("true")) return Json::Bool(true);
    if (Took("false")) return Json::Bool(false);
    if (Took("null")) return {};
    return Json::Number(Number());
  }

  Json Object(int depth) {
    Json object = Json::Object();
    Each("}", "esperava \",\" ou \"}\"", [&] {
      Space();
      Need("\"", "esperava um texto");
      const std::string key = Text();
      Space();
      Need(":", "esperava \":\"");
      object.Set(key, Value(depth + 1));
    });
    return object;
  }

  Json Array(int depth) {
    Json array = Json::Array();
    Each("]", "esperava \",\" ou \"]\"", [&] { array.Add(Value(depth + 1)); });
    return array;
  }

  template <typename Read>
  void Each(std::string_view end, const char* complaint, const Read& read) {
    Space();
    if (Took(end)) return;
    do {
      read();
      Space();
    } while (Took(","));
    Need(end, complaint);
  }

  std::string Text() {
    std::string out;
    while (true) {
      const char c = Next();
      if (c == '"') return out;
      if (static_cast<unsigned char>(c) < 0x20)
        throw Refused{"byte de controle dentro de um texto"};
      out += c == '\\' ? Escape() : std::string(1, c);
    }
  }

  std::string Escape() {
    const char letter = Next();
    const std::size_t named = std::string_view("\"\\/bfnrt").find(letter);
    if (named != std::string_view::npos) return {std::string_view("\"\\/\b\f\n\r\t")[named]};
    if (letter != 'u') throw Refused{"escape desconhecido"};
    int code = CodeUnit("escape \\u incompleto");
    if (code >= 0xD800 && code <= 0xDBFF) {
      Need("\\u", "par substituto sem a segunda metade");
      const int low = CodeUnit("par substituto invalido");
      if (low < 0xDC00 || low > 0xDFFF) throw Refused{"par substituto invalido"};
      code = (code - 0xD800) * 0x400 + (low - 0xDC00) + 0x10000;
    }
    const auto tail = [code](int place) { return static_cast<char>(0x80 + code / place % 64); };
    const auto head = [code](int mark, int place) {
      return static_cast<char>(mark + code / place);
    };
    if (code < 0x80) return {head(0, 1)};
    if (code < 0x800) return {head(0xC0, 64), tail(1)};
    if (code < 0x10000) return {head(0xE0, 4096), tail(64), tail(1)};
    return {head(0xF0, 262'144), tail(4096), tail(64), tail(1)};
  }

  int CodeUnit(const char* complaint) {
    const std::string digits(left.substr(0, 4));
    if (digits.size() < 4 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
      throw Refused{complaint};
    left.remove_prefix(4);
    return std::stoi(digits, nullptr, 16);
  }

  double Number() {
    const bool negative = Took("-");
    if (!negative) Took("+");
    const std::string whole = Digits();
    const std::string fraction = Took(".") ? Digits() : "";
    if ((whole + fraction).empty()) throw Refused{"esperava um numero"};
    std::string exponent;
    bool bare_marker = false;
    if (Took("e") || Took("E")) {
      const char* const sign = Took("-") ? "e-" : Took("+") ? "e+" : "e";
      exponent = Digits();
      bare_marker = exponent.empty();
      exponent.insert(0, sign);
    }
    double value = 0;
    if (bare_marker) {
      for (const char digit : whole) value = value * 10 + (digit - '0');
      double scale = 0.1;
      for (const char digit : fraction) {
        value += (digit - '0') * scale;
        scale *= 0.1;
      }
    } else {
      value = std::strtod((whole + "." + fraction + exponent).c_str(), nullptr);
    }
    const bool zero = (whole + fraction).find_first_not_of('0') == std::string::npos;
    if (std::isinf(value) || (value == 0 && !zero)) throw Refused{"numero fora da faixa"};
    return negative ? -value : value;
  }

  std::string Digits() {
    std::string digits;
    while (!left.empty() && left.front() >= '0' && left.front() <= '9') digits += Next();
    return digits;
  }
  void Space() {
    while (Took(" ") || Took("\t") || Took("\n") || Took("\r")) continue;
  }
  bool Took(std::string_view word) {
    if (!left.starts_with(word)) return false;
    left.remove_prefix(word.size());
    return true;
  }
  void Need(std::string_view word, const char* complaint) {
    if (!Took(word)) throw Refused{complaint};
  }
  char Next() {
    if (left.empty()) throw Refused{"texto sem fechar"};
    const char c = left.front();
    left.remove_prefix(1);
    return c;
  }

  std::string_view left;
  int depth_limit;
};

// Like ParseJson.
inline bool SlowParse(std::string_view text, Json& out, std::string& error, int depth = 65) {
  error.clear();
  try {
    out = SlowReader(text, depth).Document();
  } catch (const Refused& refused) {
    error = refused.message;
  }
  return error.empty();
}

// Every member equal, those without meaning for the kind too; numbers by their bits.
inline bool Same(const Json& a, const Json& b) {
  bool same = a.kind == b.kind && a.boolean == b.boolean && a.text == b.text &&
              std::bit_cast<std::uint64_t>(a.number) == std::bit_cast<std::uint64_t>(b.number) &&
              a.items.size() == b.items.size() && a.fields.size() == b.fields.size();
  for (std::size_t i = 0; same && i < a.items.size(); ++i) same = Same(a.items[i], b.items[i]);
  for (std::size_t i = 0; same && i < a.fields.size(); ++i)
    same = a.fields[i].first == b.fields[i].first && Same(a.fields[i].second, b.fields[i].second);
  return same;
}

}  // namespace zorvik::fuzz
