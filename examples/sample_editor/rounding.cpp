#include "examples/sample_editor/rounding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr double kTolerance = 0.0005;
constexpr double kNoise = 1e-9;   // What sums and products add to a number that somebody chose.
constexpr double kLargest = 1e9;  // Beyond it a double has few such digits anyway.
constexpr std::size_t kMostDecimals = 6;  // By then there always is a number that fits.

// What is neither a length nor an angle but is set as it is, and what grids are counted with.
constexpr std::array<std::string_view, 7> kExact = {
    "step", "scale_xyz", "tint", "color_variation", "mass", "friction", "restitution"};

std::size_t Decimals(double value) {
  const std::string text = core::WriteJson(Json::Number(value));
  const std::size_t point = text.find('.');
  return point == std::string::npos ? 0 : text.size() - point - 1;
}

// Messages show 17 digits of a number, and most thousandths need them all: 5.123 is written
// 5.1230000000000002. So it isn't always the nearest thousandth that is taken, but the nearest
// number with the fewest digits that lies within the tolerance.
double Rounded(double value) {
  const double thousandth = std::round(value * 1000) / 1000;
  if (!(std::abs(value) < kLargest)) return value;
  if (std::abs(value - thousandth) < kNoise) return thousandth;
  double scale = 1000;
  for (std::size_t decimals = 3; decimals <= kMostDecimals; ++decimals, scale *= 10) {
    const double middle = std::round(value * scale);
    for (int away = 0; away <= kTolerance * scale; ++away) {
      for (const double candidate : {(middle + away) / scale, (middle - away) / scale})
        if (Decimals(candidate) <= decimals) return candidate;
    }
  }
  return thousandth;
}

}  // namespace

void RoundForAnswer(Json& value) {
  if (value.kind == Json::Kind::Number) value.number = Rounded(value.number);
  for (Json& item : value.items) RoundForAnswer(item);
  for (auto& [key, member] : value.fields)
    if (std::find(kExact.begin(), kExact.end(), key) == kExact.end()) RoundForAnswer(member);
}

}  // namespace zorvik::sample_editor
