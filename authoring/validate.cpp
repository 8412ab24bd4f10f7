#include "authoring/validate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>

namespace zorvik::authoring {
namespace {

using core::Json;

// Where a value stands: a chain on the stack, from the value up to the document. Its text is made
// only for a fault, so values that fit cost no strings.
struct Place {
  const Place* parent = nullptr;
  std::string_view key;
  std::size_t index = 0;
  bool is_key = false;
};

std::string PathText(const Place& place) {
  if (place.parent == nullptr) return {};
  std::string text = PathText(*place.parent);
  if (!place.is_key) return text + '[' + std::to_string(place.index) + ']';
  if (!text.empty()) text += '.';
  return text.append(place.key);
}

struct Fault {
  std::string& field;
  std::string& reason;

  // Always false, so that a check can end with it.
  bool At(const Place& place, std::string text) const {
    field = PathText(place);
    reason = std::move(text);
    return false;
  }
};

std::string NumberText(double number) {
  if (std::trunc(number) == number && std::fabs(number) < 1e15)
    return std::to_string(static_cast<long long>(number));
  // The largest double has 309 digits in front of the point.
  std::array<char, 336> digits{};
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                     std::chars_format::fixed, 6);
  return {digits.data(), written.ptr};
}

// The limit of a length. A negative one or NaN bounds as 0 does.
std::size_t CountLimit(double limit) {
  if (!(limit > 0)) return 0;
  // The largest size rounds up to a power of two as a double, so it must not be converted back.
  constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
  return limit < static_cast<double>(kLargest) ? static_cast<std::size_t>(limit) : kLargest;
}

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(),
      [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;  // No continuation byte.
      }));
}

bool IsOfType(const Json& value, std::string_view type) {
  switch (value.kind) {
    case Json::Kind::Null:
      return type == "null";
    case Json::Kind::Bool:
      return type == "boolean";
    case Json::Kind::Number:
      return type == "number" ? std::isfinite(value.number)
                              : type == "integer" && value.IsInteger();
    case Json::Kind::Text:
      return type == "string";
    case Json::Kind::Array:
      return type == "array";
    case Json::Kind::Object:
      return type == "object";
  }
  return false;
}

std::string_view TypeWord(std::string_view type) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kWords = {{
      {"object", "um objeto"},
      {"array", "uma lista"},
      {"string", "um texto"},
      {"number", "um numero"},
      {"integer", "um inteiro"},
      {"boolean", "verdadeiro ou falso"},
  }};
  const auto* const found = std::find_if(kWords.begin(), kWords.end(),
                                         [type](const auto& word) { return word.first == type; });
  return found != kWords.end() ? found->second : "nulo";
}

bool IsEntry(const Json& value, const Json& entry) {
  if (value.kind != entry.kind) return false;
  return (value.kind == Json::Kind::Text && value.text == entry.text) ||
         (value.kind == Json::Kind::Number && value.number == entry.number);
}

bool Check(const Json& schema, const Json& value, const Place& place, const Fault& fault);

bool CheckType(const Json& schema, const Json& value, const Place& place, const Fault& fault) {
  const Json& type = schema.At("type");
  if (type.kind != Json::Kind::Text || IsOfType(value, type.text)) return true;
  return fault.At(place, std::string("deveria ser ").append(TypeWord(type.text)));
}

bool CheckEnum(const Json& schema, const Json& value, const Place& place, const Fault& fault) {
  const Json& entries = schema.At("enum");
  if (entries.kind != Json::Kind::Array ||
      std::any_of(entries.items.begin(), entries.items.end(),
                  [&value](const Json& entry) { return IsEntry(value, entry); }))
    return true;
  std::string reason = "deveria ser um de:";
  for (const Json& entry : entries.items) {
    reason += ' ';
    reason += entry.kind == Json::Kind::Text ? entry.text : NumberText(entry.number);
  }
  return fault.At(place, std::move(reason));
}

bool CheckNumber(const Json& schema, double number, const Place& place, const Fault& fault) {
  const Json& minimum = schema.At("minimum");
  if (minimum.kind == Json::Kind::Number && number < minimum.number)
    return fault.At(place, "deveria ser no minimo " + NumberText(minimum.number));
  const Json& maximum = schema.At("maximum");
  if (maximum.kind == Json::Kind::Number && number > maximum.number)
    return fault.At(place, "deveria ser no maximo " + NumberText(maximum.number));
  return true;
}

bool CheckCount(const Json& minimum, const Json& maximum, std::size_t count, const char* unit,
                const Place& place, const Fault& fault) {
  if (minimum.kind == Json::Kind::Number && count < CountLimit(minimum.number))
    return fault.At(place, "deveria ter pelo menos " + NumberText(minimum.number) + unit);
  if (maximum.kind == Json::Kind::Number && count > CountLimit(maximum.number))
    return fault.At(place, "deveria ter no maximo " + NumberText(maximum.number) + unit);
  return true;
}

bool CheckItems(const Json& schema, const Json& value, const Place& place, const Fault& fault) {
  const Json& items = schema.At("items");
  if (items.kind != Json::Kind::Object) return true;
  Place element;
  element.parent = &place;
  for (const Json& item : value.items) {
    if (!Check(items, item, element, fault)) return false;
    ++element.index;
  }
  return true;
}

bool CheckFields(const Json& schema, const Json& value, const Place& place, const Fault& fault) {
  Place member;
  member.parent = &place;
  member.is_key = true;
  const Json& required = schema.At("required");
  if (required.kind == Json::Kind::Array) {
    for (const Json& name : required.items) {
      if (name.kind == Json::Kind::Text && !value.Has(name.text)) {
        member.key = name.text;
        return fault.At(member, "e obrigatorio");
      }
    }
  }
  const Json& properties = schema.At("properties");
  const Json& additional = schema.At("additionalProperties");
  const bool closed = additional.kind == Json::Kind::Bool && !additional.boolean;
  for (const auto& [key, content] : value.fields) {
    member.key = key;
    const Json& declared = properties.At(key);
    if (declared.kind == Json::Kind::Object) {
      if (!Check(declared, content, member, fault)) return false;
    } else if (closed) {
      return fault.At(member, "nao e um campo desta ferramenta");
    }
  }
  return true;
}

// The order of the checks shows in the answer, because the first fault is the one that is told.
bool Check(const Json& schema, const Json& value, const Place& place, const Fault& fault) {
  if (!CheckType(schema, value, place, fault) || !CheckEnum(schema, value, place, fault))
    return false;
  switch (value.kind) {
    case Json::Kind::Number:
      return CheckNumber(schema, value.number, place, fault);
    case Json::Kind::Text:
      return CheckCount(schema.At("minLength"), schema.At("maxLength"), CountCharacters(value.text),
                        " caracteres", place, fault);
    case Json::Kind::Array:
      return CheckCount(schema.At("minItems"), schema.At("maxItems"), value.items.size(), " itens",
                        place, fault) &&
             CheckItems(schema, value, place, fault);
    case Json::Kind::Object:
      return CheckFields(schema, value, place, fault);
    case Json::Kind::Null:
    case Json::Kind::Bool:
      break;
  }
  return true;
}

}  // namespace

bool Validate(const Json& schema, const Json& value, std::string& field, std::string& reason) {
  field.clear();
  reason.clear();
  return Check(schema, value, Place{}, Fault{field, reason});
}

}  // namespace zorvik::authoring
