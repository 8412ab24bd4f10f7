#include "examples/sample_editor/png.h"

#include <algorithm>

namespace zorvik::sample_editor {

namespace {

constexpr std::uint32_t kAdlerModulus = 65521;
constexpr std::size_t kLongestRun = 258;

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

std::uint32_t Adler32(std::string_view bytes) {
  std::uint32_t low = 1;
  std::uint32_t high = 0;
  for (const char byte : bytes) {
    low = (low + static_cast<std::uint8_t>(byte)) % kAdlerModulus;
    high = (high + low) % kAdlerModulus;
  }
  return (high << 16U) | low;
}

// Deflate fills its bytes from the lowest bit up, but writes its codes from their highest bit.
struct BitWriter {
  std::string bytes;
  unsigned used = 0;  // Bits taken in the last byte, 0 to 7.

  void Bit(unsigned bit) {
    if (used == 0) bytes += '\0';
    bytes.back() = static_cast<char>(static_cast<std::uint8_t>(bytes.back()) | (bit << used));
    used = (used + 1) % 8;
  }
  void Code(unsigned code, unsigned length) {
    while (length-- > 0) Bit((code >> length) & 1U);
  }
  // A literal byte or a run length, in the fixed code.
  void Symbol(unsigned symbol) {
    if (symbol < 144)
      Code(0x30 + symbol, 8);
    else if (symbol < 256)
      Code(0x190 + symbol - 144, 9);
    else if (symbol < 280)
      Code(symbol - 256, 7);
    else
      Code(0xC0 + symbol - 280, 8);
  }
};

std::string Deflate(std::string_view bytes) {
  constexpr unsigned kEndOfBlock = 256;
  constexpr unsigned kShortestRunSymbol = 257;  // For a run of 3; 4 to 10 follow without gaps.
  constexpr unsigned kLongestRunSymbol = 285;
  BitWriter out;
  out.Bit(1);      // The last block,
  out.Code(2, 2);  // in the fixed code (01, lowest bit first).
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t run = 0;  // How often the byte before comes again.
    while (at > 0 && run < kLongestRun && at + run < bytes.size() &&
           bytes[at + run] == bytes[at - 1])
      ++run;
    if (run < 3) {
      out.Symbol(static_cast<std::uint8_t>(bytes[at++]));
      continue;
    }
    if (run < kLongestRun) run = std::min<std::size_t>(run, 10);
    out.Symbol(run == kLongestRun ? kLongestRunSymbol
                                  : kShortestRunSymbol + static_cast<unsigned>(run - 3));
    out.Code(0, 5);  // A distance of 1.
    at += run;
  }
  out.Symbol(kEndOfBlock);
  return out.bytes;
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
  header += std::string("\x08\x03\0\0\0", 5);  // Eight bits, palette, no interlacing.
  std::string palette;
  for (const auto& colour : picture.palette) palette.append(colour.begin(), colour.end());
  std::string rows;
  for (std::size_t row = 0; row < picture.height; ++row) {
    rows += '\0';  // No filter.
    const auto* const first = picture.pixels.data() + row * picture.width;
    rows.append(first, first + picture.width);
  }
  std::string data = "\x78\x01" + Deflate(rows);
  AppendBigEndian(data, Adler32(rows));

  std::string png = "\x89PNG\r\n\x1A\n";
  AppendChunk(png, "IHDR", header);
  AppendChunk(png, "PLTE", palette);
  AppendChunk(png, "IDAT", data);
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
