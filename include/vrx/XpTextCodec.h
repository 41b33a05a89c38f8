// Conversion between UTF-8 bytes, the code page of every file and path of this system, and the UTF-16 text
// that it holds in memory. Bytes that are not valid UTF-8 (RFC 3629) survive a round trip: each becomes the
// lone low surrogate U+DC00 + byte (U+DC80 to U+DCFF) and back.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vrx::textcodec {

inline constexpr char16_t kEscapedByte = 0xDC00;

inline bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
inline bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
inline bool IsEscapedByte(char32_t c) { return c >= 0xDC80 && c <= 0xDCFF; }

/// Length in bytes of the valid UTF-8 sequence at the start of `bytes` and its scalar value in `scalar`;
/// 0 when there is none (empty input, stray or overlong bytes, a surrogate, a cut sequence).
inline std::size_t DecodeOne(std::string_view bytes, char32_t& scalar) {
  if (bytes.empty()) return 0;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    scalar = lead;
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return 0;
  scalar = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    scalar = scalar << 6 | (byte(i) & 0x3F);
  }
  const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  const bool valid = scalar >= smallest && scalar <= 0x10FFFF && (scalar < 0xD800 || scalar > 0xDFFF);
  return valid ? length : 0;
}

inline std::u16string ToUtf16(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    char32_t scalar = 0;
    std::size_t length = DecodeOne(bytes, scalar);
    if (length == 0) {
      text.push_back(static_cast<char16_t>(kEscapedByte + static_cast<unsigned char>(bytes[0])));
      length = 1;
    } else if (scalar < 0x10000) {
      text.push_back(static_cast<char16_t>(scalar));
    } else {
      text.push_back(static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF)));
    }
    bytes.remove_prefix(length);
  }
  return text;
}

inline void AppendUtf8(std::string& bytes, char32_t c) {
  const auto put = [&](char32_t b) { bytes.push_back(static_cast<char>(static_cast<unsigned char>(b))); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

/// A lone surrogate that is no escaped byte has no UTF-8 form and becomes U+FFFD.
inline std::string ToUtf8(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t c = text[i];
    if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      AppendUtf8(bytes, 0x10000 + ((c - 0xD800) << 10) + (text[++i] - char32_t{0xDC00}));
    } else if (IsEscapedByte(c)) {
      bytes.push_back(static_cast<char>(static_cast<unsigned char>(c - kEscapedByte)));
    } else {
      AppendUtf8(bytes, IsHighSurrogate(c) || IsLowSurrogate(c) ? char32_t{0xFFFD} : c);
    }
  }
  return bytes;
}

}  // namespace vrx::textcodec
