// Of a JPEG file, and of the first picture of a multi-picture file.
#include <algorithm>
#include <iterator>
#include <optional>

#include "imaging/codecs/MpIndex.h"
#include "imaging/codecs/OpenedJpeg.h"
#include "imaging/codecs/PictureSummary.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::ptrdiff_t kMostNameBytes = 32;

/// The printable text up to a zero byte, which is how segments are named.
std::string NameOf(const JpegSegment& segment) {
  if (segment.number == kCommentSegment) return {};
  const auto end = std::ranges::find(segment.body, std::uint8_t{0});
  const auto length = std::distance(segment.body.begin(), end);
  const auto isPrintable = [](std::uint8_t byte) { return byte >= ' ' && byte <= '~'; };
  if (end == segment.body.end() || length > kMostNameBytes) return {};
  return std::all_of(segment.body.begin(), end, isPrintable) ? std::string(segment.body.begin(), end) : "";
}

std::uint16_t OrientationOf(XpImageIoJpeg& codec, XpAbstractFile& stream) {
  const XpSharedPtr<XpTiffTagManager> tags = codec.ReadTags(stream, 0);
  const XpTiffTagIFD* first = tags.Get() == nullptr ? nullptr : tags->GetIfd(0);
  return first == nullptr ? std::uint16_t{0} : first->GetShort(kTagOrientation, false);
}

}  // namespace

XpResult SummarizeJpeg(XpAbstractFile& stream, XpImageIo&, PictureSummary& summary) {
  summary = {};
  XpImageIoJpeg codec;
  if (const XpResult result = codec.ReadImageSize(stream, 0, summary.size, false)) return result;
  if (const XpResult result = codec.ReadStoredImageSize(stream, 0, summary.storedSize, false)) return result;
  OpenedJpeg jpeg(stream, 0, kAllSegments);
  if (jpeg.Result() != XpOk) return jpeg.Result();
  for (const JpegSegment& segment : jpeg.Segments()) {
    const bool isComment = segment.number == kCommentSegment;
    summary.segments.push_back({isComment ? "COM" : "APP" + std::to_string(segment.number), NameOf(segment),
                                static_cast<std::uint32_t>(segment.body.size())});
    if (!IsSegment(segment, kMpfSegment, kMpfName)) continue;
    if (const std::optional<MpIndex> index = ReadMpIndex(segment.body)) {
      summary.frames = std::max(static_cast<std::int32_t>(index->CountFrames()), 1);
    }
  }
  summary.orientation = OrientationOf(codec, stream);
  const auto profile = codec.ReadIccProfile(stream, 0);
  summary.hasProfile = codec.status != XpErrImageNoData;
  if (profile != nullptr) summary.profile = profile->FindTag("desc").GetTextDescription().text.c_str();
  return XpOk;
}

}  // namespace vrx::imaging
