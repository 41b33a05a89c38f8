#include "imaging/loader/BmpHead.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <initializer_list>

namespace vrx::imaging {

namespace {

// The file header: "BM", the file's size, two reserved numbers, where the pixels are.
constexpr std::size_t kFileHeadBytes = 14;
constexpr std::size_t kPixelOffsetAt = 10;

// The info header by its size. The first is that of OS/2 1, with 16-bit sizes and a palette without padding.
constexpr std::uint32_t kCoreHeadBytes = 12;
constexpr std::uint32_t kInfoHeadBytes = 40;
constexpr std::uint32_t kMasksHeadBytes = 52;
constexpr std::uint32_t kOs2HeadBytes = 64;
constexpr std::uint32_t kMaxHeadBytes = 124;
constexpr std::uint32_t kKnownHeads[] = {
    kCoreHeadBytes, kInfoHeadBytes, kMasksHeadBytes, 56, kOs2HeadBytes, 108, kMaxHeadBytes};
constexpr std::size_t kWidthAt = 4, kCoreHeightAt = 6, kCoreBitsAt = 10;
constexpr std::size_t kHeightAt = 8, kBitsAt = 14, kCompressionAt = 16, kColoursAt = 32, kMasksAt = 40;
constexpr std::size_t kMaskBytes = 12;  // red, green, blue

constexpr std::uint32_t kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6;
constexpr std::size_t kMaxPalette = 256;
constexpr int kMaxPaletteBits = 8;

using HeadBytes = std::array<unsigned char, kMaxHeadBytes>;

std::uint32_t Number16(const unsigned char* at) { return at[0] | std::uint32_t{at[1]} << 8; }
std::uint32_t Number32(const unsigned char* at) { return Number16(at) | Number16(at + 2) << 16; }

bool EndsEarly(ImageReading& reading) { return reading.Damaged("the file ends within its head"); }

/// False for a mask with holes.
bool SetChannel(BmpChannel& channel, std::uint32_t mask) {
  channel = BmpChannel();
  if (mask == 0) return true;
  channel.shift = std::countr_zero(mask);
  channel.max = mask >> channel.shift;
  return (std::uint64_t{channel.max} & (std::uint64_t{channel.max} + 1)) == 0;
}

bool SetMasks(ImageReading& reading, BmpHead& head, std::uint32_t red, std::uint32_t green,
              std::uint32_t blue) {
  return (SetChannel(head.red, red) && SetChannel(head.green, green) && SetChannel(head.blue, blue)) ||
         reading.Damaged("the picture's colour masks have holes");
}

bool ReadSizes(ImageReading& reading, const HeadBytes& bytes, bool isCore, BmpHead& head) {
  if (isCore) {
    head.width = Number16(&bytes[kWidthAt]);
    head.height = Number16(&bytes[kCoreHeightAt]);
    head.bits = static_cast<int>(Number16(&bytes[kCoreBitsAt]));
  } else {
    head.width = static_cast<std::int32_t>(Number32(&bytes[kWidthAt]));
    head.height = static_cast<std::int32_t>(Number32(&bytes[kHeightAt]));
    head.bits = static_cast<int>(Number16(&bytes[kBitsAt]));
  }
  head.isTopDown = head.height < 0;
  if (head.isTopDown) head.height = -head.height;
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    if (head.bits == bits) return true;
  }
  return reading.Damaged("the picture has an unknown number of bits a pixel");
}

/// The masks of an info header of 40 bytes follow it; in longer ones they are part of it.
bool ReadMasks(ImageReading& reading, const HeadBytes& bytes, std::uint32_t headBytes, BmpHead& head) {
  std::array<unsigned char, kMaskBytes> masks;
  if (headBytes == kInfoHeadBytes) {
    if (!reading.Source().ReadExactly(masks.data(), masks.size())) return EndsEarly(reading);
  } else {
    std::copy_n(&bytes[kMasksAt], kMaskBytes, masks.begin());
  }
  return SetMasks(reading, head, Number32(&masks[0]), Number32(&masks[4]), Number32(&masks[8]));
}

bool ReadPacking(ImageReading& reading, const HeadBytes& bytes, std::uint32_t headBytes, BmpHead& head) {
  if (head.bits == 16) SetMasks(reading, head, 0x7C00, 0x03E0, 0x001F);
  if (head.bits == 32) SetMasks(reading, head, 0x00FF0000, 0x0000FF00, 0x000000FF);
  if (headBytes == kCoreHeadBytes) return true;
  const std::uint32_t compression = Number32(&bytes[kCompressionAt]);
  if (compression == kRgb) return true;
  const bool isMasked = compression == kBitFields || compression == kAlphaBitFields;
  if (isMasked && headBytes != kOs2HeadBytes && (head.bits == 16 || head.bits == 32)) {
    return ReadMasks(reading, bytes, headBytes, head);
  }
  if (compression == kRle8 && head.bits == 8 && !head.isTopDown) {
    head.packing = BmpPacking::Rle8;
    return true;
  }
  if (compression == kRle4 && head.bits == 4 && !head.isTopDown) {
    head.packing = BmpPacking::Rle4;
    return true;
  }
  return reading.Damaged("the picture is packed in an unknown way");
}

bool ReadPalette(ImageReading& reading, std::uint32_t colours, bool isCore, BmpHead& head) {
  const std::size_t entryBytes = isCore ? 3 : 4;
  const std::size_t most = std::size_t{1} << head.bits;
  std::size_t count = colours == 0 ? most : std::min<std::size_t>(colours, most);
  // Where the pixels begin earlier the palette is shorter than it says.
  const std::int64_t room = (head.pixelOffset - reading.Source().Position()) / std::int64_t(entryBytes);
  count = std::min(count, static_cast<std::size_t>(std::clamp<std::int64_t>(room, 0, kMaxPalette)));
  for (std::size_t i = 0; i < count; ++i) {
    unsigned char entry[4];
    if (!reading.Source().ReadExactly(entry, entryBytes)) return EndsEarly(reading);
    head.palette[i] = {entry[0], entry[1], entry[2]};
  }
  return true;
}

}  // namespace

bool ReadBmpHead(ImageReading& reading, BmpHead& head) {
  ImageSource& source = reading.Source();
  std::array<unsigned char, kFileHeadBytes> fileHead;
  HeadBytes bytes{};
  constexpr std::size_t kSizeBytes = 4;
  if (!source.ReadExactly(fileHead.data(), fileHead.size()) ||
      !source.ReadExactly(bytes.data(), kSizeBytes)) {
    return EndsEarly(reading);
  }
  head.pixelOffset = Number32(&fileHead[kPixelOffsetAt]);
  const std::uint32_t headBytes = Number32(bytes.data());
  if (std::find(std::begin(kKnownHeads), std::end(kKnownHeads), headBytes) == std::end(kKnownHeads)) {
    return reading.Damaged("the picture's head has an unknown form");
  }
  if (!source.ReadExactly(&bytes[kSizeBytes], headBytes - kSizeBytes)) return EndsEarly(reading);
  const bool isCore = headBytes == kCoreHeadBytes;
  if (!ReadSizes(reading, bytes, isCore, head) || !ReadPacking(reading, bytes, headBytes, head)) return false;
  if (head.bits > kMaxPaletteBits) return true;
  return ReadPalette(reading, isCore ? 0 : Number32(&bytes[kColoursAt]), isCore, head);
}

}  // namespace vrx::imaging
