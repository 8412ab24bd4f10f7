#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

#include "core/json.h"
#include "fuzz/other_json.h"
#include "fuzz/require.h"

namespace zorvik::fuzz {
namespace {

using core::Json;

// What the library makes of a text; a discarded value when it refuses it.
struct Reading {
  OtherJson value;
  int deepest = 0;
  bool zero = false;  // Maybe of a number that is too small for a double.

  explicit Reading(std::string_view text) {
    const auto note = [this](int depth, OtherJson::parse_event_t, OtherJson& part) {
      deepest = std::max(deepest, depth);
      if (part.is_number()) part = part.get<double>();
      zero = zero || part == 0.0;
      return true;
    };
    value = OtherJson::parse(text, note, false);
  }
};

// What is written is JSON and reads back as what writes the same bytes.
void CheckWriting(const std::string& written) {
  Json again;
  std::string error;
  Require(core::ParseJson(written, again, error), "own text refused", written);
  RequireEqual(written, core::WriteJson(again), "read back and written again");
  Require(OtherJson::accept(written) || !IsUtf8(written), "not JSON", written);
}

// What the library takes reads as the same value here, and is written as such, but for two kinds of
// text that are refused. The product takes more, so nothing follows from what the library refuses.
void CheckReading(std::string_view text) {
  Json value;
  std::string error = "left over";
  const bool read = core::ParseJson(text, value, error);
  Require(read == error.empty(), "verdict", error);
  const std::string written = core::WriteJson(value);
  const Reading other(text);
  // The library takes a zero byte for the end of the text.
  if (text.find('\0') != std::string_view::npos)
    Require(!read, "took a zero byte", written);
  else if (!other.value.is_discarded() && !read)
    Require(error == "JSON encaixado demais" ? other.deepest > 64
                                             : error == "numero fora da faixa" && other.zero,
            "refused", error);
  else if (!other.value.is_discarded())
    Require(other.deepest <= 64 && Reading(written).value == other.value, "another value", written);
  if (read) CheckWriting(written);
}

// Texts, keys and numbers that reading never yields: any bytes, and any bits.
void CheckWritingOf(std::string_view bytes) {
  double number = 0;
  bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
  const std::string text(bytes);
  Json value = Json::Object();
  value.Set(text, Json::Text(text));
  value.Set("number", Json::Number(number));
  const std::string written = core::WriteJson(value);
  CheckWriting(written);
  OtherJson other;
  other[text] = text;
  other["number"] = std::isfinite(number) ? number : 0;
  Require(!IsUtf8(text) || Reading(written).value == other, "another value", written);
}

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  zorvik::fuzz::CheckReading(input);
  zorvik::fuzz::CheckWritingOf(input);
  return 0;
}
