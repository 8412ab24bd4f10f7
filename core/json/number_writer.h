#pragma once

#include <cstddef>

namespace zorvik::core {

// The room that PutNumber needs: 24 bytes for the number, the rest for digits that don't count.
inline constexpr std::size_t kNumberRoom = 64;

// Writes a number at `to` and returns where it ends. Whole numbers of 64 bits become integers,
// others what printf's "%.17g" gives in every locale, and NaN and the infinities 0.
char* PutNumber(double number, char* to);

}  // namespace zorvik::core
