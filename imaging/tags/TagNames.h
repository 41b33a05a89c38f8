// The public tags of TIFF 6.0 and Exif 2.32 by number, and the numbers that this system itself works with.
// Readers, edits and the listing of tags use them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vrx::imaging {

/// Numbers mean different things in different IFDs.
enum class TagGroup : std::uint8_t { Image, Exif, Gps, Interop, Maker };

struct TagRow {
  TagGroup group;
  std::uint16_t number;
  std::string_view name;
};
/// Sorted by group, then number.
std::span<const TagRow> TagRows();
/// Empty for a tag that has no public name.
std::string_view TagName(TagGroup group, std::uint16_t number);

inline constexpr std::uint16_t kTagImageWidth = 0x0100;
inline constexpr std::uint16_t kTagImageLength = 0x0101;
inline constexpr std::uint16_t kTagBitsPerSample = 0x0102;
inline constexpr std::uint16_t kTagCompression = 0x0103;
inline constexpr std::uint16_t kTagPhotometric = 0x0106;
inline constexpr std::uint16_t kTagModel = 0x0110;
inline constexpr std::uint16_t kTagStripOffsets = 0x0111;
inline constexpr std::uint16_t kTagOrientation = 0x0112;
inline constexpr std::uint16_t kTagSamplesPerPixel = 0x0115;
inline constexpr std::uint16_t kTagRowsPerStrip = 0x0116;
inline constexpr std::uint16_t kTagStripByteCounts = 0x0117;
inline constexpr std::uint16_t kTagXResolution = 0x011A;
inline constexpr std::uint16_t kTagYResolution = 0x011B;
inline constexpr std::uint16_t kTagPlanarConfiguration = 0x011C;
inline constexpr std::uint16_t kTagResolutionUnit = 0x0128;
inline constexpr std::uint16_t kTagSoftware = 0x0131;
inline constexpr std::uint16_t kTagDateTime = 0x0132;
inline constexpr std::uint16_t kTagSubIfds = 0x014A;
inline constexpr std::uint16_t kTagThumbnailOffset = 0x0201;
inline constexpr std::uint16_t kTagThumbnailSize = 0x0202;
inline constexpr std::uint16_t kTagExifIfd = 0x8769;
inline constexpr std::uint16_t kTagIccProfile = 0x8773;
inline constexpr std::uint16_t kTagGpsIfd = 0x8825;
inline constexpr std::uint16_t kTagExifVersion = 0x9000;
inline constexpr std::uint16_t kTagDateTimeOriginal = 0x9003;
inline constexpr std::uint16_t kTagOffsetTime = 0x9010;
inline constexpr std::uint16_t kTagOffsetTimeOriginal = 0x9011;
inline constexpr std::uint16_t kTagOffsetTimeDigitized = 0x9012;
inline constexpr std::uint16_t kTagMakerNote = 0x927C;
inline constexpr std::uint16_t kTagColorSpace = 0xA001;
inline constexpr std::uint16_t kTagInteropIfd = 0xA005;
inline constexpr std::uint16_t kTagGpsVersionId = 0;
inline constexpr std::uint16_t kTagGpsSatellites = 8;
inline constexpr std::uint16_t kTagGpsMapDatum = 18;
inline constexpr std::uint16_t kTagGpsProcessingMethod = 27;
inline constexpr std::uint16_t kTagGpsAreaInformation = 28;

// Of the maker note.
inline constexpr std::uint16_t kTagMakerSpecialKind = 0x1000;
inline constexpr std::uint16_t kTagMakerPanorama = 0x1003;
inline constexpr std::uint16_t kTagMakerPreview = 0x2001;
inline constexpr std::uint16_t kTagMakerRating = 0x2002;
inline constexpr std::uint16_t kTagMakerPictureMode = 0x200C;
inline constexpr std::uint16_t kTagMakerDates = 0x3000;
inline constexpr std::uint16_t kTagMakerFormatVersion = 0xB000;
inline constexpr std::uint16_t kTagMakerSizeNumber = 0xB001;
inline constexpr std::uint16_t kTagMakerSubIfd = 0xB028;
inline constexpr std::uint16_t kTagMakerSensorSize = 0xB02B;  // height, width

}  // namespace vrx::imaging
