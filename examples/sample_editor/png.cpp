#include "examples/sample_editor/png.h"

#include <algorithm>

#include "examples/sample_editor/deflate.h"

namespace zorvik::sample_editor {

namespace {

void AppendBigEndian(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((value >> shift) & 0xFFU);
}

std::uint32_t Crc32(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

void AppendChunk(std::string& png, std::string_view type, std::string_view content) {
  AppendBigEndian(png, static_cast<std::uint32_t>(content.size()));
  const std::string body = std::string(type).append(content);
  png += body;
  AppendBigEndian(png, Crc32(body));
}

}  // namespace

std::string WritePng(const Picture& picture) {
  std::string header;
  AppendBigEndian(header, picture.width);
  AppendBigEndian(header, picture.height);
  header += std::string("\x08\x02\0\0\0", 5);  // Eight bits, three colours, no interlacing.
  std::string rows;
  const std::size_t size = std::size_t{3} * picture.width;
  for (std::size_t row = 0; row < picture.height; ++row) {
    rows += '\0';  // No filter.
    const auto* const first = picture.pixels.data() + row * size;
    rows.append(first, first + size);
  }
  std::string png = "\x89PNG\r\n\x1A\n";
  AppendChunk(png, "IHDR", header);
  AppendChunk(png, "IDAT", Compress(rows));
  AppendChunk(png, "IEND", "");
  return png;
}

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (std::size_t index = 0; index < 3; ++index)
      group = (group << 8U) | (index < count ? static_cast<std::uint8_t>(bytes[at + index]) : 0U);
    for (std::size_t digit = 0; digit < 4; ++digit)
      text += digit <= count ? kDigits[(group >> (18 - 6 * digit)) & 63U] : '=';
  }
  return text;
}

}  // namespace zorvik::sample_editor
