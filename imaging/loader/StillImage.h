// Loads a still picture of any common format into memory; the format is found by the content. For showing
// photographs: tags and profiles are not kept.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::imaging {

enum class RowOrder { TopDown, BottomUp };

/// Beyond what real pictures have. Checked before memory is allocated.
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
  /// Once set, by any thread, the reading ends soon and fails with XpErrFailed. May be null.
  const std::atomic<bool>* cancel = nullptr;

  bool IsCancelled() const { return cancel != nullptr && cancel->load(std::memory_order_relaxed); }
};

struct StillImage {
  std::unique_ptr<XpPixmap24NoHandle> pixmap;  // BGR; transparency shows black
  std::int32_t fullWidth = 0;                  // pixels of the picture in the file
  std::int32_t fullHeight = 0;
  bool isPartial = false;  // the file is damaged or ends early: what it lacks is black or made up
};

/// Decodes BMP, GIF (its first picture), JPEG, PNG and TIFF (its first picture). The orientation tag is not
/// followed, and the alpha of a BMP is not looked at. A file of which at least one row can be decoded gives
/// XpOk and, when it is damaged, a partial image. On failure `image` is empty: XpErrFileNotFound and its kin
/// when the file can't be read, XpErrInvalidFile when nothing of it can be decoded or it is of no known
/// format, XpErrOutOfMemory beyond the limits or without memory. `problem`, when given, says in words,
/// without the path, why there is no image or only a partial one; it is not touched otherwise.
XpResult LoadStillImage(const XpString& path, const StillImageRequest& request, StillImage& image,
                        XpString* problem = nullptr);

/// The size of the picture from the file's head alone, for checks. The same results.
XpResult ReadStillImageSize(const XpString& path, const StillImageLimits& limits, std::int32_t& width,
                            std::int32_t& height, XpString* problem = nullptr);

}  // namespace vrx::imaging
