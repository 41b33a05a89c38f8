#include "imaging/codecs/StereoSegment.h"

#include "imaging/jpeg/JpegSegments.h"

namespace vrx::imaging {

namespace {

constexpr std::size_t kSegmentBytes = 14;  // name, 16-bit length of the descriptor, descriptor
constexpr std::size_t kLengthAt = 8;
constexpr int kDescriptorBytes = 4;
constexpr std::size_t kLayoutAt = 12;  // bits 8 to 15 of the descriptor

}  // namespace

XpResult ReadStereoSegment(const JpegSegment& segment, StereoLayout& layout) {
  const auto body = segment.body;
  if (body.size() < kSegmentBytes || !IsSegment(segment, kStereoSegment, kStereoName)) return XpErrImageKind;
  if ((body[kLengthAt] << 8 | body[kLengthAt + 1]) != kDescriptorBytes) return XpErrImageInvalid;
  switch (body[kLayoutAt]) {
    case 1:
    case 3:
      layout = StereoLayout::HalfHeight;
      break;
    case 2:
      layout = StereoLayout::HalfWidth;
      break;
    default:
      layout = StereoLayout::Whole;
  }
  return XpOk;
}

}  // namespace vrx::imaging
