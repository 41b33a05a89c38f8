// Reads any bytes as a picture. The first byte chooses the row order and the size that is enough; the sizes
// from the head and from the whole decode must agree, and whatever is not the whole picture has a cause.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/loader/ImageFormats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vrx::imaging;
  if (size == 0) return 0;
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data + 1), static_cast<std::int64_t>(size - 1), false);
  StillImageRequest request;
  request.limits = {.fileBytes = 1 << 20, .pixels = 1 << 18, .side = 4096};
  request.rows = (data[0] & 1) != 0 ? RowOrder::BottomUp : RowOrder::TopDown;
  request.enoughWidth = request.enoughHeight = data[0] >> 1;
  std::int32_t width = 0, height = 0, headWidth = 0, headHeight = 0;
  StillImage image;
  XpString problem;
  const bool isRead = ReadStillImage(file, request, &image, width, height, &problem) == XpOk;
  if (problem.IsEmpty() != (isRead && !image.isPartial)) std::abort();
  if (!isRead) {
    if (image.pixmap != nullptr) std::abort();
    return 0;
  }
  if (image.pixmap == nullptr || image.fullWidth != width || image.fullHeight != height) std::abort();
  if (ReadStillImage(file, request, nullptr, headWidth, headHeight, nullptr) != XpOk) std::abort();
  if (headWidth != width || headHeight != height) std::abort();
  return 0;
}
