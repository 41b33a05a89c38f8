#include "imaging/resample/XpPixmapResample.h"

#include <memory>
#include <new>
#include <vector>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "imaging/resample/BlockMean.h"
#include "imaging/resample/LineFilter.h"
#include "imaging/resample/PixelRun.h"

using vrx::resample::kBytesPerPixel;
using vrx::resample::LineFilter;
using vrx::resample::LineRange;

namespace {

/// The rows of a picture in their new width, made when they are asked for. As many are kept as one row of
/// the result needs, since the next one shares some of them.
class ScaledRows {
 public:
  /// `across` may be null: the rows are wide enough as they are.
  ScaledRows(const XpPlaneBase& source, const LineFilter* across, std::int32_t newWidth, std::int32_t most)
      : m_source(source),
        m_across(across),
        m_rowBytes(static_cast<std::size_t>(newWidth) * kBytesPerPixel),
        m_slots(most) {
    if (across != nullptr) m_kept.resize(m_rowBytes * static_cast<std::size_t>(most));
  }

  /// Not a row before the last `most` ones of those that were asked for.
  const unsigned char* Row(std::int32_t y) {
    if (m_across == nullptr) return m_source.Row(y);
    unsigned char* row = m_kept.data() + static_cast<std::size_t>(y % m_slots) * m_rowBytes;
    if (y >= m_next) {
      m_across->FilterRow(m_source.Row(y), row);
      m_next = y + 1;
    }
    return row;
  }

 private:
  const XpPlaneBase& m_source;
  const LineFilter* m_across;
  std::size_t m_rowBytes;
  std::int32_t m_slots;
  std::int32_t m_next = 0;
  std::vector<unsigned char> m_kept;
};

std::unique_ptr<LineFilter> FilterIfNeeded(std::int32_t source, std::int32_t target) {
  return source == target ? nullptr : vrx::resample::MakeLineFilter(source, target);
}

void ResampleInTwoPasses(const XpPlaneBase& source, const XpPlaneBase& target) {
  const auto across = FilterIfNeeded(source.width, target.width);
  const auto down = FilterIfNeeded(source.height, target.height);
  if (down == nullptr) {
    for (std::int32_t y = 0; y < target.height; ++y) across->FilterRow(source.Row(y), target.Row(y));
    return;
  }
  ScaledRows scaled(source, across.get(), target.width, down->MostRows());
  std::vector<const unsigned char*> rows(static_cast<std::size_t>(down->MostRows()));
  const std::size_t bytes = static_cast<std::size_t>(target.width) * kBytesPerPixel;
  for (std::int32_t y = 0; y < target.height; ++y) {
    const LineRange range = down->RowsFor(y);
    for (std::int32_t i = 0; i < range.count; ++i) {
      rows[static_cast<std::size_t>(i)] = scaled.Row(range.first + i);
    }
    down->BlendRows(y, rows.data(), bytes, target.Row(y));
  }
}

bool IsMultiple(const XpPlaneBase& source, const XpPlaneBase& target, std::int64_t factor) {
  return source.width == factor * target.width && source.height == factor * target.height;
}

void Resample(const XpPixmapBase& from, const XpPixmapBase& to) {
  const XpPlaneBase& source = *from.GetPlane(0);
  const XpPlaneBase& target = *to.GetPlane(0);
  if (IsMultiple(source, target, 2)) {
    vrx::resample::MeanOf2x2Blocks(source, target);
  } else if (IsMultiple(source, target, 3)) {
    vrx::resample::MeanOf3x3Blocks(source, target);
  } else {
    ResampleInTwoPasses(source, target);
  }
}

bool IsSide(std::int32_t pixels) { return pixels >= 1 && pixels <= vrx::resample::kMostSamples; }

}  // namespace

XpResult ResamplePixmap(XpPixmap24NoHandle& pixmap, std::int32_t newWidth, std::int32_t newHeight) {
  if (!IsSide(pixmap.width) || !IsSide(pixmap.height) || !IsSide(newWidth) || !IsSide(newHeight)) {
    return XpErrFailed;
  }
  if (newWidth == pixmap.width && newHeight == pixmap.height) return XpOk;
  XpPixmap24NoHandle result;
  try {
    if (const XpResult failed = result.Allocate(newWidth, newHeight)) return failed;
    Resample(pixmap, result);
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
  pixmap.Swap(result);
  return XpOk;
}

XpResult ResizePixmap(XpPixmap24NoHandle& pixmap, std::int32_t newWidth, std::int32_t newHeight) {
  if (newWidth == pixmap.width && newHeight == pixmap.height) return XpOk;
  return ResamplePixmap(pixmap, newWidth, newHeight);
}

XpResult CropPixmap(XpPixmap24NoHandle& pixmap, std::int32_t left, std::int32_t top, std::int32_t right,
                    std::int32_t bottom) {
  if (left < 0 || top < 0 || right > pixmap.width || bottom > pixmap.height) return XpErrFailed;
  if (left >= right || top >= bottom) return XpErrFailed;
  const std::int32_t width = right - left;
  const std::int32_t height = bottom - top;
  if (width == pixmap.width && height == pixmap.height) return XpOk;
  XpPixmap24NoHandle block;
  if (const XpResult failed = block.Allocate(width, height)) return failed;
  CopyPixmapBlock(block, 0, 0, pixmap, left, top, width, height);
  pixmap.Swap(block);
  return XpOk;
}
