#include "src/baseband/BasebandPicture.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "foundation/text/XpFormat.h"
#include "imaging/pixmap/XpBlockClip.h"

namespace vrx::baseband {
namespace {

using imaging::StillImage;
using imaging::StillImageRequest;

constexpr std::int64_t kPixelBytes = 3;

/// Where the columns of a turned and mirrored picture come from: from columns or rows of the source, counted
/// from its start or its end.
struct Turning {
  bool swaps = false;            // columns come from rows
  bool reversesColumns = false;  // of the result, before the mirror
  bool reversesRows = false;
};

Turning TurningOf(const DecodeJob& job) {
  Turning turning;
  switch (job.rotation) {
    case RotateQuarterCw:
      turning = {true, true, false};
      break;
    case RotateHalf:
      turning = {false, true, true};
      break;
    case RotateQuarterCcw:
      turning = {true, false, true};
      break;
    default:
      break;
  }
  if (job.mirror) turning.reversesColumns = !turning.reversesColumns;
  return turning;
}

/// For each position of an axis of the destination, the bytes from the source's first pixel.
std::vector<std::int64_t> OffsetsOf(std::int32_t destCount, std::int32_t sourceCount, bool reverses,
                                    std::int64_t bytesEach) {
  const XpAxisStretch axis = ClipAxisStretch(0, destCount, 0, sourceCount, destCount, sourceCount);
  std::vector<std::int64_t> offsets(static_cast<std::size_t>(destCount));
  for (std::int64_t at = 0; at < destCount; ++at) {
    const std::int64_t from = axis.SourceAt(at);
    offsets[static_cast<std::size_t>(at)] = (reverses ? sourceCount - 1 - from : from) * bytesEach;
  }
  return offsets;
}

void CopyScaled(const XpPlaneBase& source, const Turning& turning, const FitRect& fit, XpPlaneBase& target) {
  const std::int32_t columns = turning.swaps ? source.height : source.width;
  const std::int32_t rows = turning.swaps ? source.width : source.height;
  const std::int64_t columnBytes = turning.swaps ? source.rowBytes : kPixelBytes;
  const std::int64_t rowBytes = turning.swaps ? kPixelBytes : source.rowBytes;
  const auto columnOffsets = OffsetsOf(fit.width, columns, turning.reversesColumns, columnBytes);
  const auto rowOffsets = OffsetsOf(fit.height, rows, turning.reversesRows, rowBytes);
  const bool isPlainRow = columns == fit.width && !turning.swaps && !turning.reversesColumns;
  for (std::int32_t y = 0; y < fit.height; ++y) {
    const unsigned char* from = source.data + rowOffsets[static_cast<std::size_t>(y)];
    unsigned char* to = target.Row(fit.y + y) + fit.x * kPixelBytes;
    if (isPlainRow) {
      std::memcpy(to, from, static_cast<std::size_t>(fit.width * kPixelBytes));
      continue;
    }
    for (const std::int64_t offset : columnOffsets) {
      std::memcpy(to, from + offset, kPixelBytes);
      to += kPixelBytes;
    }
  }
}

FitRect FitOf(const DecodeJob& job, std::int32_t fullWidth, std::int32_t fullHeight, std::int32_t targetWidth,
              std::int32_t targetHeight) {
  const bool swaps = IsQuarterTurn(job.rotation);
  return FitIntoTarget(swaps ? fullHeight : fullWidth, swaps ? fullWidth : fullHeight, targetWidth,
                       targetHeight);
}

}  // namespace

FitRect FitIntoTarget(std::int32_t width, std::int32_t height, std::int32_t targetWidth,
                      std::int32_t targetHeight) {
  if (width < 1 || height < 1 || targetWidth < 1 || targetHeight < 1) return {};
  const double scale =
      std::min(static_cast<double>(targetWidth) / width, static_cast<double>(targetHeight) / height);
  FitRect fit;
  fit.width = std::min(static_cast<std::int32_t>(width * scale), targetWidth);
  fit.height = std::min(static_cast<std::int32_t>(height * scale), targetHeight);
  fit.x = (targetWidth - fit.width) / 2;
  fit.y = (targetHeight - fit.height) / 2;
  return fit;
}

bool IsQuarterTurn(std::int32_t rotation) {
  return rotation == RotateQuarterCw || rotation == RotateQuarterCcw;
}

std::unique_ptr<XpPixmap24NoHandle> ComposePicture(const DecodeJob& job, const StillImage& image,
                                                   std::int32_t targetWidth, std::int32_t targetHeight,
                                                   XpString& problem) {
  const XpPlaneBase* source = image.pixmap ? image.pixmap->GetPlane(0) : nullptr;
  const FitRect fit = FitOf(job, image.fullWidth, image.fullHeight, targetWidth, targetHeight);
  if (source == nullptr || fit.IsEmpty()) {
    problem = u"its shape leaves nothing to show in the movie's picture";
    return nullptr;
  }
  auto picture = std::make_unique<XpPixmap24NoHandle>();
  // Fresh memory is zero, so the bars are black already.
  if (picture->Allocate(targetWidth, targetHeight) != XpOk) {
    problem = u"there is no memory for the movie's picture";
    return nullptr;
  }
  CopyScaled(*source, TurningOf(job), fit, *picture->GetPlane(0));
  return picture;
}

PictureReader PictureReader::OfFiles() { return {&imaging::LoadStillImage, &imaging::ReadStillImageSize}; }

std::unique_ptr<XpPixmap24NoHandle> DecodePicture(const DecodeJob& job, std::int32_t targetWidth,
                                                  std::int32_t targetHeight, const PictureReader& reader,
                                                  XpString& problem, const std::atomic<bool>* cancel) {
  StillImageRequest request;
  request.cancel = cancel;
  request.rows = imaging::RowOrder::BottomUp;
  std::int32_t width = 0;
  std::int32_t height = 0;
  if (reader.measure(job.imagePath, request.limits, width, height, &problem) != XpOk) return nullptr;
  const FitRect fit = FitOf(job, width, height, targetWidth, targetHeight);
  request.enoughWidth = IsQuarterTurn(job.rotation) ? fit.height : fit.width;
  request.enoughHeight = IsQuarterTurn(job.rotation) ? fit.width : fit.height;
  StillImage image;
  if (reader.load(job.imagePath, request, image, &problem) != XpOk) return nullptr;
  return ComposePicture(job, image, targetWidth, targetHeight, problem);
}

}  // namespace vrx::baseband
