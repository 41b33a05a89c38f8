// Loads a still picture of any common format, told by its content, into memory. Whoever shows photographs
// uses it; the codecs that keep tags and profiles are a matter of their own.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::imaging {

enum class RowOrder { TopDown, BottomUp };

/// What real pictures never reach. Checked before memory is taken.
struct StillImageLimits {
  std::int64_t fileBytes = std::int64_t{1} << 30;
  std::int64_t pixels = 200'000'000;
  std::int32_t side = 65'500;  // pixels
};

struct StillImageRequest {
  RowOrder rows = RowOrder::TopDown;
  /// The picture may come smaller than it is, where its format can do so cheaply, while it covers this size
  /// in both directions. 0 asks for the whole picture. JPEG comes at an eighth, a quarter or half its size.
  std::int32_t enoughWidth = 0;
  std::int32_t enoughHeight = 0;
  StillImageLimits limits;
};

struct StillImage {
  std::unique_ptr<XpPixmap24NoHandle> pixmap;  // BGR; transparency shows black
  std::int32_t fullWidth = 0;                  // pixels of the picture in the file
  std::int32_t fullHeight = 0;
};

/// Decodes BMP, GIF (its first picture), JPEG, PNG and TIFF (its first picture). The orientation tag is not
/// followed, and the alpha of a BMP is not looked at. On failure `image` is empty and `problem`, when given,
/// says why in words, without the path: XpErrFileNotFound and its kin when the file can't be read,
/// XpErrInvalidFile when it is damaged or of no known format, XpErrOutOfMemory beyond the limits or without
/// memory.
XpResult LoadStillImage(const XpString& path, const StillImageRequest& request, StillImage& image,
                        XpString* problem = nullptr);

/// The size of the picture from the file's head alone, for checks. The same results.
XpResult ReadStillImageSize(const XpString& path, const StillImageLimits& limits, std::int32_t& width,
                            std::int32_t& height, XpString* problem = nullptr);

}  // namespace vrx::imaging
