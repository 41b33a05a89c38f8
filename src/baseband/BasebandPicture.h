// Makes the picture of the movie's size from a photograph: turned, mirrored, fitted between black bars, with
// its rows from the bottom as the engine wants them. The decoder thread of the still-image source uses it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "imaging/loader/StillImage.h"
#include "src/baseband/BasebandDocument.h"

namespace vrx::baseband {

/// A rectangle of the movie's picture, in pixels. The bars beside it differ by at most one pixel.
struct FitRect {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;

  bool IsEmpty() const { return width < 1 || height < 1; }
};

/// The largest picture of the shape of `width` by `height` inside the target, its sides truncated. Empty when
/// a size is below 1 or a side comes out below 1.
FitRect FitIntoTarget(std::int32_t width, std::int32_t height, std::int32_t targetWidth,
                      std::int32_t targetHeight);

bool IsQuarterTurn(std::int32_t rotation);

/// Scales `image`, whose rows run from the bottom, to the target as `job` asks: turned, then mirrored, then
/// fitted by nearest neighbour. A rotation outside 0 to 3 counts as none. The place on the target counts from
/// the picture's full size, whatever size it was decoded in. Null, with the cause in `problem`, when nothing
/// of it would show or memory is short.
std::unique_ptr<XpPixmap24NoHandle> ComposePicture(const DecodeJob& job, const imaging::StillImage& image,
                                                   std::int32_t targetWidth, std::int32_t targetHeight,
                                                   XpString& problem);

/// Where pictures come from: imaging::LoadStillImage and imaging::ReadStillImageSize, or a test's own.
struct PictureReader {
  std::function<XpResult(const XpString& path, const imaging::StillImageRequest& request,
                         imaging::StillImage& image, XpString* problem)>
      load;
  std::function<XpResult(const XpString& path, const imaging::StillImageLimits& limits, std::int32_t& width,
                         std::int32_t& height, XpString* problem)>
      measure;

  static PictureReader OfFiles();
};

/// Loads no more pixels than the fit can show, and composes them. Null when the picture cannot be loaded. The
/// cause of that, or of a picture that is only partial, is in `problem`, which stays empty otherwise. Once
/// `cancel` is set, by any thread, it ends soon without a picture.
std::unique_ptr<XpPixmap24NoHandle> DecodePicture(const DecodeJob& job, std::int32_t targetWidth,
                                                  std::int32_t targetHeight, const PictureReader& reader,
                                                  XpString& problem,
                                                  const std::atomic<bool>* cancel = nullptr);

}  // namespace vrx::baseband
