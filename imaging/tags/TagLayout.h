// The layout of TIFF 6.0 in bytes: header, entries, type sizes, byte order, and the signatures that maker
// notes begin with. Reader, writer and edits share it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vrx::imaging {

inline constexpr std::int64_t kTiffHeaderSize = 8;
inline constexpr std::uint16_t kTiffMagic = 42;
inline constexpr std::uint32_t kIfdCountSize = 2;
inline constexpr std::uint32_t kIfdNextSize = 4;
inline constexpr std::uint32_t kEntrySize = 12;
// In an entry, after the tag.
inline constexpr std::uint32_t kEntryTypeAt = 2;
inline constexpr std::uint32_t kEntryCountAt = 4;
inline constexpr std::uint32_t kEntryValueAt = 8;
inline constexpr std::uint32_t kEntryValueSize = 4;
inline constexpr std::uint16_t kStoredIfdType = 13;  // of Exif; an IFD offset that is read as LONG

/// Count, entries and the offset of the next IFD.
constexpr std::uint64_t IfdHeadSize(std::uint64_t entries) {
  return kIfdCountSize + kEntrySize * entries + kIfdNextSize;
}
constexpr std::uint64_t RoundedToEven(std::uint64_t bytes) { return bytes + bytes % 2; }
/// What a value takes beside its entry.
constexpr std::uint64_t OutOfLineSize(std::uint64_t bytes) {
  return bytes > kEntryValueSize ? RoundedToEven(bytes) : 0;
}

/// Bytes of an element of a stored type, 0 for an unknown type. The type 0 is read as bytes.
constexpr std::uint32_t StoredTypeSize(std::uint32_t type) {
  constexpr std::array<std::uint8_t, 14> kSizes{1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  return type < kSizes.size() ? kSizes[type] : 0;
}

// Twelve bytes before the IFD of a maker note: one of these, padded with zeros. A version other than 0 makes
// the block unknown to the reader.
inline constexpr std::uint32_t kNoteSignatureSize = 12;
inline constexpr std::uint32_t kNoteVersionAt = 10;
inline constexpr std::uint8_t kNoteOwnOffsets =
    2;  // from this version on, offsets count from the note's start
inline constexpr std::string_view kNoteDsc = "KELO DSC ";
inline constexpr std::string_view kNoteCam = "KELO CAM ";
inline constexpr std::string_view kNotePic = "KELO PIC";

constexpr std::uint16_t Get16(const std::uint8_t* bytes, bool bigEndian) {
  const unsigned first = bytes[bigEndian ? 0 : 1], second = bytes[bigEndian ? 1 : 0];
  return static_cast<std::uint16_t>(first << 8 | second);
}
constexpr std::uint32_t Get32(const std::uint8_t* bytes, bool bigEndian) {
  const std::uint32_t first = Get16(bytes, bigEndian), second = Get16(bytes + 2, bigEndian);
  return bigEndian ? first << 16 | second : second << 16 | first;
}
constexpr void Put16(std::uint8_t* bytes, std::uint16_t value, bool bigEndian) {
  bytes[bigEndian ? 0 : 1] = static_cast<std::uint8_t>(value >> 8);
  bytes[bigEndian ? 1 : 0] = static_cast<std::uint8_t>(value & 0xFF);
}
constexpr void Put32(std::uint8_t* bytes, std::uint32_t value, bool bigEndian) {
  Put16(bytes + (bigEndian ? 0 : 2), static_cast<std::uint16_t>(value >> 16), bigEndian);
  Put16(bytes + (bigEndian ? 2 : 0), static_cast<std::uint16_t>(value & 0xFFFF), bigEndian);
}

/// Reverses each whole unit: between the machine's byte order, which is little-endian, and big-endian.
inline void ReverseUnits(std::span<std::uint8_t> bytes, std::size_t unit) {
  if (unit < 2) return;
  for (std::size_t at = 0; at + unit <= bytes.size(); at += unit) {
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                 bytes.begin() + static_cast<std::ptrdiff_t>(at + unit));
  }
}

}  // namespace vrx::imaging
