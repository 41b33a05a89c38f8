// The records of a .moff container, and how they lie in its bytes. All numbers are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vrx::moff {

/// Four ASCII bytes as the number that they are in the file.
constexpr std::uint32_t FourCc(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

inline constexpr std::uint32_t kFileSignature = FourCc("MOFF");
inline constexpr std::uint32_t kGroupSignature = FourCc("GRUP");
inline constexpr std::uint32_t kIndexSignature = FourCc("INDX");
// Kinds of bodies.
inline constexpr std::uint32_t kJpegBody = FourCc("JPEG");
inline constexpr std::uint32_t kStpBody = FourCc("STPD");
inline constexpr std::uint32_t kBinaryBody = FourCc("BINA");

inline constexpr std::uint32_t kFormatVersion = 0x00020000;
inline constexpr std::uint32_t kGpsGroup = 7;

/// What a container may hold, to be read and to be written. Real ones have a handful of each.
struct Limits {
  std::uint32_t groups = 1 << 16;
  std::uint32_t entries = 1 << 16;  // of all groups together
};

template <std::size_t Size>
using Bytes = std::array<std::byte, Size>;
/// Kept as it was read, since a newer version may have put something there.
template <std::size_t Size>
using Reserved = Bytes<Size>;

// Records that begin with a signature and their own size. Both are checked by the reader and not kept.
inline constexpr std::uint32_t kRecordStart = 8;

struct FileHeader {
  static constexpr std::uint32_t kSize = 824;
  std::uint32_t version = 0;
  Reserved<8> reserved1{};
  std::array<char16_t, 260> sourceName{};  // without directory; ends at the first zero
  Reserved<4> reserved2{};
  std::int64_t created = 0;  // of the source; both are seconds since 1970
  std::int64_t written = 0;
  std::int64_t sourceSize = 0;
  Reserved<256> reserved3{};
};
struct TableHeader {
  static constexpr std::uint32_t kSize = 16;
  std::uint32_t count = 0;
  Reserved<4> reserved{};
};
struct GroupDataHeader : TableHeader {};
struct IndexDataHeader : TableHeader {};

// Records of a table.
struct GroupData {
  static constexpr std::uint32_t kSize = 28;
  std::uint32_t id = 0;
  Reserved<4> reserved{};
  std::uint32_t bodiesOffset = 0;  // of the first body, from the first group record
  std::array<std::uint32_t, 4> values{};
};
struct IndexData {
  static constexpr std::uint32_t kSize = 16;
  std::uint32_t position = 0;  // of the body, from the header of this index table
  Reserved<12> reserved{};
};

/// In front of the data of an entry.
struct BodyHead {
  static constexpr std::uint32_t kSize = 8;
  std::uint32_t kind = 0;
  std::uint32_t size = 0;  // the head included
};

template <class Record>
Record Decode(std::span<const std::byte, Record::kSize> bytes);
template <class Record>
Bytes<Record::kSize> Encode(const Record& record);
/// For a record that begins with a signature.
template <class Record>
Bytes<Record::kSize> Encode(const Record& record, std::uint32_t signature);

}  // namespace vrx::moff
