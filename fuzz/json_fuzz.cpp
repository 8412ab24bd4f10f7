#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/slow_json.h"

namespace zorvik::fuzz {
namespace {

// What numbers can't say in JSON: the infinities, NaN and the sign of zero.
void MakeWritable(Json& value) {
  if (!std::isfinite(value.number) || value.number == 0) value.number = 0;
  for (Json& item : value.items) MakeWritable(item);
  for (auto& [key, field] : value.fields) MakeWritable(field);
}

// What is written reads back equal, for the slow reader too, and writes the same bytes.
void CheckWriting(Json value) {
  const std::string written = core::WriteJson(value);
  MakeWritable(value);
  Json again;
  Json slow;
  std::string error;
  Require(core::ParseJson(written, again, error), "own text refused", written);
  Require(SlowParse(written, slow, error) && Same(slow, again), "own text misread", written);
  Require(Same(value, again), "read back another value", written);
  RequireEqual(written, core::WriteJson(again), "read back and written again");
}

void CheckReading(std::string_view text) {
  Json value;
  Json slow;
  std::string error = "left over";
  std::string slow_error;
  const bool read = core::ParseJson(text, value, error);
  SlowParse(text, slow, slow_error);
  RequireEqual(slow_error, error, "messages of the readers");
  Require(read == error.empty(), "verdict", error);
  if (!read) return;
  Require(Same(value, slow), "the readers' values", core::WriteJson(slow));
  CheckWriting(value);
}

// Texts, keys and numbers that reading never yields: any bytes, and any bits.
void CheckWritingOf(std::string_view bytes) {
  double number = 0;
  bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
  Json value = Json::Object();
  value.Set(bytes, Json::Text(std::string(bytes)));
  value.Set("number", Json::Number(number));
  CheckWriting(value);
}

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  zorvik::fuzz::CheckReading(input);
  zorvik::fuzz::CheckWritingOf(input);
  return 0;
}
