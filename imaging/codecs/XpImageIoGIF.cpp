#include "imaging/codecs/XpImageIoGIF.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include "foundation/file/XpFile.h"
#include "imaging/gif/GifDecoder.h"
#include "imaging/loader/StillImage.h"
#include "imaging/resample/XpPixmapResample.h"

using namespace vrx::imaging;

namespace {

using Picture = XpImageIo::Picture;
using vrx::formats::FormatCode;

constexpr std::int32_t kBytesPerPixel = 3;

/// Of the screen's size, in its background.
XpResult MakeScreen(const GifDecoder& gif, Picture& screen) {
  const std::int64_t width = gif.ScreenWidth(), height = gif.ScreenHeight();
  if (width == 0 || height == 0) return XpErrImageInvalid;
  if (width * height > StillImageLimits().pixels) return XpErrOutOfMemory;
  screen = std::make_unique<XpPixmap24NoHandle>();
  if (const XpResult result = screen->Allocate(gif.ScreenWidth(), gif.ScreenHeight())) return result;
  const std::uint32_t background = gif.Background();
  if (background == 0) return XpOk;  // new pixels are black
  unsigned char* first = screen->GetPlane(0)->Row(0);
  const std::int32_t rowBytes = screen->width * kBytesPerPixel;
  for (std::int32_t i = 0; i < rowBytes; ++i) {
    first[i] = static_cast<unsigned char>(background >> 8 * (i % kBytesPerPixel));
  }
  for (std::int32_t y = 1; y < screen->height; ++y) {
    std::memcpy(screen->GetPlane(0)->Row(y), first, static_cast<std::size_t>(rowBytes));
  }
  return XpOk;
}

/// As far as the image can be decoded.
void DrawImage(GifDecoder& gif, const GifImage& image, int transparent, const XpPixmap24NoHandle& screen) {
  if (image.width < 1 || !gif.HasColours()) {
    gif.SkipPixels();
    return;
  }
  std::vector<std::uint8_t> indices(static_cast<std::size_t>(image.width));
  for (std::int32_t i = 0; i < image.height; ++i) {
    std::int32_t row = 0;
    if (!gif.ReadRow(indices.data(), row)) return;
    const std::int32_t y = image.top + row;
    if (y < screen.height) {
      gif.PaintRow(indices.data(), transparent, screen.GetPlane(0)->Row(y), screen.width);
    }
  }
}

/// Walks the records up to the second image. Without a `screen` nothing is drawn, and the images are passed
/// over without being decoded. Whether the file is an animation: a single image does not move, whatever its
/// delay.
bool WalkRecords(GifDecoder& gif, const XpPixmap24NoHandle* screen) {
  GifControl control;
  for (bool hasImage = false;;) {
    switch (gif.NextRecord()) {
      case GifRecord::Extension:
        if (!gif.ReadExtension(control)) return false;
        break;
      case GifRecord::Image: {
        if (hasImage) return control.hasDelay;
        GifImage image;
        hasImage = gif.ReadImage(image);
        if (hasImage && screen == nullptr) gif.SkipPixels();
        if (hasImage && screen != nullptr) DrawImage(gif, image, control.transparent, *screen);
        control.transparent = -1;
        break;
      }
      default:
        return false;
    }
  }
}

}  // namespace

Picture XpImageIoGIF::ReadGif(XpAbstractFile& stream, std::int64_t offset, bool headerOnly,
                              FormatCode& format) {
  format = vrx::formats::kUnknown;
  const auto source = std::make_unique<ImageSource>(stream);  // its block is large for a stack
  source->Seek(offset);
  GifDecoder gif(*source);
  if (offset < 0 || !gif.IsOpen()) {
    Fail(source->Result() != XpOk ? source->Result() : XpErrImageInvalid);
    return nullptr;
  }
  format = vrx::formats::kGif;
  Picture screen;
  if (!headerOnly && Fail(MakeScreen(gif, screen)) != XpOk) return nullptr;
  if (WalkRecords(gif, screen.get())) format = vrx::formats::kGifAnimation;
  Fail(source->Result());
  return screen;
}

FormatCode XpImageIoGIF::GetGifFormat(XpString path) {
  FormatCode format = vrx::formats::kUnknown;
  XpFile file(path);
  if (Fail(file.Open(XpOpenRead, XpShareRead)) == XpOk) ReadGif(file, 0, true, format);
  return format;
}

Picture XpImageIoGIF::Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t,
                           const XpImageReading& reading) {
  return ReadFitted(stream, offset, {}, reading);
}

Picture XpImageIoGIF::ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                                 const XpImageReading&) {
  FormatCode format = vrx::formats::kUnknown;
  Picture picture = ReadGif(stream, offset, false, format);
  if (picture == nullptr || target.width == 0 || target.height == 0) return picture;
  const XpImageSize fit = FitImageSize({picture->width, picture->height}, target);
  if (fit.width < 1 || fit.height < 1) return picture;
  if (Fail(ResizePixmap(*picture, fit.width, fit.height)) != XpOk) return nullptr;
  return picture;
}

Picture XpImageIoGIF::ReadThumbnail(XpAbstractFile&, std::int64_t, const XpImageReading&) {
  Fail(XpErrImageNotProvided);
  return nullptr;
}

XpResult XpImageIoGIF::ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool,
                                      bool) {
  const auto source = std::make_unique<ImageSource>(stream);
  source->Seek(offset);
  const GifDecoder gif(*source);
  if (offset < 0 || !gif.IsOpen()) return Fail(XpErrImageInvalid);
  size = {gif.ScreenWidth(), gif.ScreenHeight()};
  return Fail(XpOk);
}
