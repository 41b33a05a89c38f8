#include "imaging/pixmap/XpPixmapBilinear.h"

#include <algorithm>
#include <vector>

#include "imaging/pixmap/XpBlockClip.h"
#include "imaging/pixmap/XpPixmapBlock.h"

namespace {

constexpr std::int64_t kBytesPerPixel24 = 3;
constexpr int kFractionBits = 11;
constexpr std::int64_t kOne = std::int64_t{1} << kFractionBits;

bool IsPicture24(const XpPixmapBase& pixmap) {
  return pixmap.GetPlaneBytesPerPixel(0) == kBytesPerPixel24 && pixmap.GetPlane(0) != nullptr;
}

/// The two source positions that make one destination position, and the weight of the second.
struct Sample {
  std::int64_t first;
  std::int64_t second;
  std::uint32_t weight;  // of 2048
};

/// One axis, for the destination positions from `clipped.dest` on.
std::vector<Sample> MakeSamples(const XpAxisCopy& clipped, std::int64_t destSize, std::int64_t sourceSize) {
  constexpr std::int64_t kOffset = 5;  // so that positions which are whole but for rounding stay whole
  const std::int64_t step = (sourceSize << kFractionBits) / destSize;
  const std::int64_t last = std::max<std::int64_t>(sourceSize - 2, 0);
  std::vector<Sample> samples;
  samples.reserve(static_cast<std::size_t>(clipped.count));
  for (std::int64_t i = 0; i < clipped.count; ++i) {
    const std::int64_t position = (clipped.source + i) * step + kOffset;
    const std::int64_t at = position >> kFractionBits;
    const std::int64_t weight = at > last ? kOne - 1 : position & (kOne - 1);
    const std::int64_t first = std::min(at, last);
    // A source of one pixel has no second one.
    samples.push_back({first, std::min(first + 1, sourceSize - 1), static_cast<std::uint32_t>(weight)});
  }
  return samples;
}

void StretchRow(unsigned char* out, const unsigned char* upper, const unsigned char* lower,
                const std::vector<Sample>& columns, std::uint32_t rowWeight) {
  const auto one = static_cast<std::uint32_t>(kOne);
  for (const Sample& column : columns) {
    const std::int64_t left = column.first * kBytesPerPixel24;
    const std::int64_t right = column.second * kBytesPerPixel24;
    for (std::int64_t c = 0; c < kBytesPerPixel24; ++c) {
      const std::uint32_t above = upper[left + c] * (one - column.weight) + upper[right + c] * column.weight;
      const std::uint32_t below = lower[left + c] * (one - column.weight) + lower[right + c] * column.weight;
      *out++ =
          static_cast<unsigned char>((above * (one - rowWeight) + below * rowWeight) >> (2 * kFractionBits));
    }
  }
}

}  // namespace

void StretchPixmapBilinear(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                           std::int32_t destWidth, std::int32_t destHeight, const XpPixmapBase& source) {
  if (destWidth < 1 || destHeight < 1 || &destination == &source) return;
  if (!IsPicture24(destination) || !IsPicture24(source)) return;
  if (destWidth == source.width && destHeight == source.height) {
    CopyPixmapBlock(destination, destX, destY, source, 0, 0, destWidth, destHeight);
    return;
  }
  const XpAxisCopy x = ClipAxisCopy(destX, 0, destWidth, destination.width, destWidth);
  const XpAxisCopy y = ClipAxisCopy(destY, 0, destHeight, destination.height, destHeight);
  if (x.count < 1 || y.count < 1) return;
  const std::vector<Sample> columns = MakeSamples(x, destWidth, source.width);
  const std::vector<Sample> rows = MakeSamples(y, destHeight, source.height);
  const XpPlaneBase& to = *destination.GetPlane(0);
  const XpPlaneBase& from = *source.GetPlane(0);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    unsigned char* out =
        to.Row(static_cast<std::int32_t>(y.dest + static_cast<std::int64_t>(i))) + x.dest * kBytesPerPixel24;
    StretchRow(out, from.Row(static_cast<std::int32_t>(rows[i].first)),
               from.Row(static_cast<std::int32_t>(rows[i].second)), columns, rows[i].weight);
  }
}

std::unique_ptr<XpPixmap32> MakeOpaquePixmap32(const XpPixmapBase& source) {
  constexpr std::int64_t kBytesPerPixel32 = 4;
  constexpr unsigned char kOpaque = 255;
  auto opaque = std::make_unique<XpPixmap32>();
  if (!IsPicture24(source) || opaque->Allocate(source.width, source.height) != XpOk) return nullptr;
  for (std::int32_t y = 0; y < source.height; ++y) {
    const unsigned char* in = source.GetPlane(0)->Row(y);
    unsigned char* out = opaque->GetPlane(0)->Row(y);
    for (std::int32_t x = 0; x < source.width; ++x, in += kBytesPerPixel24, out += kBytesPerPixel32) {
      std::copy_n(in, kBytesPerPixel24, out);
      out[kBytesPerPixel24] = kOpaque;
    }
  }
  return opaque;
}
