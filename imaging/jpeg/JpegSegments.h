// The application segments of a JPEG file as its bytes have them, without the decoder: finding the Exif block
// and the end of the coded picture. The codecs use it, and the rewrite of a file.
#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/jpeg/JpegDecoder.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

// What segments of the published formats are called: the number of the segment, and what its body begins
// with. All names but two end with a zero byte.
inline constexpr int kJfifSegment = 0;
inline constexpr std::string_view kJfifName{"JFIF", 5};
inline constexpr int kExifSegment = 1;
inline constexpr std::string_view kExifName{"Exif", 5};
inline constexpr int kXmpSegment = 1;
inline constexpr std::string_view kXmpName{"http://ns.adobe.com/xap/1.0/", 29};
inline constexpr int kIccSegment = 2;
inline constexpr std::string_view kIccName{"ICC_PROFILE", 12};
inline constexpr int kMpfSegment = 2;
inline constexpr std::string_view kMpfName{"MPF", 4};
inline constexpr int kStereoSegment = 3;
inline constexpr std::string_view kStereoName{"_JPSJPS_", 8};
inline constexpr int kSpfSegment = 3;
inline constexpr std::string_view kSpfName{"SPF", 3};
inline constexpr int kPhotoshopSegment = 13;
inline constexpr std::string_view kPhotoshopName{"Photoshop 3.0", 14};
/// Before the TIFF header in an Exif segment; the second of the two bytes after the name is padding.
inline constexpr std::uint32_t kExifHeadBytes = 6;
inline constexpr std::uint32_t kIccHeadBytes = 14;  // the name, a sequence number and a count
/// The largest body that the 16-bit length of a segment allows for, which counts its own two bytes.
inline constexpr std::uint32_t kMostSegmentBytes = 0xFFFF - 2;

/// Whether it is APP`number` and begins with the name.
bool IsSegment(const JpegSegment& segment, int number, std::string_view name);

/// Reads all of it; XpErrEndOfFile when there is less.
XpResult ReadExactly(XpAbstractFile& stream, void* buffer, std::uint64_t count);

/// From the position of the stream, over the start marker and the APP segments after it. XpErrImageInvalid
/// unless there is a start marker and each segment leads to another marker; else the failure of the stream.
XpResult WalkAppSegments(XpAbstractFile& stream);

/// Leaves the stream at the TIFF header of the first Exif segment among those that open the picture at
/// `offset`. XpErrImageNoData without one; else as WalkAppSegments.
XpResult SeekToExif(XpAbstractFile& stream, std::int64_t offset);

/// Where the body of the first APP`number` segment with this name begins, among the segments that open the
/// picture at `offset`. XpErrImageNoData without one.
XpResult FindAppSegment(XpAbstractFile& stream, std::int64_t offset, int number, std::string_view name,
                        std::int64_t& body);

/// Where the coded picture at `offset` begins and ends: from the first marker that is no application segment
/// to after the end marker. XpErrImageInvalid when there is no end marker.
struct CodedPicture {
  std::int64_t start = 0;  // positions of the stream
  std::int64_t end = 0;
  int appSegments = 0;  // before `start`
};
XpResult FindCodedPicture(XpAbstractFile& stream, std::int64_t offset, CodedPicture& picture);

}  // namespace vrx::imaging
