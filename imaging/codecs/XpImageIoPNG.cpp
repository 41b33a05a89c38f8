#include "imaging/codecs/XpImageIoPNG.h"

#include <algorithm>

#include "foundation/file/XpFile.h"
#include "imaging/loader/ImageFormats.h"
#include "imaging/loader/StillImage.h"
#include "imaging/resample/XpPixmapResample.h"

using namespace vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;

/// With both sides cut to whole pixels; the size of the picture without a target.
XpImageSize FitTo(const StillImage& image, XpImageSize target) {
  const XpImageSize whole{image.fullWidth, image.fullHeight};
  if (target.width < 1 || target.height < 1) return whole;
  const double scale = std::min(static_cast<double>(target.width) / whole.width,
                                static_cast<double>(target.height) / whole.height);
  return {static_cast<std::int32_t>(whole.width * scale), static_cast<std::int32_t>(whole.height * scale)};
}

}  // namespace

Picture XpImageIoPNG::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t,
                           const XpImageReading& reading) {
  return ReadFitted(stream, offset, {}, reading);
}

Picture XpImageIoPNG::ReadFitted(XpAbstractFile& stream, std::int64_t, XpImageSize target,
                                 const XpImageReading&) {
  problem = XpString();
  auto* file = dynamic_cast<XpFile*>(&stream);
  if (file == nullptr) {
    Fail(XpErrImageArgument);
    return nullptr;
  }
  StillImage image;
  std::int32_t width = 0, height = 0;
  const StillImageRequest request{.enoughWidth = std::max(target.width, 0),
                                  .enoughHeight = std::max(target.height, 0)};
  if (Fail(ReadStillImage(*file, request, &image, width, height, &problem)) != XpOk) return nullptr;
  const XpImageSize fit = FitTo(image, target);
  if (Fail(ResizePixmap(*image.pixmap, fit.width, fit.height)) != XpOk) return nullptr;
  return std::move(image.pixmap);
}

XpResult XpImageIoPNG::GetImageSize(XpString path, XpImageSize& size, bool) {
  problem = XpString();
  const XpResult result = ReadStillImageSize(path, {}, size.width, size.height, &problem);
  return Fail(result == XpOk ? XpOk : XpErrFailed);
}

Picture XpImageIoPNG::ReadThumbnail(XpAbstractFile&, std::int64_t, const XpImageReading&) {
  Fail(XpErrImageNotProvided);
  return nullptr;
}
