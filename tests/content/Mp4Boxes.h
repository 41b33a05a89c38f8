// Writes the boxes of MP4 files piece by piece, whole or with sizes that are wrong on purpose.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mp4boxes {

/// `bytes` low bytes of the number, the highest first.
inline std::string Number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
  return text;
}
inline std::string U16(std::uint64_t value) { return Number(value, 2); }
inline std::string U32(std::uint64_t value) { return Number(value, 4); }
inline std::string U64(std::uint64_t value) { return Number(value, 8); }

/// A header that says what it likes about the size.
inline std::string Header(std::uint64_t size, std::string_view type) { return U32(size) + std::string(type); }

inline std::string Box(std::string_view type, const std::string& payload) {
  return Header(8 + payload.size(), type) + payload;
}
inline std::string LargeBox(std::string_view type, const std::string& payload) {
  return Header(1, type) + U64(16 + payload.size()) + payload;
}

inline std::string FileType(std::string_view major, std::string_view compatible) {
  return Box("ftyp", std::string(major) + U32(512) + std::string(compatible));
}

/// Version 0, or version 1 with 64-bit times.
inline std::string MovieHeader(std::uint64_t creation, std::uint64_t ticks = 5000,
                               std::uint32_t timescale = 1000, int version = 0) {
  const int bytes = version == 1 ? 8 : 4;
  return Box("mvhd", Number(static_cast<std::uint64_t>(version), 1) + Number(0, 3) + Number(creation, bytes) +
                         Number(0, bytes) + U32(timescale) + Number(ticks, bytes) + std::string(80, '\0'));
}

inline std::string Data(const std::string& text, std::uint32_t type = 1) {
  return Box("data", U32(type) + U32(0) + text);
}

/// "meta" in the form of ISO/IEC 14496-12 with these keys and their texts, in turn.
struct KeyedItem {
  std::string key;
  std::string text;
};
inline std::string KeyedMetadata(const std::initializer_list<KeyedItem>& items, bool isQuickTime = false) {
  std::string keys, values;
  std::uint64_t number = 0;
  for (const KeyedItem& item : items) {
    keys += Box("mdta", item.key);
    values += Box(U32(++number), Data(item.text));
  }
  return Box("meta", (isQuickTime ? std::string() : U32(0)) + Box("hdlr", std::string(25, '\0')) +
                         Box("keys", U32(0) + U32(number) + keys) + Box("ilst", values));
}

/// The text "©day" as QuickTime writes it into user data.
inline std::string DayText(const std::string& text) {
  return Box(
      "\xA9"
      "day",
      U16(text.size()) + U16(0x55C4) + text);
}
/// A "moov" box with nothing but that text.
inline std::string MovieOfDay(const std::string& text) { return Box("moov", Box("udta", DayText(text))); }

}  // namespace mp4boxes
